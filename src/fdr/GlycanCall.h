#pragma once
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "molecule/Glycan.h"
#include "spectrum/Spectrum.h"

// Which glycan composition a glycopeptide spectrum shows, given the peptide:
// the compositions whose mass fits the precursor mass difference, or the
// difference less one isotope step (the precursor picked one isotope peak too
// high), weighed by the sialic acid oxonium ions of the spectrum.
struct CGlycanCall {
  const CGlycan* glycan = nullptr;  // null when no composition fits
  int isotope = 0;                  // 1: the precursor was the second isotope peak
  double massErrorPpm = 0.0;        // of the difference against the glycan, at the query mass
  int contradictions = 0;           // sialic acids without their oxonium ion, or the reverse
  // The other compositions within the precursor tolerance of the chosen one
  // that no present oxonium ion rules out any more than it: the spectrum
  // can't tell them apart. In table order.
  std::vector<const CGlycan*> isobaric;
  // The best composition at the other isotope that the oxonium ions support
  // exactly as well: only the mass error then tells the two readings apart.
  // Its mass error, NaN when there is none.
  double rivalErrorPpm = NAN;
};

// One isotope step of a peptide-sized molecule (13C - 12C).
inline constexpr double kIsotopeStep = 1.0033548;

// Chooses among the compositions of `table` (sorted by mass) that fit `delta`
// (query mass less peptide mass) within `tolerance` Da, at isotope 0 or 1: the
// fewest sialic acids ruled out by a present marker first, then the fewest
// without their marker, then the smallest mass error (an isotope step costs
// 2 ppm more), then table order.
CGlycanCall CallGlycan(const std::vector<CGlycan>& table, double delta, double tolerance,
                       double queryMass, bool neuAcMarker, bool neuGcMarker);

// Evidence of the Y ions (peptide plus 0 to 5 core residues) of a peptide of
// mass `peptideMH` in a prepared query: the core levels found at any charge
// from 1 to `highestCharge` (at most kMaxPrecursorCharge), and the summed
// intensity of the peaks found.
// `offset` moves every Y ion by a mass: with an offset that no glycan
// fragment has, the same count measures how often Y ions match by chance.
struct CYIonEvidence {
  int levels = 0;
  double intensity = 0.0;
  double Score() const { return levels + intensity; }
};
// The product tolerance as configured: a value and its unit (0 Da, 1 ppm).
struct CProductTolerance {
  double value = 0.0;
  int32_t unit = 0;
};
CYIonEvidence FindYIons(const std::vector<CPeak>& peaksByMz, double peptideMH,
                        uint32_t highestCharge, double offset, CProductTolerance tolerance);
