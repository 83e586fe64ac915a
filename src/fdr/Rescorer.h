#pragma once
#include <cstdint>
#include <vector>

// Rescoring of matches on several features, learned from targets and decoys.
// The hits are split into folds; each fold is scored by a logistic model
// trained on the other folds only, so that no hit is scored by a model that
// saw it. The model separates decoys from targets, most of which are right at
// the top of a list, and so learns what right matches look like.
struct CRescoreInput {
  std::vector<std::vector<double>> features;  // one row per hit, all rows equally long
  std::vector<bool> decoys;
  std::vector<uint32_t> folds;  // fold of each hit, below foldCount
  // Hits that are scored but not learned from (another candidate of a
  // query, not the one it was reported with); empty: none.
  std::vector<bool> scoredOnly;
  uint32_t foldCount = 3;
};

// Below this many decoys or targets in a training set nothing is learned.
inline constexpr std::size_t kMinimalTrainingClass = 20;

// The learned score of each hit (the model's log-odds of being a target); or,
// when some training set is too small to learn from, `fallback` unchanged.
// `learned` tells which of the two was returned.
std::vector<double> CrossValidatedScores(const CRescoreInput& input,
                                         const std::vector<double>& fallback, bool& learned);
