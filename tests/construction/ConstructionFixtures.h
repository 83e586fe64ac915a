#pragma once
// Shared set-up of the construction tests: residue masses, spectra in a few
// lines, and a dataset reader that serves spectra from memory.
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "molecule/MassTable.h"
#include "run/Param.h"
#include "spectrum/SpecIO.h"
#include "spectrum/Spectrum.h"

namespace fixtures {

inline const std::vector<std::pair<const char*, double>> kResidues = {
    {"G", 57.02146},  {"A", 71.03711},  {"S", 87.03203},  {"P", 97.05276},  {"V", 99.06841},
    {"T", 101.04768}, {"C", 103.00919}, {"L", 113.08406}, {"I", 113.08406}, {"N", 114.04293},
    {"J", 114.04293}, {"D", 115.02694}, {"Q", 128.05858}, {"K", 128.09496}, {"E", 129.04259},
    {"M", 131.04049}, {"H", 137.05891}, {"F", 147.06841}, {"R", 156.10111}, {"Y", 163.06333},
    {"W", 186.07931}};
constexpr double kH2O = 18.01056;
constexpr double kProton = 1.00728;
constexpr double kDeamidated = 0.98402;
constexpr double kOxidation = 15.99491;

inline void FillMassTable(CMassTable& table) {
  for (const auto& [letter, mass] : kResidues) table.SetEntry(0, letter, mass);
  table.SetEntry(1, "H2O", kH2O);
  table.SetEntry(1, "Proton", kProton);
  table.SetEntry(2, "Deamidated[N]", kDeamidated);
  table.SetEntry(2, "Oxidation[M]", kOxidation);
}

// The same masses as a MassTable.ini for the installed program.
inline std::string MassTableText() {
  std::string text = "[AA]\n";
  for (const auto& [letter, mass] : kResidues)
    text += std::string(letter) + " = " + std::to_string(mass) + "\n";
  text += "[Molecule]\nH2O = 18.01056\nProton = 1.00728\n";
  text += "[Modification]\nDeamidated[N] = 0.98402\nOxidation[M] = 15.99491\n";
  text += "Carbamidomethyl[C] = 57.02146\n";
  text += "[Glyco]\n5-2-0-0-0 = 1216.42286\n3-4-0-0-1 = 1444.53387\n5-4-2-0-0 = 2204.77207\n";
  return text;
}

inline CPeak Peak(double mz, double intensity, int32_t type = kPeakUnannotated,
                  uint32_t position = 0, uint32_t charge = 0, uint32_t count = 1) {
  CPeak peak;
  peak.mz = mz;
  peak.intensity = intensity;
  peak.type = type;
  peak.position = position;
  peak.charge = charge;
  peak.count = count;
  return peak;
}

inline CSpectrum Spectrum(std::vector<CPeak> peaks, double precursorMass = 1000.0) {
  CSpectrum spectrum;
  spectrum.peaks = std::move(peaks);
  spectrum.precursorMass = precursorMass;
  return spectrum;
}

// Library settings of the tests: tolerance in Da, NXS and NXT motifs.
inline void SetLibrarySettings(double tolerance, int32_t unit = 0) {
  CConstructionParam& settings = CParam::GetInstance().construction;
  settings.library_product_ion_tolerance = tolerance;
  settings.library_product_ion_unit = unit;
  settings.N_glycan_motifs = {0, 1};
}

// A dataset served from memory; unknown names read nothing.
class CMemorySpecIO : public CSpecIO {
 public:
  std::map<std::string, CSpectrum> byName;

  void OpenRead(const std::string&) override {}
  bool ReadNext(std::vector<CSpectrum>&) override { return false; }
  uint32_t ReadAll(std::vector<CSpectrum>&) override { return 0; }
  void CloseRead() override {}
  bool ReadByName(const std::string& name, std::vector<CSpectrum>& out) override {
    auto found = byName.find(name);
    if (found == byName.end()) return false;
    out.push_back(found->second);
    out.back().name = name;
    return true;
  }
  void Rewind() override {}
  uint32_t Count() override { return static_cast<uint32_t>(byName.size()); }
  void OpenWrite(const std::string&) override {}
  uint32_t WriteRange(std::vector<CSpectrum>&, uint32_t, uint32_t) override { return 0; }
  void CloseWrite() override {}
  void Init() override {}
};

}  // namespace fixtures
