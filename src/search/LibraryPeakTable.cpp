#include "search/LibraryPeakTable.h"

#include <algorithm>
#include <cmath>

namespace {
// Matching takes whole m/z units as buckets; m/z beyond this makes an entry
// unusable there.
constexpr double kMzLimit = 1073741824.0;  // 2^30

constexpr int32_t kCommonTypes = 5;
constexpr uint32_t kCommonCharges = 8;
constexpr uint32_t kCommonPositions = 1024;
constexpr uint32_t kNoLabel = UINT32_MAX;

// Fills the arrays of a view from `peaks` (label numbers from `labelOf`) and
// returns how many reachable ions it wrote; sets largestMz and usable.
template <typename LabelOf>
std::size_t DescribePeaks(const std::vector<CPeak>& peaks, double* mzs, double* intensities,
                          uint32_t* labelIds, CLibraryIon* ions, LabelOf labelOf,
                          double& largestMz, bool& usable) {
  largestMz = 0.0;
  usable = peaks.size() < (std::size_t{1} << 28);
  std::size_t ionCount = 0;
  double previous = -INFINITY;
  for (std::size_t i = 0; i < peaks.size(); ++i) {
    const CPeak& peak = peaks[i];
    const double mz = peak.mz;
    mzs[i] = mz;
    intensities[i] = peak.intensity;
    labelIds[i] = labelOf(i, CPeakLabel{peak.type, peak.position, peak.charge});
    if (!(std::fabs(mz) < kMzLimit) || mz < previous) {
      usable = false;
      continue;
    }
    previous = mz;
    largestMz = std::max(largestMz, std::fabs(mz));
    if ((peak.type == kPeakB || peak.type == kPeakY) && peak.charge >= 1 &&
        peak.charge <= CLibraryPeakTable::kHighestIonCharge)
      ions[ionCount++] = CLibraryIon::Of(static_cast<uint32_t>(i), peak.charge);
  }
  return ionCount;
}
}  // namespace

CPeak CEntryPeakView::Peak(std::size_t i) const {
  CPeak peak;
  peak.mz = mzs[i];
  peak.intensity = intensities[i];
  const CPeakLabel& label = Label(i);
  peak.type = label.type;
  peak.position = label.position;
  peak.charge = label.charge;
  return peak;
}

uint32_t CLibraryPeakTable::LabelId(const CPeakLabel& label) {
  auto add = [this, &label] {
    labels.push_back(label);
    return static_cast<uint32_t>(labels.size() - 1);
  };
  if (label.type >= 0 && label.type < kCommonTypes && label.charge < kCommonCharges &&
      label.position < kCommonPositions) {
    if (commonLabelIds.empty())
      commonLabelIds.assign(kCommonTypes * kCommonCharges * kCommonPositions, kNoLabel);
    uint32_t& id = commonLabelIds[(static_cast<uint32_t>(label.type) * kCommonCharges +
                                   label.charge) * kCommonPositions + label.position];
    if (id == kNoLabel) id = add();
    return id;
  }
  const uint64_t key = (uint64_t{static_cast<uint32_t>(label.type)} << 32 | label.position) ^
                       (uint64_t{label.charge} << 16);
  std::vector<uint32_t>& same = otherLabelIds[key];
  for (uint32_t id : same)
    if (labels[id] == label) return id;
  same.push_back(add());
  return same.back();
}

void CLibraryPeakTable::Add(CSpectrum& spectrum) {
  const std::size_t count = spectrum.peaks.size();
  Entry entry;
  double* entryMzs = mzs.Room(count);
  double* entryIntensities = intensities.Room(count);
  uint32_t* entryLabels = labelIds.Room(count);
  CLibraryIon* entryIons = ions.Room(count);
  const std::size_t ionCount = DescribePeaks(
      spectrum.peaks, entryMzs, entryIntensities, entryLabels, entryIons,
      [this](std::size_t, const CPeakLabel& label) { return LabelId(label); }, entry.largestMz,
      entry.usable);
  mzs.Keep(count);
  intensities.Keep(count);
  labelIds.Keep(count);
  ions.Keep(ionCount);
  entry.mzs = entryMzs;
  entry.intensities = entryIntensities;
  entry.labelIds = entryLabels;
  entry.ions = entryIons;
  entry.peakCount = static_cast<uint32_t>(count);
  entry.ionCount = static_cast<uint32_t>(ionCount);
  entry.precursorMass = spectrum.precursorMass;
  entry.topPeakCount = spectrum.topPeakCount;
  entries.push_back(entry);
  std::vector<CPeak>().swap(spectrum.peaks);
}

void CLibraryPeakTable::Attach(const std::vector<CSpectrum>& spectra) {
  first = spectra.size() == entries.size() && !spectra.empty() ? spectra.data() : nullptr;
  mzs.Seal();
  intensities.Seal();
  labelIds.Seal();
  ions.Seal();
}

void CLibraryPeakTable::Clear() {
  first = nullptr;
  entries.clear();
  mzs.Clear();
  intensities.Clear();
  labelIds.Clear();
  ions.Clear();
  labels.clear();
  commonLabelIds.clear();
  otherLabelIds.clear();
}

void CLibraryPeakTable::Describe(const CSpectrum& spectrum, CDescribedPeaks& storage,
                                 CEntryPeakView& view) {
  const std::size_t count = spectrum.peaks.size();
  storage.mzs.resize(count);
  storage.intensities.resize(count);
  storage.labelIds.resize(count);
  storage.labels.resize(count);
  storage.ions.resize(count);
  const std::size_t ionCount = DescribePeaks(
      spectrum.peaks, storage.mzs.data(), storage.intensities.data(), storage.labelIds.data(),
      storage.ions.data(),
      [&storage](std::size_t i, const CPeakLabel& label) {
        storage.labels[i] = label;
        return static_cast<uint32_t>(i);
      },
      view.largestMz, view.usable);
  view.mzs = storage.mzs.data();
  view.intensities = storage.intensities.data();
  view.labelIds = storage.labelIds.data();
  view.labels = storage.labels.data();
  view.peakCount = count;
  view.ions = storage.ions.data();
  view.ionCount = ionCount;
  view.precursorMass = spectrum.precursorMass;
  view.topPeakCount = spectrum.topPeakCount;
}

const void* CLibraryPeakTable::EntryAddress(const CSpectrum& spectrum) const {
  // Addresses compared as integers: the spectrum need not lie in the vector.
  const auto at = reinterpret_cast<std::uintptr_t>(&spectrum);
  const auto begin = reinterpret_cast<std::uintptr_t>(first);
  if (first == nullptr || at < begin) return nullptr;
  const std::size_t index = (at - begin) / sizeof(CSpectrum);
  if (index >= entries.size() || first + index != &spectrum) return nullptr;
  return &entries[index];
}

bool CLibraryPeakTable::Find(const CSpectrum& spectrum, CEntryPeakView& view) const {
  const Entry* found = static_cast<const Entry*>(EntryAddress(spectrum));
  if (found == nullptr) return false;
  view.mzs = found->mzs;
  view.intensities = found->intensities;
  view.labelIds = found->labelIds;
  view.labels = labels.data();
  view.peakCount = found->peakCount;
  view.ions = found->ions;
  view.ionCount = found->ionCount;
  view.largestMz = found->largestMz;
  view.usable = found->usable;
  view.precursorMass = found->precursorMass;
  view.topPeakCount = found->topPeakCount;
  return true;
}
