#pragma once
#include <cstdint>

// What the search saw, for the run summary.
struct CSearchCounts {
  uint64_t librarySpectra = 0;   // library entries loaded
  uint64_t queriesRead = 0;      // spectra read from the query datasets
  uint64_t queriesAccepted = 0;  // of them, passing the oxonium marker test
  uint64_t withCandidates = 0;   // of them, with at least one library candidate
  uint64_t resultLines = 0;      // lines written to the result file
  uint64_t targets = 0;          // of them, target hits
  uint64_t decoys = 0;           // of them, decoy hits
  uint64_t damagedPeaks = 0;     // peaks dropped as damaged
  uint64_t damagedSpectra = 0;   // spectra that lost damaged peaks
};
