#pragma once
// Helpers shared by the spectrum storage tests.
#include <memory>
#include <string>
#include <vector>

#include "spectrum/SpecIO.h"

namespace spectest {

constexpr double kProton = 1.00727647012;

// [M+H]+ of a precursor m/z at a charge.
inline double MhOf(double mz, int charge) { return (mz - kProton) * charge + kProton; }

struct Loaded {
  uint32_t count = 0;  // Count() right after OpenRead
  std::vector<CSpectrum> spectra;
};

// Opens a file with the reader of a format code and reads all of it.
inline Loaded Load(int format, const std::string& path) {
  std::unique_ptr<CSpecIO> io(CreateSpecIO(format));
  io->OpenRead(path);
  Loaded loaded;
  loaded.count = io->Count();
  io->ReadAll(loaded.spectra);
  return loaded;
}

inline std::vector<std::string> Names(const std::vector<CSpectrum>& spectra) {
  std::vector<std::string> names;
  for (const CSpectrum& s : spectra) names.push_back(s.name);
  return names;
}

inline CPeak MakePeak(double mz, double intensity) {
  CPeak peak;
  peak.mz = mz;
  peak.intensity = intensity;
  return peak;
}

}  // namespace spectest
