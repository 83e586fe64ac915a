#include "fdr/QValues.h"

#include <algorithm>
#include <cmath>
#include <numeric>

std::vector<double> TargetDecoyQValues(const std::vector<double>& scores,
                                       const std::vector<bool>& decoys, double addedDecoys) {
  const std::size_t n = scores.size();
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), 0);
  auto score = [&](std::size_t i) { return std::isnan(scores[i]) ? -INFINITY : scores[i]; };
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return score(a) > score(b); });
  std::vector<double> q(n, 1.0);
  double targets = 0.0, decoyCount = 0.0;
  for (std::size_t start = 0; start < n;) {
    // Equal scores can't be told apart, so a group shares the estimate made
    // after all of its members.
    std::size_t end = start;
    while (end < n && score(order[end]) == score(order[start])) {
      (decoys[order[end]] ? decoyCount : targets) += 1.0;
      ++end;
    }
    const double estimate = targets > 0.0 ? std::min(1.0, (decoyCount + addedDecoys) / targets) : 1.0;
    for (std::size_t k = start; k < end; ++k) q[order[k]] = estimate;
    start = end;
  }
  double running = 1.0;
  for (std::size_t k = n; k-- > 0;) {
    running = std::min(running, q[order[k]]);
    q[order[k]] = running;
  }
  return q;
}
