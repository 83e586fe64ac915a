#pragma once
#include <cstdint>
#include <string>
#include <vector>

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

// An entry whose motif list the search narrowed to one sequon (an entry of
// several sites, after its first line that named one). Later lines of the
// entry show that sequon: a search of later datasets on its own does not know
// of it, so a merge of separate searches needs it.
struct CMotifNarrowing {
  std::string entry;   // library entry name
  std::string sequon;  // the one motif kept
};
