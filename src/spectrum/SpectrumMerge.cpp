// Consensus building of the construction stage: normalisation, count-weighted
// merging of spectra, the intensity transform and the blend with theory.
#include <algorithm>
#include <cmath>

#include "run/Param.h"
#include "spectrum/Spectrum.h"

void CSpectrum::NormalizeToBasePeak() {
  double basePeak = 0.0;
  for (const CPeak& peak : peaks) basePeak = std::max(basePeak, peak.intensity);
  // A spectrum without a positive intensity (all 0, or no peaks) has no base
  // peak to divide by: its intensities stay as they are instead of turning
  // into NaN and poisoning every later merge.
  if (!(basePeak > 0.0)) return;
  const double scale = 1.0 / basePeak;
  for (CPeak& peak : peaks) peak.intensity *= scale;
}

void CSpectrum::MergeSpectrum(const CSpectrum& other) {
  if (&other == this) {  // merging with oneself: work from a copy of the peaks
    const CSpectrum copy = other;
    MergeSpectrum(copy);
    return;
  }
  const double w = static_cast<double>(frequency) /
                   (static_cast<double>(frequency) + static_cast<double>(other.frequency));
  precursorMass = (1.0 - w) * other.precursorMass + w * precursorMass;
  frequency += other.frequency;
  ResetPeakUsed();

  const CParam& param = CParam::GetInstance();
  for (const CPeak& q : other.peaks) {
    const int k = FindPeak(q.mz, param.LibraryProductTolerance(q.mz));
    if (k < 0) {
      // Appended peaks lie past peakUsed, so FindPeak ignores them until the
      // next merge rebuilds the index.
      peaks.push_back(q);
      continue;
    }
    CPeak& peak = peaks[static_cast<std::size_t>(k)];
    const double c = peak.count;
    const double v = c / (c + static_cast<double>(q.count));
    peak.mz = peak.mz * v + q.mz * (1.0 - v);
    peak.intensity = q.intensity * (1.0 - v) + peak.intensity * v;
    peak.count += q.count;
  }
}

void CSpectrum::PowerTransform(double exponent) {
  for (CPeak& peak : peaks) peak.intensity = std::pow(peak.intensity, exponent);
}

void CSpectrum::MergeTheoretical(CSpectrum& theoretical, double theta) {
  NormalizeToBasePeak();
  ResetPeakUsed();
  SortPeaksByMz();
  BuildMzIndex();
  for (CPeak& peak : peaks) peak.intensity *= 1.0 - theta;

  const CParam& param = CParam::GetInstance();
  std::vector<CPeak> unmatched;
  unmatched.reserve(theoretical.peaks.size());
  for (CPeak& ion : theoretical.peaks) {
    const int k = FindPeak(ion.mz, param.LibraryProductTolerance(ion.mz));
    if (k < 0) {
      ion.intensity = theta;
      unmatched.push_back(ion);
      continue;
    }
    // The measured peak becomes the ion: its m/z is the theoretical one, and
    // its count (how often it was seen) stays.
    CPeak& peak = peaks[static_cast<std::size_t>(k)];
    peak.mz = ion.mz;
    peak.type = ion.type;
    peak.position = ion.position;
    peak.charge = ion.charge;
    peak.intensity += theta;
  }
  peaks.insert(peaks.end(), unmatched.begin(), unmatched.end());
  SortPeaksByMz();
  ResetPeakUsed();
  mzIndex.clear();  // stale after the m/z changes above
}
