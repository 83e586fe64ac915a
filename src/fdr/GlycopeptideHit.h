#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "fdr/FdrEstimator.h"
#include "fdr/FragmentLadder.h"
#include "fdr/GlycanCall.h"
#include "fdr/SiteCall.h"
#include "run/Param.h"

// One result line as the glycopeptide q-values see it.
struct CGlycopeptideHit {
  // From the result line.
  std::string query, sequence, modification, searchGlycan, glycoLoc, protein;
  std::string following;  // the two residues after the peptide, "-" where unknown
  int32_t proteinStart = 0;  // 1-based start in the protein; 0 when unknown
  bool decoy = false;
  int32_t candidateRank = 0;  // 0: the result line's candidate; 1 on: the next best of the search
  double queryMH = 0.0, peptideMH = 0.0, searchScore = 0.0;
  uint32_t charge = 0;
  int innerB = 0, innerY = 0;  // matched b and y ions of 3 residues or more
  // b and y ions of 3 residues or more of the sequence found in the query
  // (bare or with a HexNAc), whatever the library spectrum holds.
  int fragmentIons = 0;
  // The chance that another candidate of the query is the right one.
  double candidateRival = 0.0;
  double sameMassRival = 0.0;  // the same, of forms of the same mass alone
  std::vector<double> lineFeatures;  // the scores and ion counts of the line
  // From the spectrum; left empty when it isn't found (the glycan then loses).
  CGlycanCall call;
  CYIonEvidence yIons, decoyYIons;  // at the peptide's Y ions, and moved by a decoy glycan
  CSiteCall site;
  CFragmentLadder ladder;  // the b and y ions of the sequence, found or not
  // Results.
  std::vector<double> features;
  double score = 0.0;  // the final score
  double peptideQ = 1.0, glycanQ = 1.0, glycopeptideQ = 1.0;
  double combinedQ = 1.0;  // of peptide and glycan in one competition, before isotope and site

  std::string GlycanName() const { return call.glycan ? call.glycan->name : searchGlycan; }
  double GlycanScore() const { return yIons.Score() - 2.0 * call.contradictions; }
  // The decoy glycan shares the composition's oxonium evidence: the two
  // differ in their Y ions alone, so that neither is favoured by chance.
  double DecoyGlycanScore() const { return decoyYIons.Score() - 2.0 * call.contradictions; }
};

// The hits of result lines (27 or more tab-separated columns); a line with
// fewer columns gives a hit of what it has.
std::vector<CGlycopeptideHit> ParseResultLines(const std::vector<CFdrRecord>& records);

// What the site call needs besides the spectrum: the residue and
// modification masses (in the calculator's table) and the acceptor letters
// of the sequons.
struct CSiteRules {
  CPeptideCalculator calculator;
  std::string acceptors = "ST";
};

// The hits of result lines, followed by those of the next best candidates the
// search kept (a file of result lines without a header; none when it is
// absent), which have candidateRank 1.
std::vector<CGlycopeptideHit> ResultAndCandidateHits(const std::vector<CFdrRecord>& records,
                                                     const std::string& candidatePath);

// Reads the query spectra named by the hits from the datasets of `settings`,
// prepares them as the search did, and calls each hit's glycan and Y ions
// against the glycan table (sorted by mass), and its site with `sites`.
void AddSpectrumEvidence(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                         const std::vector<CGlycan>& glycanTable, CSiteRules* sites = nullptr);

// The glycan call, Y-ion evidence and (with `sites`) site of one hit from its
// prepared spectrum.
void CallHit(CGlycopeptideHit& hit, const CSpectrum& prepared, const CSearchParam& settings,
             const std::vector<CGlycan>& glycanTable, CSiteRules* sites = nullptr);

// FNV-1a: a hash that is the same on every platform, for folds and decoys.
uint64_t StableHash(const std::string& text);
