#pragma once
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "report/RankedResults.h"

// Targets and decoys among the lines at or below an FDR.
struct CFdrCount {
  std::size_t targets = 0;
  std::size_t decoys = 0;
};
CFdrCount CountAtFdr(const std::vector<CScorePoint>& all, double fdr);

// Score histograms of targets and decoys: equal bins from 0 to the best score.
// {"edges":[...], "targets":[...], "decoys":[...]}
nlohmann::json ScoreHistogram(const std::vector<CScorePoint>& all, std::size_t bins);

// FDR against the number of accepted hits, for the ranked lines: the points
// [accepted, fdr] where the FDR changes, and the last one.
nlohmann::json FdrCurve(const std::vector<CScorePoint>& all);

// What the report takes from the q-value file.
struct CQValues {
  // Each q-value column as [accepted, q] points where the q-value changes:
  // {"PeptideQ":[[n,q],...], ...}; null when the file is missing or unusable.
  nlohmann::json curves;
  // Per query spectrum (its first line): the columns of kQValueHitColumns as
  // written, "" where a column is missing.
  std::map<std::string, std::vector<std::string>> byQuery;
  // Per query spectrum: its GlycopeptideQ, where the file gives one.
  std::map<std::string, double> glycopeptideQ;
  // Target and decoy lines at GlycopeptideQ 1 % and 5 %.
  CFdrCount at1, at5;
};
// The q-value columns a hit carries, in this order; the page script knows them.
extern const std::vector<std::string> kQValueHitColumns;
// `note` tells of a file that exists but could not be used.
CQValues ReadQValues(const std::string& path, std::string& note);
