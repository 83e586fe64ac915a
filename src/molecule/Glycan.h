#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

// A glycan composition: five monosaccharide counts named by a key "Hex-HexNAc-NeuAc-NeuGc-dHex".
class CGlycan {
 public:
  CGlycan();
  // Fills `counts` from `name`; missing places read as 0.
  void ParseComposition();

  std::string name;
  double mass = 0.0;
  std::map<std::string, int32_t> counts;  // "Hex", "HexNAc", "NeuAc", "NeuGc", "dHex"
  bool hasNeuAc = false;
  bool hasNeuGc = false;
};

// Masses that the N-glycan core adds to the peptide in Y0 to Y5.
class CNGlycanFrag {
 public:
  static CNGlycanFrag& GetInstance();
  virtual ~CNGlycanFrag() = default;
  // Core mass of Y index 0..5; -1.0 above 5.
  double GetCoreMass(uint32_t yIndex) const;

  std::vector<double> coreMasses;

 private:
  CNGlycanFrag();
};
