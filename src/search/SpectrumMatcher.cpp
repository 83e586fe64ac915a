#include "search/SpectrumMatcher.h"

#include <algorithm>
#include <cmath>

#include "run/Param.h"

namespace {
// A glycan whose mass differs from the shift by this much or more never
// displaces the first glycan of a candidate's list.
constexpr double kGlycanChoiceStart = 100.0;
// PS: the m/z span over which random matches are spread, and the m/z at which
// a ppm tolerance is taken.
constexpr double kRandomMatchSpan = 2000.0;
constexpr double kPpmReferenceMz = 1000.0;

// A hint that `address` will soon be read (or written); no effect on results.
// Candidates lie scattered over the whole library, and without the hint each
// one starts with a few waits for memory.
inline void Prefetch(const void* address, bool forWriting = false) {
#if defined(__GNUC__)
  if (forWriting) __builtin_prefetch(address, 1);
  else __builtin_prefetch(address, 0);
#else
  (void)address;
  (void)forWriting;
#endif
}

// NaN scores (possible only for degenerate spectra) rank last instead of
// breaking the sort.
inline double RankingScore(double score) { return std::isnan(score) ? -INFINITY : score; }
}  // namespace

void CSpectrumMatcher::Init(std::size_t capacity) {
  current.Reset();
  matches.clear();
  matches.reserve(capacity);
  matchCount = 0;
  ionScratch.reserve(64);
}

void CSpectrumMatcher::AddMatch(const CSpectralMatch& record) {
  if (matchCount < matches.size()) matches[matchCount] = record;  // reuses the room
  else matches.push_back(record);
  ++matchCount;
}

uint32_t CSpectrumMatcher::HighestFragmentCharge(uint32_t queryCharge) {
  switch (queryCharge) {
    case 1: return 1;
    case 2:
    case 3: return 2;
    case 4: return 3;
    default: return 4;  // 0 and 5 upwards
  }
}

CSpectralMatch CSpectrumMatcher::Match(CSpectrum& query,
                                       const std::vector<CSpectrum*>& candidates,
                                       const CGlycanLists& glycanLists) {
  // A prepared query is in this order already; sorting again could only shuffle
  // peaks of equal intensity across the top-peak boundary.
  if (!std::is_sorted(query.peaks.begin(), query.peaks.end(), ByIntensity))
    std::sort(query.peaks.begin(), query.peaks.end(), ByIntensity);
  current.Reset();
  current.query = &query;
  ClearMatches();
  if (candidates.empty()) return current;
  PrepareQueryLookup(query);

  for (std::size_t i = 0; i < std::min<std::size_t>(3, candidates.size()); ++i)
    PrefetchEarly(*candidates[i]);
  for (std::size_t i = 0; i < std::min<std::size_t>(2, candidates.size()); ++i)
    PrefetchLate(*candidates[i]);
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const CGlycan* choice = nullptr;
    if (i < glycanLists.size()) {
      auto list = glycanLists[i];
      if (!list.empty()) choice = list[0];
      if (list.size() > 1) {
        const double delta = query.precursorMass - candidates[i]->precursorMass;
        double best = kGlycanChoiceStart;
        for (const CGlycan* glycan : list) {
          const double difference = std::fabs(delta - glycan->mass);
          if (difference < best) {  // strictly: the earlier glycan wins a tie
            best = difference;
            choice = glycan;
          }
        }
      }
    }
    if (choice != nullptr) {
      current.glycanName = choice->name;
      current.glycanMass = choice->mass;
    } else {
      current.glycanName.clear();
      current.glycanMass = 0.0;
    }
    if (i + 3 < candidates.size()) PrefetchEarly(*candidates[i + 3]);
    if (i + 2 < candidates.size()) PrefetchLate(*candidates[i + 2]);
    ScoreCandidateFast(query, *candidates[i]);
  }

  ComputeScores(query.topPeakCount);

  // The records in order of descending score, ties in candidate order (one of
  // the orders allowed), are walked to the first with enough peptide ions. In
  // that strict order the walk ends at the first of the qualifying records,
  // and the first record overall stands in when none qualifies: both are
  // found in one pass, without sorting.
  auto ranksBefore = [this](std::size_t a, std::size_t b) {
    const double sa = RankingScore(matches[a].score), sb = RankingScore(matches[b].score);
    return sa > sb || (sa == sb && a < b);
  };
  const int32_t minimalIons = CParam::GetInstance().search.minimal_peptide_ions;
  std::size_t chosen = matchCount, first = 0;
  for (std::size_t i = 0; i < matchCount; ++i) {
    if (ranksBefore(i, first)) first = i;
    if (matches[i].matchedPeptideIonCount >= minimalIons &&
        (chosen == matchCount || ranksBefore(i, chosen)))
      chosen = i;
  }
  if (chosen < matchCount) {
    current = matches[chosen];
  } else {
    current = matches[first];
    current.score = -1.0;
  }
  current.candidateCount = static_cast<int32_t>(matchCount);
  ClearMatches();
  NameMatchedIons();
  AssignSite();
  return current;
}

void CSpectrumMatcher::PrefetchEarly(const CSpectrum& library) const {
  Prefetch(&library.precursorMass);
  Prefetch(&library.topPeakCount);
  Prefetch(&library.peaks);
  Prefetch(&library.peakUsed);
  if (peakLookup != nullptr) {
    if (const void* entry = peakLookup->EntryAddress(library)) Prefetch(entry);
  }
}

void CSpectrumMatcher::PrefetchLate(const CSpectrum& library) const {
  constexpr std::size_t kLine = 64;
  CEntryPeakView view;
  if (peakLookup == nullptr || !peakLookup->Find(library, view)) return;
  const char* mzs = reinterpret_cast<const char*>(view.mzs);
  for (std::size_t at = 0; at < std::min<std::size_t>(view.peakCount * sizeof(double), 32 * kLine); at += kLine)
    Prefetch(mzs + at);
  const char* ions = reinterpret_cast<const char*>(view.ions);
  for (std::size_t at = 0; at < std::min<std::size_t>(view.ionCount * sizeof(CLibraryIon), 16 * kLine); at += kLine)
    Prefetch(ions + at);
  const char* marks = reinterpret_cast<const char*>(library.peakUsed.data());
  for (std::size_t at = 0; at < std::min<std::size_t>(library.peakUsed.size() * sizeof(uint32_t), 16 * kLine); at += kLine)
    Prefetch(marks + at, true);
}

void CSpectrumMatcher::StartCandidate(CSpectrum& library) {
  library.ResetPeakUsed();
  current.library = &library;
  current.libraryPeakCount = static_cast<int32_t>(library.topPeakCount);
  current.matchedTopPeakCount = 0;
  current.dps = 0.0;
  current.glycoLoc.clear();
  current.dpsIons.clear();
  current.psIons.clear();
  current.dpsPairs.clear();
  current.psPairs.clear();
}

void CSpectrumMatcher::TakePair(const CSpectrum& query, const CSpectrum& library, std::size_t q,
                                int l) {
  const CPeak& found = library.peaks[static_cast<std::size_t>(l)];
  // An unannotated library peak stays marked even though it does not count.
  if (found.type == kPeakUnannotated) return;
  const auto pair = std::make_pair(static_cast<uint32_t>(q), static_cast<uint32_t>(l));
  current.dpsPairs.push_back(pair);
  const double mean = (found.intensity + query.peaks[q].intensity) * 0.5;
  current.dps += mean * mean;
  if (q < query.topPeakCount) {
    ++current.matchedTopPeakCount;
    current.psPairs.push_back(pair);
  }
}

void CSpectrumMatcher::ScoreCandidate(const CSpectrum& query, CSpectrum& library) {
  PrepareQueryLookup(query);
  ScoreCandidateFast(query, library);
}

void CSpectrumMatcher::SumQueryIntensities(const CSpectrum& query) {
  queryTotal = 0.0;
  for (const CPeak& peak : query.peaks) queryTotal += peak.intensity * peak.intensity;
}

void CSpectrumMatcher::ScoreCandidateByPeakSearch(const CSpectrum& query, CSpectrum& library) {
  SumQueryIntensities(query);
  ScoreByPeakSearch(query, library);
}

void CSpectrumMatcher::ScoreByPeakSearch(const CSpectrum& query, CSpectrum& library) {
  StartCandidate(library);
  const double shift = query.precursorMass - library.precursorMass;
  const CSearchParam& search = CParam::GetInstance().search;
  const double toleranceValue = search.query_product_ion_tolerance;
  const int32_t toleranceUnit = search.query_product_ion_unit;
  // Shifted matching needs a b or y ion of charge z; charges above the highest
  // one the entry has can find nothing, so they are not searched at all.
  uint32_t entryCharge = 0;
  for (const CPeak& peak : library.peaks)
    if ((peak.type == kPeakB || peak.type == kPeakY) && peak.charge > entryCharge)
      entryCharge = peak.charge;
  const uint32_t highestCharge = std::min(HighestFragmentCharge(query.charge), entryCharge);

  const std::vector<CPeak>& queryPeaks = query.peaks;
  for (std::size_t q = 0; q < queryPeaks.size(); ++q) {
    const CPeak& peak = queryPeaks[q];
    const double tolerance = ToleranceInDa(toleranceValue, toleranceUnit, peak.mz);
    const int l = library.FindShiftedPeak(peak.mz, tolerance, highestCharge, shift);
    if (l >= 0) TakePair(query, library, q, l);
  }
  FinishCandidate(query, library);
}

// The look-up turns the search around. FindShiftedPeak asks, for each query
// peak in turn, which library peaks lie in its windows; almost always none do.
// Here each library peak asks which query windows it lies in: the direct one
// at its own m/z, and for a b or y ion of charge z the window of charge z, which
// holds the peak when the query peak lies near mz + shift / z. The answers are
// pairs (query peak, charge or 0, library peak), which are then replayed in the
// order of the rule: query peaks by descending intensity, the direct pairs
// before the shifted ones, charges and library peaks ascending, with the marks
// of peakUsed as FindShiftedPeak sets them. A pair is kept only if the very
// bounds of FindShiftedPeak hold it (lower <= mz < upper, computed the same
// way), so the result is identical; the buckets only have to be wide enough,
// which is what `reach` (tolerance plus a margin far above rounding) ensures.
void CSpectrumMatcher::PrepareQueryLookup(const CSpectrum& query) {
  SumQueryIntensities(query);
  lookupUsable = false;
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
    if (!std::isfinite(tolerance)) return;
    windows.push_back({mz, tolerance, mz - tolerance, mz + tolerance, static_cast<uint32_t>(q)});
    largestTolerance = std::max(largestTolerance, tolerance);
    largestMz = std::max(largestMz, std::fabs(mz));
  }
  bucketCount = 0;
  const double magnitude = 1.0 + largestMz + largestTolerance;
  if (!std::isfinite(magnitude)) return;
  scaleLimit = 1e3 * magnitude;
  if (windows.empty()) {
    lookupUsable = true;
    return;
  }
  std::sort(windows.begin(), windows.end(), [](const QueryWindow& a, const QueryWindow& b) {
    return a.mz < b.mz || (a.mz == b.mz && a.index < b.index);
  });
  const double reach = largestTolerance + 1e-7 * magnitude;
  const double low = windows.front().mz - reach, high = windows.back().mz + reach;
  constexpr double kMzLimit = 1073741824.0;  // 2^30, as the library look-up
  if (!(std::fabs(low) < kMzLimit && std::fabs(high) < kMzLimit)) return;
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
  if (span >= kMostBuckets) return;  // m/z spread too wide
  bucketCount = static_cast<uint64_t>(span) + 1;
  if (buckets.size() < bucketCount) buckets.resize(bucketCount, {0, 0});
  if (bucketBits.size() < (bucketCount + 63) / 64) bucketBits.resize((bucketCount + 63) / 64, 0);
  // Each window goes into every bucket from that of mz - reach to that of
  // mz + reach. Both ends rise with the m/z, so a bucket holds a run of windows.
  for (std::size_t w = 0; w < windows.size(); ++w) {
    uint64_t from = 0, to = 0;
    if (!BucketOf(windows[w].mz - reach, from) || !BucketOf(windows[w].mz + reach, to)) {
      bucketCount = 0;
      return;
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
  lookupUsable = true;
}

void CSpectrumMatcher::ScoreCandidateFast(const CSpectrum& query, CSpectrum& library) {
  constexpr uint32_t kPeakBits = 28;
  const double shift = query.precursorMass - library.precursorMass;
  CEntryPeakView view;
  if (lookupUsable && (peakLookup == nullptr || !peakLookup->Find(library, view))) {
    scratchMzs.clear();
    scratchIons.clear();
    view.usable = CLibraryPeakLookup::Describe(library, scratchMzs, scratchIons, view.largestMz);
    view.mzs = scratchMzs.data();
    view.peakCount = scratchMzs.size();
    view.ions = scratchIons.data();
    view.ionCount = scratchIons.size();
  }
  // The bisections of the rule presume finite m/z in ascending order; an entry
  // that breaks this, or a scale beyond the look-up's margin, takes the
  // reference path.
  if (!lookupUsable || !view.usable || !(std::fabs(shift) <= scaleLimit) ||
      view.largestMz > scaleLimit || view.peakCount != library.peaks.size()) {
    ScoreByPeakSearch(query, library);
    return;
  }
  StartCandidate(library);
  const std::vector<CPeak>& peaks = library.peaks;
  const uint32_t highestCharge = HighestFragmentCharge(query.charge);
  double shiftByCharge[CLibraryPeakLookup::kHighestIonCharge + 1] = {};
  for (uint32_t z = 1; z <= highestCharge; ++z) shiftByCharge[z] = shift / static_cast<double>(z);

  hits.clear();
  for (std::size_t i = 0; i < view.peakCount; ++i) {
    const double mz = view.mzs[i];
    // |mz| < 2^30 in a usable view, so the scaled value needs no test.
    const uint64_t bucket = static_cast<uint64_t>(FloorToInteger(mz * bucketScale) - bucketBase);
    if (bucket >= bucketCount || !Occupied(bucket)) continue;
    const auto [first, count] = buckets[bucket];
    for (uint32_t w = first; w < first + count; ++w) {
      const QueryWindow& window = windows[w];
      if (window.lower <= mz && mz < window.upper) {
        hits.push_back(static_cast<uint64_t>(window.index) << 32 | i);
        Prefetch(&peaks[i]);  // its intensity and type are read below
      }
    }
  }
  for (std::size_t k = 0; k < view.ionCount; ++k) {
    const uint32_t z = view.ions[k].Charge();
    if (z > highestCharge) continue;
    const uint32_t l = view.ions[k].Peak();
    const double mz = view.mzs[l];
    uint64_t bucket;
    if (!BucketOf(mz + shiftByCharge[z], bucket) || !Occupied(bucket)) continue;
    const auto [first, count] = buckets[bucket];
    for (uint32_t w = first; w < first + count; ++w) {
      const QueryWindow& window = windows[w];
      const double centre = window.mz - shiftByCharge[z];
      if (centre - window.tolerance <= mz && mz < centre + window.tolerance) {
        hits.push_back(static_cast<uint64_t>(window.index) << 32 |
                       static_cast<uint64_t>(z) << kPeakBits | l);
        Prefetch(&peaks[l]);
      }
    }
  }

  std::sort(hits.begin(), hits.end());
  std::vector<uint32_t>& used = library.peakUsed;
  for (std::size_t k = 0; k < hits.size();) {
    const uint32_t q = static_cast<uint32_t>(hits[k] >> 32);
    int found = -1;
    uint32_t state = 0;
    double bestDirect = 0.0, best = -1.0;
    for (; k < hits.size() && static_cast<uint32_t>(hits[k] >> 32) == q; ++k) {
      const uint32_t z = static_cast<uint32_t>(hits[k] >> kPeakBits) & 0xF;
      const std::size_t l = static_cast<std::size_t>(hits[k] & ((1u << kPeakBits) - 1));
      if (used[l] != 0) continue;
      const double intensity = peaks[l].intensity;
      if (z == 0) {
        if (found < 0 || intensity > bestDirect) {
          found = static_cast<int>(l);
          bestDirect = intensity;
          state = 1;
        }
      } else if (intensity > best) {
        best = intensity;
        found = static_cast<int>(l);
        state = 2;
      }
    }
    if (found < 0) continue;
    used[static_cast<std::size_t>(found)] = state;
    TakePair(query, library, q, found);
  }
  FinishCandidate(query, library);
}

void CSpectrumMatcher::FinishCandidate(const CSpectrum& query, const CSpectrum& library) {
  const std::vector<CPeak>& queryPeaks = query.peaks;
  const double total = queryTotal;
  int32_t yIons = 0, peptideIons = 0;
  double yIntensity = 0.0, peptideIntensity = 0.0;
  for (const auto& [q, l] : current.dpsPairs) {
    const int32_t type = library.peaks[l].type;
    const double squared = queryPeaks[q].intensity * queryPeaks[q].intensity;
    if (type == kPeakYCore) {
      ++yIons;
      yIntensity += squared;
    } else if (type == kPeakB || type == kPeakY) {
      ++peptideIons;
      peptideIntensity += squared;
    }
  }
  current.matchedYIonCount = yIons;
  current.matchedPeptideIonCount = peptideIons;
  current.matchedYIonIntensity = total != 0.0 ? yIntensity / total : 0.0;
  current.matchedPeptideIonIntensity = total != 0.0 ? peptideIntensity / total : 0.0;
  // The ion names are built only for the record that Match returns: they take
  // no part in the choice, and naming every candidate would cost more than
  // scoring it.
  AddMatch(current);
}

void CSpectrumMatcher::NameMatchedIons() {
  current.dpsIons.clear();
  current.psIons.clear();
  if (current.library == nullptr) return;
  const std::vector<CPeak>& peaks = current.library->peaks;
  auto name = [&](const std::vector<std::pair<uint32_t, uint32_t>>& pairs, std::string& out) {
    ionScratch.clear();
    for (const auto& pair : pairs) ionScratch.push_back(peaks[pair.second]);
    std::sort(ionScratch.begin(), ionScratch.end(), [](const CPeak& a, const CPeak& b) {
      if (a.type != b.type) return a.type < b.type;
      if (a.charge != b.charge) return a.charge < b.charge;
      return a.position < b.position;
    });
    for (const CPeak& peak : ionScratch) {
      out += peak.GetIonName();
      out += ';';
    }
  };
  name(current.dpsPairs, current.dpsIons);
  name(current.psPairs, current.psIons);
}

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
  if (psCache.size() <= topPeaks) psCache.resize(topPeaks + 1);
  std::vector<double>& row = psCache[topPeaks];
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
  if (!(share == psCacheShare)) {
    psCache.clear();
    psCacheShare = share;
  }
  for (std::size_t i = 0; i < matchCount; ++i) {
    CSpectralMatch& record = matches[i];
    const uint32_t k0 = record.matchedTopPeakCount > 0
                            ? static_cast<uint32_t>(record.matchedTopPeakCount) : 0;
    record.ps = ProbabilityScore(topPeaks, record.libraryPeakCount, k0, share);
    record.score = record.ps * record.dps;
  }
}
