#pragma once
#include <cstdint>
#include <string>

// Annotation codes of a peak.
enum PeakType : int32_t {
  kPeakB = 0,
  kPeakY = 1,
  kPeakYCore = 2,  // peptide plus glycan core, with its water and ammonia losses
  kPeakOther = 3,  // set by no producer; treated like 2 by the decoy remapping
  kPeakUnannotated = 4,
};

struct CPeak {
  double mz = 0.0;
  double intensity = 0.0;
  int32_t type = kPeakUnannotated;
  uint32_t position = 0;  // b/y: fragment length in residues; Y: Y index 0..5
  uint32_t charge = 0;
  uint32_t count = 1;     // in how many merged spectra the peak was seen

  // Ion name as the search reports it: type letter, position, one "+" per charge (b3+, y11++).
  std::string GetIonName() const;
};

// The three peak orders; each is a strict comparison for an unstable sort.
// A NaN (files do carry "NaN" intensities) would break the strict weak order
// that std::sort relies on and let it run past the range; NaN therefore sorts
// after every number. For numbers the orders are the plain comparisons.
inline bool ByMz(const CPeak& a, const CPeak& b) {
  return a.mz < b.mz || (b.mz != b.mz && a.mz == a.mz);
}
inline bool ByIntensity(const CPeak& a, const CPeak& b) {
  return a.intensity > b.intensity || (b.intensity != b.intensity && a.intensity == a.intensity);
}
inline bool ByCount(const CPeak& a, const CPeak& b) { return a.count > b.count; }
