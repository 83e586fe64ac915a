#pragma once
#include <cstddef>
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

// The q-value columns of the q-value file, each as [accepted, q] points where
// the q-value changes: {"PeptideQ":[[n,q],...], ...}. A missing file gives
// null; `note` tells of a file that exists but could not be used.
nlohmann::json QValueCurves(const std::string& path, std::string& note);
