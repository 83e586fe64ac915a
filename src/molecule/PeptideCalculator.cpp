#include "molecule/PeptideCalculator.h"

bool CPeptideCalculator::SetPeptide(const std::string& sequence,
                                    const std::vector<CModification>& modifications) {
  // Water and proton are read once per peptide, not once per fragment.
  waterMass_ = massTable.Molecule("H2O");
  protonMass_ = massTable.Molecule("Proton");
  if (sequence.size() > kMaxLength) {
    // Longer than any peptide the calculator holds: nothing is computed and
    // every mass reads as that of an empty peptide.
    length = 0;
    if (!prefixMass.empty()) prefixMass[0] = 0.0;
    return false;
  }
  const uint32_t count = static_cast<uint32_t>(sequence.size());
  if (prefixMass.size() < count + 1u) prefixMass.resize(kMaxLength + 1);
  length = count;
  prefixMass[0] = 0.0;
  for (uint32_t i = 1; i <= count; ++i) prefixMass[i] = massTable.AminoAcid(sequence[i - 1]);
  if (count > 0) {
    for (const CModification& mod : modifications) {
      // The N-terminus (and any position below it) falls on the first residue,
      // a position past the end on the last.
      uint32_t residue = mod.position <= 1 ? 1u
                         : static_cast<uint32_t>(mod.position) > count
                             ? count
                             : static_cast<uint32_t>(mod.position);
      prefixMass[residue] += massTable.Modification(mod.name);
    }
  }
  for (uint32_t i = 2; i <= count; ++i) prefixMass[i] += prefixMass[i - 1];
  return true;
}

double CPeptideCalculator::PeptideMH() const {
  return prefixMass[length] + waterMass_ + protonMass_;
}

double CPeptideCalculator::FragmentMz(int ionType, uint32_t k, uint32_t charge) const {
  // A length beyond the peptide is held to the whole peptide rather than read
  // outside the prefix sums; a charge of 0 gives the division's infinity.
  if (k > length) k = length;
  double neutral = ionType == 0 ? prefixMass[k]
                                : prefixMass[length] + waterMass_ - prefixMass[length - k];
  return (neutral + charge * protonMass_) / charge;
}
