#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "spectrum/Spectrum.h"

// A b or y ion of a library entry that shifted matching can reach: its peak
// index (below 2^28) and charge (1 .. 4) in one word.
struct CLibraryIon {
  uint32_t packed;
  uint32_t Peak() const { return packed & ((1u << 28) - 1); }
  uint32_t Charge() const { return packed >> 28; }
  static CLibraryIon Of(uint32_t peak, uint32_t charge) { return {charge << 28 | peak}; }
};

// What matching scans of one library entry, in compact form.
struct CEntryPeakView {
  const double* mzs = nullptr;  // each peak's m/z, in peak order
  std::size_t peakCount = 0;
  const CLibraryIon* ions = nullptr;  // b and y ions of charge 1..4, in peak order
  std::size_t ionCount = 0;
  double largestMz = 0.0;  // largest |m/z| of the peaks
  bool usable = false;     // every m/z finite, ascending and within +-2^30
};

// Largest whole number not above x, for |x| below 2^62; the same rounding as
// std::floor without a library call, and like it never decreasing as x rises.
inline int64_t FloorToInteger(double x) {
  const int64_t truncated = static_cast<int64_t>(x);
  return static_cast<double>(truncated) > x ? truncated - 1 : truncated;
}

// The compact data of every library entry, laid out contiguously: matching
// scans a few hundred entries per query, and reading their full peak records
// (32 bytes each, scattered over the heap) costs more than the comparisons.
// Built after loading; valid while the entries' peak lists stay as they were.
class CLibraryPeakLookup {
 public:
  static constexpr uint32_t kHighestIonCharge = 4;

  void Build(const std::vector<CSpectrum>& spectra);
  // The view of `spectrum` if it is one of the spectra built from and its
  // peak list is still the same; false otherwise.
  bool Find(const CSpectrum& spectrum, CEntryPeakView& view) const;
  // Address of the record that Find reads for `spectrum`, without reading
  // anything (for prefetching); null if it has none.
  const void* EntryAddress(const CSpectrum& spectrum) const;
  // Appends the m/z values and ions of one spectrum; returns whether it is
  // usable and sets largestMz.
  static bool Describe(const CSpectrum& spectrum, std::vector<double>& mzs,
                       std::vector<CLibraryIon>& ions, double& largestMz);

 private:
  struct Entry {
    const CPeak* peaks = nullptr;  // what the entry was built from
    std::size_t peakCount = 0;
    std::size_t mzBegin = 0;
    std::size_t ionBegin = 0;
    std::size_t ionEnd = 0;
    double largestMz = 0.0;
    bool usable = false;
  };
  const CSpectrum* first = nullptr;
  std::vector<Entry> entries;
  std::vector<double> mzs;
  std::vector<CLibraryIon> ions;
};
