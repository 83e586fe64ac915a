#include "report/HitAnnotation.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "search/GlycanLists.h"
#include "search/SpectralLibrary.h"

void PrepareLibraryEntry(CSpectrum& entry) {
  PrepareLibrarySpectrum(entry);
  entry.ResetPeakUsed();
}

CHitAnnotator::CHitAnnotator(const CSearchParam& search) {
  CParam::GetInstance().search = search;
  batch.Init(search);
  matcher.Init(1);
  highResolution = IsHighResolution(search.query_product_ion_tolerance, search.query_product_ion_unit);
}

CHitAnnotation CHitAnnotator::Annotate(const CSpectrum& rawQuery, CSpectrum& entry) {
  CHitAnnotation hit;
  PrepareLibraryEntry(entry);
  CSpectrum query = rawQuery;
  batch.PrepareSpectrum(query, highResolution);
  const std::vector<CSpectrum*> candidates{&entry};
  const CGlycanLists noGlycans;  // the glycan takes no part in which peaks match
  const CSpectralMatch match = matcher.Match(query, candidates, noGlycans);
  hit.shift = query.precursorMass - entry.precursorMass;
  hit.dpsIons = match.dpsIons;

  // The plot shows the spectrum as read; preparation keeps each peak's m/z,
  // so prepared and oxonium peaks are found among the raw ones by m/z.
  std::vector<CPeak> raw;
  raw.reserve(rawQuery.peaks.size());
  double base = 0.0;
  for (const CPeak& peak : rawQuery.peaks) {
    if (!std::isfinite(peak.mz) || !std::isfinite(peak.intensity) || peak.intensity < 0.0) continue;
    raw.push_back(peak);
    base = std::max(base, peak.intensity);
  }
  std::stable_sort(raw.begin(), raw.end(), ByMz);
  std::vector<int32_t> role(raw.size(), -1);  // -1 plain, -2 oxonium, else the library peak
  std::vector<bool> shiftedAt(raw.size(), false);
  auto rawIndexOf = [&](double mz) -> std::size_t {
    auto at = std::lower_bound(raw.begin(), raw.end(), mz, [](const CPeak& p, double v) { return p.mz < v; });
    for (; at != raw.end() && at->mz == mz; ++at)
      if (role[static_cast<std::size_t>(at - raw.begin())] == -1) return static_cast<std::size_t>(at - raw.begin());
    return raw.size();
  };
  for (const CPeak& peak : query.diagnosticPeaks) {
    const std::size_t at = rawIndexOf(peak.mz);
    if (at < raw.size()) role[at] = -2;
  }
  // Match states of the entry's peaks: 2 marks a peak matched moved by the glycan.
  const std::span<const uint32_t> marks = matcher.Marks();
  for (const auto& [q, l] : match.dpsPairs) {
    const std::size_t at = rawIndexOf(query.peaks[q].mz);
    if (at >= raw.size()) continue;
    role[at] = static_cast<int32_t>(l);
    shiftedAt[at] = l < marks.size() && marks[l] == 2;
  }
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const double relative = base > 0.0 ? raw[i].intensity / base : 0.0;
    if (role[i] == -1 && relative < kFaintestShownPeak) continue;
    if (role[i] >= 0)
      hit.matches.push_back({static_cast<uint32_t>(hit.queryPeaks.size()),
                             static_cast<uint32_t>(role[i]), shiftedAt[i]});
    hit.queryPeaks.push_back({raw[i].mz, relative, role[i] == -2});
  }
  return hit;
}
