#pragma once
#include <cstddef>
#include <map>
#include <string>
#include <vector>

// One line of the ranked result file, field by field (28 tab-separated columns).
struct CRankedHit {
  std::size_t rank = 0;  // 1 for the first data line
  std::vector<std::string> fields;
  double score = 0.0;
  double fdr = 1.0;
  bool decoy = false;
};

// What a report needs of every line: the score and FDR plots use all lines,
// while full fields are kept only for the hits shown (the first lines, since
// the file is ranked by FDR).
struct CScorePoint {
  double score = 0.0;
  double fdr = 1.0;
  bool decoy = false;
};

// Column numbers (0-based) of the ranked result file.
namespace resultcol {
enum : std::size_t {
  kQuery = 0, kLibrary, kQueryMH, kLibraryMH, kCharge, kSequence, kModification, kMassShift,
  kGlycanMass, kGlycanName, kGlycoLoc, kMotif, kCandidates, kYIons, kYIonShare, kPeptideIons,
  kPeptideIonShare, kDps, kPs, kScore, kTargetDecoy, kDpsIons, kPsIons, kProtein, kPreviousAA,
  kLastAA, kStart, kFdr, kCount
};
}

class CRankedResults {
 public:
  // Reads the ranked file. `topN` 0 keeps the hits at FDR <= 1 %, or, given
  // the glycopeptide q-values by query, those at GlycopeptideQ <= 1 % (a line
  // without one is not kept); else the first topN lines. False, with `error`
  // set, when the file can't be read or is not ranked yet (no FDR column).
  bool Read(const std::string& path, std::size_t topN, std::string& error,
            const std::map<std::string, double>* glycopeptideQ = nullptr);

  std::vector<CRankedHit> shown;
  std::vector<CScorePoint> all;
  std::size_t malformedLines = 0;  // data lines without 28 readable columns
};
