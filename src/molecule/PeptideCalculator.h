#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "molecule/MassTable.h"
#include "molecule/Modification.h"

// Precursor and fragment masses of one peptide at a time.
class CPeptideCalculator {
 public:
  static constexpr uint32_t kMaxLength = 8192;

  // Fills prefixMass and length. Terminal modifications fold onto the first and
  // last residue. Returns false (length 0) for a sequence over kMaxLength residues.
  bool SetPeptide(const std::string& sequence, const std::vector<CModification>& modifications);
  // [M+H]+ of the current peptide.
  double PeptideMH() const;
  // m/z of a b (ionType 0) or y (any other) fragment of length k at charge z.
  double FragmentMz(int ionType, uint32_t k, uint32_t charge) const;

  CMassTable massTable;
  std::vector<double> prefixMass = std::vector<double>(kMaxLength + 1, 0.0);  // index 1..length
  uint32_t length = 0;

 private:
  // Molecule masses read by SetPeptide for the fragments of that peptide.
  double waterMass_ = 0.0;
  double protonMass_ = 0.0;
};
