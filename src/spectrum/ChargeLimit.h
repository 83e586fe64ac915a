#pragma once
#include <cstdint>

// The highest precursor charge the readers believe. A file may say anything
// (CHARGE=2000000000+); the search tries fragment charges up to the
// precursor's, so an absurd value costs minutes per spectrum. Glycopeptides
// come with charges well below this; a charge outside 1..kMaxPrecursorCharge
// is read as no charge (0) and reported by the reader.
constexpr int64_t kMaxPrecursorCharge = 20;

inline bool ChargeInRange(int64_t charge) { return charge >= 1 && charge <= kMaxPrecursorCharge; }
