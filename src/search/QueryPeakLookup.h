#pragma once
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "search/LibraryPeakTable.h"
#include "spectrum/Spectrum.h"

// The fast way to the pairs of the scoring rule. The rule asks, for each query
// peak in turn, which library peaks lie in its windows; almost always none do.
// Here each library peak asks which query windows it lies in: the direct one
// at its own m/z, and for a b or y ion of charge z the window of charge z, which
// holds the peak when the query peak lies near mz + shift / z. A pair is kept
// only if the very bounds of the rule hold it (lower <= mz < upper, computed the
// same way), so the pairs are identical; the buckets only have to be wide
// enough, which is what `reach` (tolerance plus a margin far above rounding)
// ensures.
class CQueryPeakLookup {
 public:
  // Builds the windows of `query`; false when it can't serve (the rule is then
  // followed peak by peak).
  bool Prepare(const CSpectrum& query);
  // |shift| and library m/z up to which the look-up stays exact.
  double ScaleLimit() const { return scaleLimit; }
  // Appends the pairs of one library entry: query peak << 32 | charge << 28 |
  // library peak, charge 0 for the direct window.
  void CollectPairs(const CEntryPeakView& view, uint32_t highestCharge, double shift,
                    std::vector<uint64_t>& pairs) const;

  static constexpr uint32_t kPeakBits = 28;

 private:
  // A query peak's direct window, [lower, upper), and its tolerance.
  struct Window {
    double mz;
    double tolerance;
    double lower;
    double upper;
    uint32_t index;  // place in the query's peaks
  };
  // Bucket (of width 1 / bucketScale, counted from bucketBase) that holds
  // m/z x; false outside the table.
  bool BucketOf(double x, uint64_t& bucket) const {
    const double scaled = x * bucketScale;
    if (!(std::fabs(scaled) < kScaledLimit)) return false;
    bucket = static_cast<uint64_t>(FloorToInteger(scaled) - bucketBase);
    return bucket < bucketCount;
  }
  bool Occupied(uint64_t bucket) const { return (bucketBits[bucket >> 6] >> (bucket & 63)) & 1; }
  static constexpr double kScaledLimit = 1125899906842624.0;  // 2^50

  // Windows by ascending m/z; per bucket of m/z the run of windows (first,
  // count) that may reach into it, and a bit that tells whether there is any
  // (most buckets are empty, and the bits fit the processor's nearest cache).
  std::vector<Window> windows;
  std::vector<std::pair<uint32_t, uint32_t>> buckets;
  std::vector<uint64_t> bucketBits;
  std::vector<uint64_t> touchedBuckets;  // to empty the tables for the next query
  uint64_t bucketCount = 0;
  int64_t bucketBase = 0;
  double bucketScale = 1.0;
  double scaleLimit = 0.0;
};
