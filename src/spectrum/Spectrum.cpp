// Peak orders and the m/z look-up that construction and search share.
#include "spectrum/Spectrum.h"

#include <algorithm>
#include <cmath>

namespace {
// Highest m/z slot of the index. Real spectra end far below; a garbage m/z
// such as 1e300 must not make the index allocate without bound. Peaks above
// the cap cannot be found, which is all a look-up of such an m/z could mean.
constexpr double kMaxMzSlot = 4194304.0;  // 2^22 Th
}  // namespace

void CSpectrum::SortPeaksByMz() { std::sort(peaks.begin(), peaks.end(), ByMz); }

void CSpectrum::SortPeaksByIntensity() { std::sort(peaks.begin(), peaks.end(), ByIntensity); }

void CSpectrum::SortPeaksByCount() { std::sort(peaks.begin(), peaks.end(), ByCount); }

void CSpectrum::BuildMzIndex() {
  mzIndex.clear();
  // NaN m/z values sort last; the index spans the last real m/z.
  std::size_t last = peaks.size();
  while (last > 0 && !std::isfinite(peaks[last - 1].mz)) --last;
  if (last == 0) return;
  const double top = std::min(std::trunc(peaks[last - 1].mz), kMaxMzSlot);
  if (top < 0.0) return;
  const std::size_t slots = static_cast<std::size_t>(top) + 1;
  mzIndex.resize(slots);
  std::size_t next = 0;
  for (std::size_t v = 0; v < slots; ++v) {
    const double slot = static_cast<double>(v);
    while (next < peaks.size() && std::trunc(peaks[next].mz) < slot) ++next;
    mzIndex[v] = static_cast<int32_t>(next);
  }
}

void CSpectrum::ResetPeakUsed() { peakUsed.assign(peaks.size(), 0); }

int CSpectrum::FindPeak(double mz, double tolerance) {
  const double low = mz - tolerance;
  const double high = mz + tolerance;
  const double slot = std::trunc(low);
  // Written so that NaN falls outside as well.
  if (!(slot >= 0.0 && slot < static_cast<double>(mzIndex.size()))) return -1;
  const std::size_t start = static_cast<std::size_t>(mzIndex[static_cast<std::size_t>(slot)]);
  // peaks appended after ResetPeakUsed lie past peakUsed and stay invisible.
  const std::size_t end = std::min(peakUsed.size(), peaks.size());
  if (start >= end) return -1;
  int best = -1;
  double bestIntensity = 0.0;
  for (std::size_t i = start; i < end; ++i) {
    const CPeak& peak = peaks[i];
    if (peak.mz < low) continue;
    if (peak.mz > high) break;
    if (peakUsed[i] != 0) continue;
    if (best < 0 || peak.intensity > bestIntensity) {  // the earlier peak wins a tie
      best = static_cast<int>(i);
      bestIntensity = peak.intensity;
    }
  }
  if (best >= 0) peakUsed[static_cast<std::size_t>(best)] = 1;
  return best;
}
