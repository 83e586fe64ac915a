// The probability score PS: how unlikely it is that chance alone matches k0
// of the query's N top peaks, given the library entry's peak count.
#include <cmath>

#include "run/Param.h"
#include "search/SpectrumMatcher.h"

namespace {
// PS: the m/z span over which random matches are spread, and the m/z at which
// a ppm tolerance is taken.
constexpr double kRandomMatchSpan = 2000.0;
constexpr double kPpmReferenceMz = 1000.0;
}  // namespace

uint32_t CSpectrumMatcher::BinomialCoefficient(uint32_t n, uint32_t k) {
  const uint32_t m = std::min(k, n - k);
  uint32_t c = 1;
  for (uint32_t i = 0; i < m; ++i) c = (n - i) * c / (i + 1);
  return c;
}

double CSpectrumMatcher::BinomialTail(uint32_t n, uint32_t k0, double p) {
  const double q = 1.0 - p;
  double sum = 0.0;
  for (uint32_t k = k0; k <= n; ++k) {
    const double pk = k == 2 ? p * p : std::pow(p, static_cast<double>(k));
    const uint32_t rest = n - k;
    const double qk = rest == 2 ? q * q : std::pow(q, static_cast<double>(rest));
    sum += static_cast<double>(BinomialCoefficient(n, k)) * pk * qk;
  }
  return sum;
}

double CSpectrumMatcher::ProbabilityScore(uint32_t topPeaks, int32_t libraryPeakCount,
                                          uint32_t matchedTop, double share) {
  auto compute = [&] {
    const double p = libraryPeakCount * share;
    const double tail = BinomialTail(topPeaks, matchedTop, p);
    const double s = -std::log(tail);
    return s > 0.0 ? std::pow(s, 0.5) : 0.0;  // NaN is not positive
  };
  // A query's candidates share N and mostly a few peak counts: the score of a
  // (N, count, k0) is computed once and kept, the very same double.
  constexpr uint32_t kLargestCachedN = 64;
  constexpr int32_t kLargestCachedCount = 1 << 12;
  if (topPeaks > kLargestCachedN || matchedTop > topPeaks || libraryPeakCount < 0 ||
      libraryPeakCount >= kLargestCachedCount)
    return compute();
  if (scratch.psCache.size() <= topPeaks) scratch.psCache.resize(topPeaks + 1);
  std::vector<double>& row = scratch.psCache[topPeaks];
  const std::size_t slot = static_cast<std::size_t>(libraryPeakCount) * (topPeaks + 1) + matchedTop;
  if (row.size() <= slot) row.resize((static_cast<std::size_t>(libraryPeakCount) + 1) * (topPeaks + 1), NAN);
  if (std::isnan(row[slot])) row[slot] = compute();
  return row[slot];
}

void CSpectrumMatcher::ComputeScores(uint32_t topPeaks) {
  const CSearchParam& search = CParam::GetInstance().search;
  const double tolerance = ToleranceInDa(search.query_product_ion_tolerance,
                                         search.query_product_ion_unit, kPpmReferenceMz);
  const double share = 2.0 * tolerance / kRandomMatchSpan;
  // Kept scores hold for one share; the settings may change between runs.
  if (!(share == scratch.psCacheShare)) {
    scratch.psCache.clear();
    scratch.psCacheShare = share;
  }
  for (std::size_t i = 0; i < scratch.matchCount; ++i) {
    CSpectralMatch& record = scratch.matches[i];
    const uint32_t k0 = record.matchedTopPeakCount > 0
                            ? static_cast<uint32_t>(record.matchedTopPeakCount) : 0;
    record.ps = ProbabilityScore(topPeaks, record.libraryPeakCount, k0, share);
    record.score = record.ps * record.dps;
  }
}
