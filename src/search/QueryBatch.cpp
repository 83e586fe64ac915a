#include "search/QueryBatch.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kGlycopeptideMarker = 138.054953;
constexpr double kMarkerRatio = 0.3;
}  // namespace

void CQueryBatch::Init(const CSearchParam& param) {
  datasets = param.query_datasets;
  batchSize = param.spectra_per_batch > 0 ? static_cast<uint32_t>(param.spectra_per_batch) : 1;
  topPeakLimit = param.top_peak_limit;
  topPeakRatio = 0.05;
  binPeakLimit = 10;
  binWidth = 100;
  intensityExponent = 0.5;
  reader = nullptr;
  spectra.clear();
  spectra.reserve(batchSize);
}

std::size_t CQueryBatch::DropDamagedPeaks(CSpectrum& spectrum) {
  std::vector<CPeak>& peaks = spectrum.peaks;
  const std::size_t before = peaks.size();
  peaks.erase(std::remove_if(peaks.begin(), peaks.end(),
                             [](const CPeak& p) {
                               return !std::isfinite(p.mz) || !std::isfinite(p.intensity) ||
                                      p.intensity < 0.0;
                             }),
              peaks.end());
  return before - peaks.size();
}

bool CQueryBatch::IsGlycoSpectrum(const CSpectrum& spectrum) const {
  if (spectrum.peaks.empty()) return false;
  double base = spectrum.peaks[0].intensity;
  for (const CPeak& peak : spectrum.peaks) base = std::max(base, peak.intensity);
  const CParam& param = CParam::GetInstance();
  for (const CPeak& peak : spectrum.peaks) {
    if (std::fabs(peak.mz - kGlycopeptideMarker) < param.QueryProductTolerance(peak.mz) &&
        peak.intensity > kMarkerRatio * base)
      return true;
  }
  return false;
}

void CQueryBatch::Prepare() {
  const CSearchParam& search = CParam::GetInstance().search;
  const bool highResolution =
      ::IsHighResolution(search.query_product_ion_tolerance, search.query_product_ion_unit);
  for (CSpectrum& spectrum : spectra) PrepareSpectrum(spectrum, highResolution);
}

void CQueryBatch::PrepareSpectrum(CSpectrum& spectrum, bool highResolution) const {
  std::vector<CPeak>& peaks = spectrum.peaks;
  // Damaged peaks would turn the sorts and norms below into nonsense; the
  // search drops them on reading, this keeps a direct caller safe as well.
  DropDamagedPeaks(spectrum);

  if (highResolution) spectrum.CollapsePeakClusters();
  spectrum.ExtractDiagnosticPeaks();

  // Strongest peak to 1. A spectrum whose peaks are all 0 is left as it is.
  double strongest = 0.0;
  for (const CPeak& peak : peaks) strongest = std::max(strongest, peak.intensity);
  if (strongest > 0.0) {
    const double factor = 1.0 / strongest;
    for (CPeak& peak : peaks) peak.intensity *= factor;
  }

  spectrum.KeepTopPeaksPerBin(binPeakLimit, binWidth);

  if (peaks.size() < 2) {
    spectrum.topPeakCount = static_cast<uint32_t>(peaks.size());
  } else {
    std::sort(peaks.begin(), peaks.end(), ByIntensity);
    const double threshold = peaks[0].intensity * topPeakRatio;
    uint32_t count = 1;
    for (std::size_t i = 1; i < peaks.size(); ++i) {
      if (static_cast<int64_t>(count) == topPeakLimit || peaks[i].intensity < threshold) break;
      ++count;
    }
    spectrum.topPeakCount = count;
  }

  double sum = 0.0;
  for (CPeak& peak : peaks) {
    peak.intensity = std::pow(peak.intensity, intensityExponent);
    sum += peak.intensity * peak.intensity;
  }
  const double norm = std::pow(sum, 0.5);
  if (norm > 0.0) {
    const double factor = 1.0 / norm;
    for (CPeak& peak : peaks) peak.intensity *= factor;
  }
}
