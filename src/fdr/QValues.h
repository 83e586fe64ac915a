#pragma once
#include <vector>

// Conservative target-decoy q-values. Hits are walked from the best score
// down; after each group of equal scores the estimate is (D + 1) / T with D
// decoys and T targets seen so far (1 while T is 0, never above 1), and each
// hit gets the smallest estimate at or below its score. The added decoy keeps
// the estimate honest when decoys are few: no q-value falls below 1 / T, and a
// list without decoys is not reported as free of errors.
// Returns one q-value per hit, in the order of the arguments; a score that is
// not a number ranks last. `addedDecoys` 0 gives the plain D / T, for sums of
// several estimates that should carry the added decoy once only.
std::vector<double> TargetDecoyQValues(const std::vector<double>& scores,
                                       const std::vector<bool>& decoys, double addedDecoys = 1.0);
