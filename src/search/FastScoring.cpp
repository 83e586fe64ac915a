// The scoring rule of ScoreByPeakSearch, computed from the pairs of the query's
// look-up (CQueryPeakLookup) instead of one search per query peak. The pairs
// are replayed in the order of the rule: query peaks by descending intensity,
// the direct pairs before the shifted ones, charges and library peaks
// ascending, with the marks set as FindShiftedPeak sets them; so the result
// is identical, which a test holds.
#include <algorithm>
#include <cmath>

#include "search/Prefetch.h"
#include "search/SpectrumMatcher.h"

void CSpectrumMatcher::PrefetchEarly(const CSpectrum& library) const {
  const void* entry = peakTable != nullptr ? peakTable->EntryAddress(library) : nullptr;
  Prefetch(entry != nullptr ? entry : &library.precursorMass);
}

bool CSpectrumMatcher::FindView(const CSpectrum& library, CEntryPeakView& view) const {
  if (peakTable == nullptr || !peakTable->Find(library, view)) return false;
  // The first lines of the arrays that scoring reads in order; the processor
  // follows the rest by itself.
  constexpr std::size_t kLine = 64, kMzLines = 32, kIonLines = 16;
  const char* mzs = reinterpret_cast<const char*>(view.mzs);
  for (std::size_t at = 0; at < std::min(view.peakCount * sizeof(double), kMzLines * kLine); at += kLine)
    Prefetch(mzs + at);
  const char* ions = reinterpret_cast<const char*>(view.ions);
  for (std::size_t at = 0; at < std::min(view.ionCount * sizeof(CLibraryIon), kIonLines * kLine); at += kLine)
    Prefetch(ions + at);
  return true;
}

void CSpectrumMatcher::TakeView(const CSpectrum& library) {
  if (!FindView(library, scratch.view))
    CLibraryPeakTable::Describe(library, scratch.described, scratch.view);
}

void CSpectrumMatcher::ScoreCandidateFast(const CSpectrum& query, const CSpectrum& library,
                                          const CEntryPeakView* found, bool keep) {
  constexpr uint32_t kPeakBits = CQueryPeakLookup::kPeakBits;
  const CEntryPeakView& view = scratch.view;
  if (found != nullptr) scratch.view = *found;
  else TakeView(library);
  const double shift = query.precursorMass - view.precursorMass;
  // The bisections of the rule presume finite m/z in ascending order; an entry
  // that breaks this, or a scale beyond the look-up's margin, takes the
  // reference path.
  const double scaleLimit = scratch.queryLookup.ScaleLimit();
  if (!lookupUsable || !view.usable || !(std::fabs(shift) <= scaleLimit) ||
      view.largestMz > scaleLimit) {
    ScoreByPeakSearch(query, library, keep);
    return;
  }
  StartCandidate(library);
  std::vector<uint64_t>& hits = scratch.hits;
  hits.clear();
  scratch.queryLookup.CollectPairs(view, HighestFragmentCharge(query.charge), shift, hits);

  std::sort(hits.begin(), hits.end());
  std::vector<uint32_t>& used = scratch.marks;
  for (std::size_t k = 0; k < hits.size();) {
    const uint32_t q = static_cast<uint32_t>(hits[k] >> 32);
    int found = -1;
    uint32_t state = 0;
    double bestDirect = 0.0, best = -1.0;
    for (; k < hits.size() && static_cast<uint32_t>(hits[k] >> 32) == q; ++k) {
      const uint32_t z = static_cast<uint32_t>(hits[k] >> kPeakBits) & 0xF;
      const std::size_t l = static_cast<std::size_t>(hits[k] & ((1u << kPeakBits) - 1));
      if (used[l] != 0) continue;
      const double intensity = view.intensities[l];
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
    TakePair(query, q, found);
  }
  FinishCandidate(query, keep);
}
