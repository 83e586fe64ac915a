#include "search/LibraryPeakLookup.h"

#include <algorithm>
#include <cmath>

namespace {
// Matching takes whole m/z units as buckets; m/z beyond this makes an entry
// unusable here.
constexpr double kMzLimit = 1073741824.0;  // 2^30
}  // namespace

bool CLibraryPeakLookup::Describe(const CSpectrum& spectrum, std::vector<double>& mzs,
                                  std::vector<CLibraryIon>& ions, double& largestMz) {
  largestMz = 0.0;
  bool usable = spectrum.peaks.size() < (std::size_t{1} << 28);
  double previous = -INFINITY;
  for (std::size_t i = 0; i < spectrum.peaks.size(); ++i) {
    const CPeak& peak = spectrum.peaks[i];
    const double mz = peak.mz;
    mzs.push_back(mz);
    if (!(std::fabs(mz) < kMzLimit) || mz < previous) {
      usable = false;
      continue;
    }
    previous = mz;
    largestMz = std::max(largestMz, std::fabs(mz));
    if ((peak.type == kPeakB || peak.type == kPeakY) && peak.charge >= 1 &&
        peak.charge <= kHighestIonCharge)
      ions.push_back(CLibraryIon::Of(static_cast<uint32_t>(i), peak.charge));
  }
  return usable;
}

void CLibraryPeakLookup::Build(const std::vector<CSpectrum>& spectra) {
  first = spectra.empty() ? nullptr : spectra.data();
  entries.assign(spectra.size(), Entry{});
  mzs.clear();
  ions.clear();
  std::size_t peaks = 0, reachable = 0;
  for (const CSpectrum& spectrum : spectra) {
    peaks += spectrum.peaks.size();
    for (const CPeak& peak : spectrum.peaks)
      reachable += (peak.type == kPeakB || peak.type == kPeakY) && peak.charge >= 1 &&
                   peak.charge <= kHighestIonCharge;
  }
  mzs.reserve(peaks);
  ions.reserve(reachable);
  for (std::size_t i = 0; i < spectra.size(); ++i) {
    Entry& entry = entries[i];
    entry.peaks = spectra[i].peaks.data();
    entry.peakCount = spectra[i].peaks.size();
    entry.mzBegin = mzs.size();
    entry.ionBegin = ions.size();
    entry.usable = Describe(spectra[i], mzs, ions, entry.largestMz);
    entry.ionEnd = ions.size();
  }
}

const void* CLibraryPeakLookup::EntryAddress(const CSpectrum& spectrum) const {
  // Addresses compared as integers: the spectrum need not lie in the vector.
  const auto at = reinterpret_cast<std::uintptr_t>(&spectrum);
  const auto begin = reinterpret_cast<std::uintptr_t>(first);
  if (first == nullptr || at < begin) return nullptr;
  const std::size_t index = (at - begin) / sizeof(CSpectrum);
  if (index >= entries.size() || first + index != &spectrum) return nullptr;
  return &entries[index];
}

bool CLibraryPeakLookup::Find(const CSpectrum& spectrum, CEntryPeakView& view) const {
  const Entry* found = static_cast<const Entry*>(EntryAddress(spectrum));
  if (found == nullptr) return false;
  const Entry& entry = *found;
  if (entry.peaks != spectrum.peaks.data() || entry.peakCount != spectrum.peaks.size())
    return false;
  view.mzs = mzs.data() + entry.mzBegin;
  view.peakCount = entry.peakCount;
  view.ions = ions.data() + entry.ionBegin;
  view.ionCount = entry.ionEnd - entry.ionBegin;
  view.largestMz = entry.largestMz;
  view.usable = entry.usable;
  return true;
}
