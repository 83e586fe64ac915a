// Peak filters that the construction and search stages share, and the direct
// or charge-shifted peak look-up of the search.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <vector>

#include "run/Param.h"
#include "spectrum/Spectrum.h"

namespace {

// Oxonium ions: peaks within the product tolerance of these leave the peak list.
constexpr double kDiagnosticIonMasses[] = {
    109.028405, 115.038969, 126.054953, 127.038969, 138.054953, 144.065517, 145.049533,
    163.060097, 168.065517, 186.076081, 204.086645, 274.092124, 290.087039, 292.102689,
    308.066794, 366.139466, 454.15551,  512.1974,   528.192287, 657.234878, 673.229793,
    690.245108, 803.2928,   822.287366, 893.324477};

// Sialic acid markers; deliberately not the list values 274.092124 / 290.087039.
constexpr double kNeuAcMarker = 274.092132;
constexpr double kNeuGcMarker = 290.087046;
constexpr double kSialicMarkerRatio = 0.05;

constexpr double kClusterWidth = 1.1;
constexpr double kClusterStart = 100.0;
constexpr double kClusterApexLimit = 400.0;

constexpr uint32_t kBinTableSpan = 6000;

// First peak (in [first, last)) whose m/z is not less than `value`. Written
// without a data-dependent branch: matching runs it several times for every
// query peak and candidate, and the outcome of each step is unpredictable.
inline std::size_t LowerBoundMz(const std::vector<CPeak>& peaks, std::size_t first,
                                std::size_t last, double value) {
  std::size_t length = last - first;
  if (length == 0) return first;
  const CPeak* base = peaks.data() + first;
  while (length > 1) {
    const std::size_t half = length / 2;
    base = base[half].mz < value ? base + half : base;
    length -= half;
  }
  return static_cast<std::size_t>(base - peaks.data()) + (base->mz < value ? 1 : 0);
}

// End of the range that starts at `first`: the first peak whose m/z is not less
// than `value`. Ranges hold a peak or two, so a scan beats a second bisection.
inline std::size_t ScanEndMz(const std::vector<CPeak>& peaks, std::size_t first,
                             std::size_t last, double value) {
  while (first < last && peaks[first].mz < value) ++first;
  return first;
}

// Sets `flag` when the first diagnostic peak near `marker` is strong enough; the
// walk stops at that first peak whatever its intensity.
void TestSialicMarker(const std::vector<CPeak>& diagnostic, double marker, double strongest,
                      bool& flag) {
  const double tolerance = CParam::GetInstance().QueryProductTolerance(marker);
  for (const CPeak& peak : diagnostic) {
    if (std::fabs(peak.mz - marker) < tolerance) {
      if (peak.intensity > kSialicMarkerRatio * strongest) flag = true;
      return;
    }
  }
}

}  // namespace

void CSpectrum::TrimMzRange(double low, double high) {
  std::sort(peaks.begin(), peaks.end(), ByMz);
  // The first peak is never dropped from the top, even when it lies above `high`.
  while (peaks.size() > 1 && peaks.back().mz > high) peaks.pop_back();
  peaks.erase(std::remove_if(peaks.begin(), peaks.end(),
                             [low](const CPeak& p) { return p.mz < low; }),
              peaks.end());
}

void CSpectrum::CollapsePeakClusters() {
  if (peaks.size() < 2) return;
  // Works in place: the write position never passes the read position.
  std::size_t out = 0;
  CPeak retained = peaks[0];
  double anchor = retained.mz;
  for (std::size_t i = 1; i < peaks.size(); ++i) {
    const CPeak& p = peaks[i];
    if (p.mz - anchor >= kClusterWidth || p.mz < kClusterStart) {
      peaks[out++] = retained;
      retained = p;
      anchor = p.mz;
    } else if (anchor <= kClusterApexLimit && p.intensity > retained.intensity) {
      retained = p;  // the anchor stays where the cluster began
    }
  }
  peaks[out++] = retained;
  peaks.resize(out);
}

void CSpectrum::ExtractDiagnosticPeaks() {
  std::sort(peaks.begin(), peaks.end(), ByMz);
  const CParam& param = CParam::GetInstance();
  for (double mass : kDiagnosticIonMasses) {
    const double tolerance = param.QueryProductTolerance(mass);
    std::size_t first = LowerBoundMz(peaks, 0, peaks.size(), mass - tolerance);
    std::size_t last = LowerBoundMz(peaks, first, peaks.size(), mass + tolerance);
    if (first >= last) continue;
    diagnosticPeaks.insert(diagnosticPeaks.end(), peaks.begin() + first, peaks.begin() + last);
    peaks.erase(peaks.begin() + first, peaks.begin() + last);
  }
  double strongest = 0.0;
  for (const CPeak& peak : diagnosticPeaks) strongest = std::max(strongest, peak.intensity);
  TestSialicMarker(diagnosticPeaks, kNeuAcMarker, strongest, hasNeuAc);
  TestSialicMarker(diagnosticPeaks, kNeuGcMarker, strongest, hasNeuGc);
}

void CSpectrum::KeepTopPeaksPerBin(uint32_t limit, uint32_t width) {
  // The table covers m/z below 6000. Peaks beyond it (at or above 6000, or in a
  // partial last bin) share one extra bin under the same limit, so that a
  // spectrum of stray high-m/z peaks is thinned like any other range; a negative
  // m/z counts in bin 0. A width of 0 puts every peak into that one extra bin.
  const std::size_t tableSize = width == 0 ? 0 : kBinTableSpan / width;
  // The usual table (61 counters for the width 100) lives on the stack: this
  // runs for every query.
  uint32_t stackCounters[128] = {};
  std::vector<uint32_t> heapCounters;
  uint32_t* counters = stackCounters;
  if (tableSize + 1 > std::size(stackCounters)) {
    heapCounters.assign(tableSize + 1, 0);
    counters = heapCounters.data();
  }
  std::sort(peaks.begin(), peaks.end(), ByIntensity);
  std::size_t out = 0;
  for (std::size_t i = 0; i < peaks.size(); ++i) {
    const CPeak& peak = peaks[i];
    std::size_t bin = tableSize;
    if (width != 0) {
      if (!(peak.mz >= 0.0)) {
        bin = 0;
      } else if (peak.mz < static_cast<double>(kBinTableSpan)) {
        bin = std::min<std::size_t>(static_cast<std::size_t>(std::trunc(peak.mz)) / width,
                                    tableSize);
      }
    }
    bool keep;
    if (counters[bin] < limit) {
      ++counters[bin];
      keep = true;
    } else {
      keep = peak.type != kPeakUnannotated;  // annotated peaks stay, uncounted
    }
    if (keep) peaks[out++] = peak;
  }
  peaks.resize(out);
  std::sort(peaks.begin(), peaks.end(), ByMz);
}

int CSpectrum::FindShiftedPeak(double mz, double tolerance, uint32_t highestCharge,
                               double shift) {
  return FindShiftedPeak(mz, tolerance, highestCharge, shift, peakUsed);
}

int CSpectrum::FindShiftedPeak(double mz, double tolerance, uint32_t highestCharge, double shift,
                               std::span<uint32_t> marks) const {
  // Peaks appended after the marks were sized have no mark and stay out of reach.
  const std::size_t size = std::min(peaks.size(), marks.size());
  int found = -1;
  uint32_t state = 0;

  // Direct search: the most intense free peak, the first one on equal intensity.
  std::size_t first = LowerBoundMz(peaks, 0, size, mz - tolerance);
  std::size_t last = ScanEndMz(peaks, first, size, mz + tolerance);
  double bestDirect = 0.0;
  for (std::size_t i = first; i < last; ++i) {
    if (marks[i] != 0) continue;
    if (found < 0 || peaks[i].intensity > bestDirect) {
      found = static_cast<int>(i);
      bestDirect = peaks[i].intensity;
      state = 1;
    }
  }

  // Shifted search over the fragment charges: any shifted match replaces the
  // direct one; across charges the most intense wins, the lowest charge on a tie.
  double best = -1.0;
  for (uint32_t z = 1; z <= highestCharge; ++z) {
    const double centre = mz - shift / static_cast<double>(z);
    std::size_t from = LowerBoundMz(peaks, 0, size, centre - tolerance);
    std::size_t to = ScanEndMz(peaks, from, size, centre + tolerance);
    for (std::size_t i = from; i < to; ++i) {
      const CPeak& peak = peaks[i];
      if (peak.charge != z || (peak.type != kPeakB && peak.type != kPeakY) || marks[i] != 0)
        continue;
      if (peak.intensity > best) {
        best = peak.intensity;
        found = static_cast<int>(i);
        state = 2;
      }
    }
  }

  if (found >= 0) marks[static_cast<std::size_t>(found)] = state;
  return found;
}
