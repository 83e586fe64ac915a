#pragma once
#include <cstdint>

// What the list readers saw, for the run summary: every record read, and
// whether it was kept as a glycopeptide or why not.
struct CListCounts {
  uint64_t read = 0;
  uint64_t kept = 0;
  uint64_t noMark = 0;            // no modification_remove mark at all
  uint64_t notOnSequon = 0;       // a mark, but not on a sequon of the motifs
  uint64_t belowProbability = 0;  // a pepXML hit below probability_threshold
};

// The counts of this process; the construction stage resets them.
CListCounts& ListCounts();
