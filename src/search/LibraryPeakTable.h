#pragma once
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "search/BlockStore.h"
#include "spectrum/Spectrum.h"

// What a library peak is besides its m/z and intensity. Few distinct labels
// exist, so the table keeps each once and a peak holds its number.
struct CPeakLabel {
  int32_t type = kPeakUnannotated;
  uint32_t position = 0;
  uint32_t charge = 0;
  bool operator==(const CPeakLabel&) const = default;
};

// A b or y ion of a library entry that shifted matching can reach: its peak
// index (below 2^28) and charge (1 .. 4) in one word.
struct CLibraryIon {
  uint32_t packed;
  uint32_t Peak() const { return packed & ((1u << 28) - 1); }
  uint32_t Charge() const { return packed >> 28; }
  static CLibraryIon Of(uint32_t peak, uint32_t charge) { return {charge << 28 | peak}; }
};

// The peaks of one library entry as matching reads them: parallel arrays in
// the entry's peak order.
struct CEntryPeakView {
  const double* mzs = nullptr;
  const double* intensities = nullptr;
  const uint32_t* labelIds = nullptr;  // into labels
  const CPeakLabel* labels = nullptr;
  std::size_t peakCount = 0;
  const CLibraryIon* ions = nullptr;  // b and y ions of charge 1..4, in peak order
  std::size_t ionCount = 0;
  double largestMz = 0.0;  // largest |m/z| of the peaks
  bool usable = false;     // every m/z finite, ascending and within +-2^30
  // The entry's precursorMass and topPeakCount, beside the peaks so that
  // scoring needs no line of the entry's record.
  double precursorMass = 0.0;
  uint32_t topPeakCount = 0;

  const CPeakLabel& Label(std::size_t i) const { return labels[labelIds[i]]; }
  // The peak as a record; the merge count is not kept and reads 1.
  CPeak Peak(std::size_t i) const;
};

// The arrays behind a view of a spectrum that is not in a table: matching
// describes such a spectrum (a test's, the report's) into storage of its own.
struct CDescribedPeaks {
  std::vector<double> mzs;
  std::vector<double> intensities;
  std::vector<uint32_t> labelIds;
  std::vector<CPeakLabel> labels;
  std::vector<CLibraryIon> ions;
};

// Largest whole number not above x, for |x| below 2^62; the same rounding as
// std::floor without a library call, and like it never decreasing as x rises.
inline int64_t FloorToInteger(double x) {
  const int64_t truncated = static_cast<int64_t>(x);
  return static_cast<double>(truncated) > x ? truncated - 1 : truncated;
}

// The only copy of the library's peaks during a search: m/z, intensity and
// label number per peak, the reachable ions, each entry's arrays contiguous.
// Matching scans a few hundred entries per query, and full peak records (32
// bytes each, scattered over the heap) would cost more memory and more waits
// than the comparisons.
class CLibraryPeakTable {
 public:
  static constexpr uint32_t kHighestIonCharge = 4;

  // Moves the peaks of the next entry into the table; `spectrum.peaks` ends
  // empty and gives its room back.
  void Add(CSpectrum& spectrum);
  // Ties the entries added to `spectra`, one to one in order, for Find, and
  // gives back unused room: no entry is added after.
  void Attach(const std::vector<CSpectrum>& spectra);
  void Clear();
  std::size_t EntryCount() const { return entries.size(); }

  // The view of `spectrum` if it is one of the attached spectra (whose peaks
  // live here, their own lists empty); false otherwise.
  bool Find(const CSpectrum& spectrum, CEntryPeakView& view) const;
  // Address of the record that Find reads for `spectrum`, without reading
  // anything (for prefetching); null if it has none.
  const void* EntryAddress(const CSpectrum& spectrum) const;
  // The view of a spectrum outside any table, its arrays filled in `storage`.
  static void Describe(const CSpectrum& spectrum, CDescribedPeaks& storage, CEntryPeakView& view);

 private:
  // One cache line per entry: matching reads one for each candidate.
  struct alignas(64) Entry {
    const double* mzs = nullptr;
    const double* intensities = nullptr;
    const uint32_t* labelIds = nullptr;
    const CLibraryIon* ions = nullptr;
    uint32_t peakCount = 0;
    uint32_t ionCount = 0;
    double largestMz = 0.0;
    double precursorMass = 0.0;
    uint32_t topPeakCount = 0;
    bool usable = false;
  };
  // The number of a label, added to `labels` when new.
  uint32_t LabelId(const CPeakLabel& label);

  const CSpectrum* first = nullptr;
  std::vector<Entry> entries;
  CBlockStore<double> mzs;
  CBlockStore<double> intensities;
  CBlockStore<uint32_t> labelIds;
  CBlockStore<CLibraryIon> ions;
  std::vector<CPeakLabel> labels;
  // Numbers of the common labels (types 0..4, charges below 8, positions
  // below 1024) by direct index, of the others by hash.
  std::vector<uint32_t> commonLabelIds;
  std::unordered_map<uint64_t, std::vector<uint32_t>> otherLabelIds;
};
