#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "run/Param.h"
#include "search/QueryBatch.h"
#include "search/SpectrumMatcher.h"
#include "spectrum/Spectrum.h"

// A peak as the plot draws it: m/z and intensity relative to the spectrum's
// strongest peak (0..1).
struct CPlotPeak {
  double mz = 0.0;
  double relative = 0.0;
  bool oxonium = false;  // query only: taken out as an oxonium ion by the search
};

// One match of the search: a query peak (index into CHitAnnotation::queryPeaks)
// took a library peak (index into the entry's peaks), directly or after the
// precursor mass difference was allowed for.
struct CPeakMatch {
  uint32_t queryPeak = 0;
  uint32_t libraryPeak = 0;
  bool shifted = false;
};

// What the mirror plot of one hit shows, found by matching the query with its
// library entry again, exactly as the search did.
struct CHitAnnotation {
  std::vector<CPlotPeak> queryPeaks;  // by ascending m/z
  std::vector<CPeakMatch> matches;
  double shift = 0.0;   // query precursor mass minus library precursor mass
  std::string dpsIons;  // the matched ion names, as the result line spells them
};

// Re-runs the search's comparison of one query and one library entry.
class CHitAnnotator {
 public:
  // The search settings of the run; also made the program-wide ones, which
  // matching reads.
  explicit CHitAnnotator(const CSearchParam& search);
  // `entry` as read from the library; it is prepared as the search prepares
  // library entries (the plot then shows it so). `rawQuery` as read from its dataset.
  CHitAnnotation Annotate(const CSpectrum& rawQuery, CSpectrum& entry);

  // Query peaks weaker than this share of the base peak are left out of the
  // plot unless they matched or are oxonium ions: they would be drawn less
  // than a pixel high, and leaving them out keeps a large report small.
  static constexpr double kFaintestShownPeak = 0.005;

 private:
  CQueryBatch batch;
  CSpectrumMatcher matcher;
  bool highResolution = false;
};

// Prepares a library entry the way the search does before matching: unreadable
// peaks dropped, m/z limited to 0..2500, annotated peaks counted, unit length.
void PrepareLibraryEntry(CSpectrum& entry);
