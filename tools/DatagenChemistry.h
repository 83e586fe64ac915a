#pragma once
#include <cstdlib>
#include <string>
#include <vector>

#include "run/ConfigFile.h"
#include "run/StringUtil.h"

// Masses the generator needs, taken from the program's own MassTable.ini so that
// the generated spectra agree with what the program computes.
struct CDatagenGlycan {
  std::string name;  // composition key "Hex-HexNAc-NeuAc-NeuGc-dHex"
  double mass = 0.0;
  int hex = 0, hexNAc = 0, neuAc = 0, neuGc = 0, dHex = 0;
};

class CDatagenChemistry {
 public:
  static constexpr const char* kDeamidated = "Deamidated[N]";
  static constexpr const char* kCarbamidomethyl = "Carbamidomethyl[C]";
  static constexpr const char* kOxidation = "Oxidation[M]";
  // Masses that the N-glycan core adds to the peptide in Y0 to Y5.
  static constexpr double kCoreMasses[6] = {0.0, 203.0794, 406.1588, 568.2116, 730.2644, 892.3172};
  static constexpr double kIsotopeStep = 1.003355;

  // Reads the table; on a missing entry fills `error` and returns false.
  bool Load(const std::string& path, std::string& error) {
    CConfigFile file;
    file.Read(path);  // ends the program with the reader's message if unreadable
    const char* residues = "ACDEFGHIKLMNPQRSTVWYJ";
    for (const char* r = residues; *r; ++r) {
      std::string value = file.Get("AA", std::string(1, *r));
      if (value.empty()) {
        error = std::string("residue ") + *r + " has no mass in [AA]";
        return false;
      }
      residue[static_cast<unsigned char>(*r)] = std::atof(value.c_str());
    }
    if (!Number(file, "Molecule", "H2O", water, error)) return false;
    if (!Number(file, "Molecule", "Proton", proton, error)) return false;
    if (!Number(file, "Modification", kDeamidated, deamidation, error)) return false;
    if (!Number(file, "Modification", kCarbamidomethyl, carbamidomethyl, error)) return false;
    if (!Number(file, "Modification", kOxidation, oxidation, error)) return false;
    const CConfigSection* glyco = file.FindSection("Glyco");
    if (glyco) {
      for (const auto& [key, value] : glyco->entries) {
        CDatagenGlycan g;
        g.name = key;
        g.mass = std::atof(value.c_str());
        std::vector<std::string> counts;
        Split(key, "-", counts);
        int* fields[5] = {&g.hex, &g.hexNAc, &g.neuAc, &g.neuGc, &g.dHex};
        for (std::size_t i = 0; i < counts.size() && i < 5; ++i) *fields[i] = std::atoi(counts[i].c_str());
        if (g.mass > 0.0) glycans.push_back(g);
      }
    }
    if (glycans.empty()) {
      error = "the [Glyco] section holds no glycan";
      return false;
    }
    return true;
  }

  double Residue(char r) const { return residue[static_cast<unsigned char>(r)]; }

  double residue[256] = {};
  double water = 0.0;
  double proton = 0.0;
  double deamidation = 0.0;
  double carbamidomethyl = 0.0;
  double oxidation = 0.0;
  std::vector<CDatagenGlycan> glycans;  // in key order

 private:
  static bool Number(CConfigFile& file, const char* section, const char* key, double& out,
                     std::string& error) {
    std::string value = file.Get(section, key);
    if (value.empty()) {
      error = std::string(key) + " has no mass in [" + section + "]";
      return false;
    }
    out = std::atof(value.c_str());
    return true;
  }
};

// Fragment masses of one peptide with a mass per residue (modifications included).
class CDatagenIon {
 public:
  CDatagenIon(const std::vector<double>& residueMasses, const CDatagenChemistry& chemistry)
      : water_(chemistry.water), proton_(chemistry.proton) {
    prefix_.assign(residueMasses.size() + 1, 0.0);
    for (std::size_t i = 0; i < residueMasses.size(); ++i) prefix_[i + 1] = prefix_[i] + residueMasses[i];
  }
  std::size_t Length() const { return prefix_.size() - 1; }
  double MH() const { return prefix_.back() + water_ + proton_; }
  double B(std::size_t k, int z) const { return (prefix_[k] + z * proton_) / z; }
  double Y(std::size_t k, int z) const {
    return (prefix_.back() - prefix_[Length() - k] + water_ + z * proton_) / z;
  }

 private:
  std::vector<double> prefix_;
  double water_;
  double proton_;
};
