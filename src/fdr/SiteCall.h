#pragma once
#include <string>
#include <vector>

#include "fdr/GlycanCall.h"
#include "molecule/PeptideCalculator.h"

// Where on the peptide the glycan of a line sits, as the b and y ions of its
// spectrum tell. Plain values only, so that a line's evidence can be stored
// and read back.
struct CSiteCall {
  std::vector<int> candidates;      // possible sites, 1-based, ascending
  std::vector<double> probability;  // of each candidate, summing to 1
  int reported = 0;                 // the most probable candidate; 0 when there is none
  // The other candidates that the spectrum cannot tell apart from the
  // reported one, ascending.
  std::vector<int> group;

  double ReportedProbability() const;
  // The chance that the true site is the reported one or in its group; 1
  // when the peptide has no candidate (nothing to get wrong).
  double GroupProbability() const;
};

// HexNAc, the residue a fragment keeps when the rest of its glycan is lost.
inline constexpr double kHexNAcMass = 203.079373;

// Every asparagine (N, or J as the library marks it) that starts a sequon:
// a residue other than P, then one of `acceptors`, read on into `following`
// (the residues after the peptide, where known). A J that starts none is a
// site the identification list marked, and is a candidate as well.
std::vector<int> CandidateSites(const std::string& sequence, const std::string& following,
                                const std::string& acceptors);

// Weighs `candidates` of the peptide set in `peptide` by the b and y ions of
// the query (`peaksByMz`) that hold one candidate but not another, each
// looked for bare (the glycan lost: a little likelier when it holds no site),
// with a HexNAc left on, and with the whole glycan (`glycanMass`), at charges
// 1 to `highestCharge`. A shifted ion found is strong evidence for the sites
// it holds, one not found weak evidence against them; a chance match is as
// likely as the spectrum's peak density makes it. Equal evidence goes to
// `preferred` (the search's site), then to the first.
CSiteCall CallSite(const std::vector<int>& candidates, int preferred,
                   const CPeptideCalculator& peptide, double glycanMass,
                   const std::vector<CPeak>& peaksByMz, uint32_t highestCharge,
                   CProductTolerance tolerance);

// The sequence with J at the reported site and N at every other J, and
// GlycoLoc naming the site; both unchanged when there is no candidate.
void ApplySite(const CSiteCall& site, std::string& sequence, std::string& glycoLoc);

