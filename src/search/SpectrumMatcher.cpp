#include "search/SpectrumMatcher.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "run/Param.h"

namespace {
// A glycan whose mass differs from the shift by this much or more never
// displaces the first glycan of a candidate's list.
constexpr double kGlycanChoiceStart = 100.0;

// NaN scores (possible only for degenerate spectra) rank last instead of
// breaking the sort.
inline double RankingScore(double score) { return std::isnan(score) ? -INFINITY : score; }
}  // namespace

void CSpectrumMatcher::Init(std::size_t capacity) {
  current.Reset();
  scratch.matches.clear();
  scratch.matches.reserve(capacity);
  scratch.matchCount = 0;
  scratch.namedIons.reserve(64);
}

void CSpectrumMatcher::AddMatch(const CSpectralMatch& record) {
  std::vector<CSpectralMatch>& matches = scratch.matches;
  if (scratch.matchCount < matches.size()) matches[scratch.matchCount] = record;  // reuses the room
  else matches.push_back(record);
  ++scratch.matchCount;
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
  PrepareQuery(query);

  // Each candidate's spectrum and look-up record are asked for four candidates
  // ahead, its view is found two ahead: by its turn, its data is at hand.
  constexpr std::size_t kEarly = 4, kView = 2;
  const std::size_t count = candidates.size();
  std::vector<std::optional<CEntryPeakView>>& views = scratch.views;
  views.assign(count, std::nullopt);
  auto findView = [&](std::size_t i) {
    CEntryPeakView view;
    if (lookupUsable && FindView(*candidates[i], view)) views[i] = view;
  };
  for (std::size_t i = 0; i < std::min(kEarly, count); ++i) PrefetchEarly(*candidates[i]);
  for (std::size_t i = 0; i < std::min(kView, count); ++i) findView(i);
  for (std::size_t i = 0; i < count; ++i) {
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
    if (i + kEarly < count) PrefetchEarly(*candidates[i + kEarly]);
    if (i + kView < count) findView(i + kView);
    ScoreCandidateFast(query, *candidates[i], views[i] ? &*views[i] : nullptr);
  }

  ComputeScores(query.topPeakCount);

  // The records in order of descending score, ties in candidate order (one of
  // the orders allowed), are walked to the first with enough peptide ions. In
  // that strict order the walk ends at the first of the qualifying records,
  // and the first record overall stands in when none qualifies: both are
  // found in one pass, without sorting.
  const std::vector<CSpectralMatch>& matches = scratch.matches;
  const std::size_t matchCount = scratch.matchCount;
  auto ranksBefore = [&matches](std::size_t a, std::size_t b) {
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
  const std::size_t picked = chosen < matchCount ? chosen : first;
  // The next best candidates with enough peptide ions, for the glycopeptide
  // q-values to weigh against the picked one.
  std::vector<CSpectralMatch> alternatives;
  if (chosen < matchCount && alternativeCount > 0) {
    std::vector<std::size_t> next;
    for (std::size_t i = 0; i < matchCount; ++i)
      if (i != picked && matches[i].matchedPeptideIonCount >= minimalIons) next.push_back(i);
    const std::size_t kept = std::min<std::size_t>(alternativeCount, next.size());
    std::partial_sort(next.begin(), next.begin() + static_cast<std::ptrdiff_t>(kept), next.end(),
                      ranksBefore);
    next.resize(kept);
    for (std::size_t i : next) {
      Complete(query, *candidates[i], i);
      current.candidateCount = static_cast<int32_t>(matchCount);
      alternatives.push_back(current);
    }
  }
  // The site is read from the picked candidate's marks, and the records keep
  // no pair lists; the marks and pairs at hand are those of the candidate
  // scored last, so another one is scored once more.
  if (picked + 1 != matchCount || !alternatives.empty()) Complete(query, *candidates[picked], picked);
  else CompleteScored(picked);
  if (chosen == matchCount) current.score = -1.0;
  current.candidateCount = static_cast<int32_t>(matchCount);
  current.alternatives = std::move(alternatives);
  ClearMatches();
  return current;
}

void CSpectrumMatcher::Complete(const CSpectrum& query, const CSpectrum& library, std::size_t record) {
  ScoreCandidateFast(query, library, nullptr, false);
  CompleteScored(record);
}

void CSpectrumMatcher::CompleteScored(std::size_t record) {
  std::swap(current.dpsPairs, scratch.dpsPairs);
  std::swap(current.psPairs, scratch.psPairs);
  current = scratch.matches[record];
  std::swap(current.dpsPairs, scratch.dpsPairs);
  std::swap(current.psPairs, scratch.psPairs);
  NameMatchedIons();
  AssignSite(scratch.view, scratch.marks);
}

void CSpectrumMatcher::StartCandidate(const CSpectrum& library) {
  scratch.marks.assign(scratch.view.peakCount, 0);
  // The record points at the entry; only the search's in-order writer changes
  // an entry (its motif list, NarrowMotifsToSite).
  current.library = const_cast<CSpectrum*>(&library);
  current.libraryPeakCount = static_cast<int32_t>(scratch.view.topPeakCount);
  current.matchedTopPeakCount = 0;
  current.dps = 0.0;
  current.glycoLoc.clear();
  current.site = 0;
  current.dpsIons.clear();
  current.psIons.clear();
  current.dpsPairs.clear();
  current.psPairs.clear();
}

void CSpectrumMatcher::TakePair(const CSpectrum& query, std::size_t q, int l) {
  const std::size_t found = static_cast<std::size_t>(l);
  // An unannotated library peak stays marked even though it does not count.
  if (scratch.view.Label(found).type == kPeakUnannotated) return;
  const auto pair = std::make_pair(static_cast<uint32_t>(q), static_cast<uint32_t>(l));
  current.dpsPairs.push_back(pair);
  const double mean = (scratch.view.intensities[found] + query.peaks[q].intensity) * 0.5;
  current.dps += mean * mean;
  if (q < query.topPeakCount) {
    ++current.matchedTopPeakCount;
    current.psPairs.push_back(pair);
  }
}

void CSpectrumMatcher::ScoreCandidate(const CSpectrum& query, const CSpectrum& library) {
  PrepareQuery(query);
  ScoreCandidateFast(query, library);
}

void CSpectrumMatcher::PrepareQuery(const CSpectrum& query) {
  queryTotal = 0.0;
  for (const CPeak& peak : query.peaks) queryTotal += peak.intensity * peak.intensity;
  lookupUsable = scratch.queryLookup.Prepare(query);
}

void CSpectrumMatcher::ScoreCandidateByPeakSearch(const CSpectrum& query, const CSpectrum& library) {
  queryTotal = 0.0;
  for (const CPeak& peak : query.peaks) queryTotal += peak.intensity * peak.intensity;
  TakeView(library);
  ScoreByPeakSearch(query, library);
}

void CSpectrumMatcher::ScoreByPeakSearch(const CSpectrum& query, const CSpectrum& library,
                                         bool keep) {
  StartCandidate(library);
  // The rule searches peak records; an entry whose peaks live in the table
  // has them made again.
  const CEntryPeakView& view = scratch.view;
  const CSpectrum* records = &library;
  if (library.peaks.size() != view.peakCount) {
    scratch.materialized.peaks.clear();
    for (std::size_t i = 0; i < view.peakCount; ++i) scratch.materialized.peaks.push_back(view.Peak(i));
    records = &scratch.materialized;
  }
  const double shift = query.precursorMass - library.precursorMass;
  const CSearchParam& search = CParam::GetInstance().search;
  const double toleranceValue = search.query_product_ion_tolerance;
  const int32_t toleranceUnit = search.query_product_ion_unit;
  // Shifted matching needs a b or y ion of charge z; charges above the highest
  // one the entry has can find nothing, so they are not searched at all.
  uint32_t entryCharge = 0;
  for (const CPeak& peak : records->peaks)
    if ((peak.type == kPeakB || peak.type == kPeakY) && peak.charge > entryCharge)
      entryCharge = peak.charge;
  const uint32_t highestCharge = std::min(HighestFragmentCharge(query.charge), entryCharge);

  const std::vector<CPeak>& queryPeaks = query.peaks;
  for (std::size_t q = 0; q < queryPeaks.size(); ++q) {
    const CPeak& peak = queryPeaks[q];
    const double tolerance = ToleranceInDa(toleranceValue, toleranceUnit, peak.mz);
    const int l = records->FindShiftedPeak(peak.mz, tolerance, highestCharge, shift, scratch.marks);
    if (l >= 0) TakePair(query, q, l);
  }
  FinishCandidate(query, keep);
}

void CSpectrumMatcher::FinishCandidate(const CSpectrum& query, bool keep) {
  const std::vector<CPeak>& queryPeaks = query.peaks;
  const double total = queryTotal;
  int32_t yIons = 0, peptideIons = 0;
  double yIntensity = 0.0, peptideIntensity = 0.0;
  for (const auto& [q, l] : current.dpsPairs) {
    const int32_t type = scratch.view.Label(l).type;
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
  if (keep) {
    // The records keep no pair lists (Match scores the chosen candidate again),
    // which saves copying them for every candidate.
    std::swap(current.dpsPairs, scratch.dpsPairs);
    std::swap(current.psPairs, scratch.psPairs);
    AddMatch(current);
    std::swap(current.dpsPairs, scratch.dpsPairs);
    std::swap(current.psPairs, scratch.psPairs);
  }
}

void CSpectrumMatcher::NameMatchedIons() {
  current.dpsIons.clear();
  current.psIons.clear();
  if (current.library == nullptr) return;
  const CEntryPeakView& peaks = scratch.view;
  auto name = [&](const std::vector<std::pair<uint32_t, uint32_t>>& pairs, std::string& out) {
    std::vector<CPeak>& ions = scratch.namedIons;
    ions.clear();
    for (const auto& pair : pairs) ions.push_back(peaks.Peak(pair.second));
    std::sort(ions.begin(), ions.end(), [](const CPeak& a, const CPeak& b) {
      if (a.type != b.type) return a.type < b.type;
      if (a.charge != b.charge) return a.charge < b.charge;
      return a.position < b.position;
    });
    for (const CPeak& peak : ions) {
      out += peak.GetIonName();
      out += ';';
    }
  };
  name(current.dpsPairs, current.dpsIons);
  name(current.psPairs, current.psIons);
}
