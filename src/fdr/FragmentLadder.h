#pragma once
#include <cstdint>
#include <vector>

#include "fdr/GlycanCall.h"
#include "molecule/PeptideCalculator.h"

// The b and y ions of a peptide and which of them a query shows (bare or
// with a HexNAc, at any charge up to the highest tried): what tells apart
// peptide forms of the same mass, such as two residues swapped, whose
// precursor, Y ions and glycan are the same. Plain values, to be stored.
struct CFragmentLadder {
  std::vector<float> masses;   // singly charged m/z: b1..b(L-1), then y1..y(L-1)
  std::vector<uint8_t> found;  // 1 where the query shows the ion
  float chance = 0.0f;         // the chance of an ion found by accident in this query
  float toleranceDa = 0.02f;   // the product tolerance at the middle of the ladder

  // Ions of 3 residues or more found.
  int InnerFound() const;
};

// Whether some peak of `peaksByMz` lies within the tolerance of `mz`.
bool HasPeakNear(const std::vector<CPeak>& peaksByMz, double mz, CProductTolerance tolerance);

CFragmentLadder ReadLadder(const CPeptideCalculator& peptide, const std::vector<CPeak>& peaksByMz,
                           uint32_t highestCharge, CProductTolerance tolerance);

// Log-odds that form `a` rather than `b` made the query, from the ions that
// one has and the other lacks (within the tolerance): each found counts for
// its form as much as seeing an ion is likelier than a chance match, each
// missing a little against it. 0 when the two share every ion.
double LadderLogOdds(const CFragmentLadder& a, const CFragmentLadder& b);
