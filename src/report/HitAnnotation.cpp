#include "report/HitAnnotation.h"

#include <algorithm>
#include <cmath>

#include "search/GlycanLists.h"

namespace {
// The m/z range of library entries in the search.
constexpr double kLibraryMinMz = 0.0;
constexpr double kLibraryMaxMz = 2500.0;
}  // namespace

void PrepareLibraryEntry(CSpectrum& entry) {
  std::vector<CPeak>& peaks = entry.peaks;
  peaks.erase(std::remove_if(peaks.begin(), peaks.end(),
                             [](const CPeak& p) {
                               return !std::isfinite(p.mz) || !std::isfinite(p.intensity);
                             }),
              peaks.end());
  entry.TrimMzRange(kLibraryMinMz, kLibraryMaxMz);
  uint32_t annotated = 0;
  double sum = 0.0;
  for (const CPeak& peak : peaks) {
    if (peak.type == kPeakB || peak.type == kPeakY || peak.type == kPeakYCore) ++annotated;
    sum += peak.intensity * peak.intensity;
  }
  entry.topPeakCount = annotated;
  const double norm = std::sqrt(sum);
  if (norm > 0.0 && std::isfinite(norm))
    for (CPeak& peak : peaks) peak.intensity /= norm;
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
  for (const auto& [q, l] : match.dpsPairs) {
    const std::size_t at = rawIndexOf(query.peaks[q].mz);
    if (at >= raw.size()) continue;
    role[at] = static_cast<int32_t>(l);
    shiftedAt[at] = entry.peakUsed[l] == 2;
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
