#include "search/QueryPeakLookup.h"

#include <algorithm>

#include "run/Param.h"
#include "search/Prefetch.h"

bool CQueryPeakLookup::Prepare(const CSpectrum& query) {
  windows.clear();
  bucketCount = 0;
  for (uint64_t b : touchedBuckets) {
    buckets[b] = {0, 0};
    bucketBits[b >> 6] = 0;
  }
  touchedBuckets.clear();
  const CSearchParam& search = CParam::GetInstance().search;
  const double toleranceValue = search.query_product_ion_tolerance;
  const int32_t toleranceUnit = search.query_product_ion_unit;
  double largestTolerance = 0.0, largestMz = 0.0;
  for (std::size_t q = 0; q < query.peaks.size(); ++q) {
    const double mz = query.peaks[q].mz;
    // A peak at a non-finite m/z has an empty window: it never finds a peak.
    if (!std::isfinite(mz)) continue;
    const double tolerance = ToleranceInDa(toleranceValue, toleranceUnit, mz);
    if (!std::isfinite(tolerance)) return false;
    windows.push_back({mz, tolerance, mz - tolerance, mz + tolerance, static_cast<uint32_t>(q)});
    largestTolerance = std::max(largestTolerance, tolerance);
    largestMz = std::max(largestMz, std::fabs(mz));
  }
  const double magnitude = 1.0 + largestMz + largestTolerance;
  if (!std::isfinite(magnitude)) return false;
  scaleLimit = 1e3 * magnitude;
  if (windows.empty()) return true;
  std::sort(windows.begin(), windows.end(), [](const Window& a, const Window& b) {
    return a.mz < b.mz || (a.mz == b.mz && a.index < b.index);
  });
  const double reach = largestTolerance + 1e-7 * magnitude;
  const double low = windows.front().mz - reach, high = windows.back().mz + reach;
  constexpr double kMzLimit = 1073741824.0;  // 2^30, as the library look-up
  if (!(std::fabs(low) < kMzLimit && std::fabs(high) < kMzLimit)) return false;
  // Buckets of a power-of-two fraction of an m/z unit, 1/16 at most, at least
  // twice the reach of a window so that a window covers two or three; coarser
  // when the query spreads over too many.
  constexpr double kFinest = 16.0, kCoarsest = 1.0 / 1048576.0;
  constexpr int64_t kMostBuckets = int64_t{1} << 20;
  bucketScale = kFinest;
  while (bucketScale > kCoarsest && 2.0 * reach * bucketScale > 1.0) bucketScale *= 0.5;
  while (bucketScale > kCoarsest && FloorToInteger(high * bucketScale) -
                                            FloorToInteger(low * bucketScale) >= kMostBuckets)
    bucketScale *= 0.5;
  bucketBase = FloorToInteger(low * bucketScale);
  const int64_t span = FloorToInteger(high * bucketScale) - bucketBase;
  if (span >= kMostBuckets) return false;  // m/z spread too wide
  bucketCount = static_cast<uint64_t>(span) + 1;
  if (buckets.size() < bucketCount) buckets.resize(bucketCount, {0, 0});
  if (bucketBits.size() < (bucketCount + 63) / 64) bucketBits.resize((bucketCount + 63) / 64, 0);
  // Each window goes into every bucket from that of mz - reach to that of
  // mz + reach. Both ends rise with the m/z, so a bucket holds a run of windows.
  for (std::size_t w = 0; w < windows.size(); ++w) {
    uint64_t from = 0, to = 0;
    if (!BucketOf(windows[w].mz - reach, from) || !BucketOf(windows[w].mz + reach, to)) {
      bucketCount = 0;
      return false;
    }
    for (uint64_t b = from; b <= to; ++b) {
      if (buckets[b].second == 0) {
        buckets[b].first = static_cast<uint32_t>(w);
        bucketBits[b >> 6] |= uint64_t{1} << (b & 63);
        touchedBuckets.push_back(b);
      }
      buckets[b].second = static_cast<uint32_t>(w + 1) - buckets[b].first;
    }
  }
  return true;
}

void CQueryPeakLookup::CollectPairs(const CEntryPeakView& view, uint32_t highestCharge,
                                    double shift, std::vector<uint64_t>& pairs) const {
  double shiftByCharge[CLibraryPeakTable::kHighestIonCharge + 1] = {};
  for (uint32_t z = 1; z <= highestCharge; ++z) shiftByCharge[z] = shift / static_cast<double>(z);
  // The direct windows of every peak. In a usable view the m/z ascend and
  // |mz| < 2^30, so the scaled value needs no test; and when the first is not
  // negative, none is, and truncation is the floor (the plain rule's rounding,
  // one conversion cheaper).
  auto direct = [&](auto floorOf) {
    for (std::size_t i = 0; i < view.peakCount; ++i) {
      const double mz = view.mzs[i];
      const uint64_t bucket = static_cast<uint64_t>(floorOf(mz * bucketScale) - bucketBase);
      if (bucket >= bucketCount || !Occupied(bucket)) continue;
      const auto [first, count] = buckets[bucket];
      for (uint32_t w = first; w < first + count; ++w) {
        const Window& window = windows[w];
        if (window.lower <= mz && mz < window.upper) {
          pairs.push_back(static_cast<uint64_t>(window.index) << 32 | i);
          Prefetch(&view.intensities[i]);  // both read next
          Prefetch(&view.labelIds[i]);
        }
      }
    }
  };
  if (view.peakCount > 0 && view.mzs[0] >= 0.0)
    direct([](double x) { return static_cast<int64_t>(x); });
  else
    direct(FloorToInteger);
  for (std::size_t k = 0; k < view.ionCount; ++k) {
    const uint32_t z = view.ions[k].Charge();
    if (z > highestCharge) continue;
    const uint32_t l = view.ions[k].Peak();
    const double mz = view.mzs[l];
    uint64_t bucket;
    if (!BucketOf(mz + shiftByCharge[z], bucket) || !Occupied(bucket)) continue;
    const auto [first, count] = buckets[bucket];
    for (uint32_t w = first; w < first + count; ++w) {
      const Window& window = windows[w];
      const double centre = window.mz - shiftByCharge[z];
      if (centre - window.tolerance <= mz && mz < centre + window.tolerance) {
        pairs.push_back(static_cast<uint64_t>(window.index) << 32 |
                        static_cast<uint64_t>(z) << kPeakBits | l);
        Prefetch(&view.intensities[l]);
        Prefetch(&view.labelIds[l]);
      }
    }
  }
}
