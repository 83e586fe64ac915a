#pragma once
// Shared set-up of the construction tests: residue masses, spectra in a line,
// a builder with those masses, and a dataset that serves spectra from memory.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "construction/LibraryBuilder.h"
#include "spectrum/MgfIO.h"

namespace fixtures {

inline const std::map<std::string, double> kResidues = {
    {"G", 57.02146},  {"A", 71.03711},  {"S", 87.03203},  {"P", 97.05276},  {"V", 99.06841},
    {"T", 101.04768}, {"C", 103.00919}, {"L", 113.08406}, {"I", 113.08406}, {"N", 114.04293},
    {"J", 114.04293}, {"D", 115.02694}, {"Q", 128.05858}, {"K", 128.09496}, {"E", 129.04259},
    {"M", 131.04049}, {"H", 137.05891}, {"F", 147.06841}, {"R", 156.10111}, {"Y", 163.06333},
    {"W", 186.07931}};
constexpr double kH2O = 18.01056;
constexpr double kProton = 1.00728;
constexpr double kDeamidated = 0.98402;

inline double Mass(char residue) { return kResidues.at(std::string(1, residue)); }

// The same masses as a MassTable.ini for the installed program.
inline std::string MassTableText() {
  std::string text = "[AA]\n";
  for (const auto& [letter, mass] : kResidues)
    text += letter + " = " + std::to_string(mass) + "\n";
  return text + "[Molecule]\nH2O = 18.01056\nProton = 1.00728\n"
                "[Modification]\nDeamidated[N] = 0.98402\nOxidation[M] = 15.99491\n"
                "[Glyco]\n5-2-0-0-0 = 1216.42286\n3-4-0-0-1 = 1444.53387\n";
}

inline CPeak Peak(double mz, double intensity, int32_t type = kPeakUnannotated,
                  uint32_t position = 0, uint32_t charge = 0, uint32_t count = 1) {
  return CPeak{mz, intensity, type, position, charge, count};
}

inline CSpectrum Spectrum(std::vector<CPeak> peaks, double precursorMass = 1000.0) {
  CSpectrum spectrum;
  spectrum.peaks = std::move(peaks);
  spectrum.precursorMass = precursorMass;
  return spectrum;
}

// Checks one field of every peak, in order, against the expected values.
template <typename Field>
void ExpectPeaks(const CSpectrum& s, Field CPeak::*field, const std::vector<double>& expected) {
  ASSERT_EQ(s.peaks.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_NEAR(static_cast<double>(s.peaks[i].*field), expected[i], 1e-9) << "peak " << i;
}

// Library settings of the tests: the product ion tolerance, NXS and NXT motifs.
inline void SetLibrarySettings(double tolerance, int32_t unit = 0) {
  CConstructionParam& settings = CParam::GetInstance().construction;
  settings.library_product_ion_tolerance = tolerance;
  settings.library_product_ion_unit = unit;
  settings.N_glycan_motifs = {0, 1};
}

// A builder with the test masses, a tolerance of 0.5 Da and the given theta.
inline std::unique_ptr<CLibraryBuilder> MakeBuilder(double theta = 0.2) {
  SetLibrarySettings(0.5);
  auto builder = std::make_unique<CLibraryBuilder>();
  builder->param = CParam::GetInstance().construction;
  builder->param.theta = theta;
  CMassTable& table = builder->calculator.massTable;
  for (const auto& [letter, mass] : kResidues) table.SetEntry(0, letter, mass);
  table.SetEntry(1, "H2O", kH2O);
  table.SetEntry(1, "Proton", kProton);
  table.SetEntry(2, "Deamidated[N]", kDeamidated);
  return builder;
}

// A dataset served from memory; unknown names read nothing.
class CMemorySpecIO : public CMgfIO {
 public:
  std::map<std::string, CSpectrum> byName;
  bool ReadByName(const std::string& name, std::vector<CSpectrum>& out) override {
    auto found = byName.find(name);
    if (found != byName.end()) out.push_back(found->second);
    return found != byName.end();
  }
};

}  // namespace fixtures
