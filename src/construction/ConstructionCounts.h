#pragma once
#include <cstdint>

#include "construction/FollowingResidues.h"
#include "idlist/ListCounts.h"

// What the construction stage saw, for the run summary.
struct CConstructionCounts {
  CListCounts records;             // identification records read, kept, dropped
  uint64_t spectraNotFound = 0;    // kept records whose spectrum could not be read
  uint64_t peptides = 0;           // library peptides (one site each)
  uint64_t entriesWritten = 0;     // library entries, targets and decoys
  CFollowingCounts following;      // residues after the peptides, from the FASTA file
  // No entry was built, and the earlier library and companion file were kept
  // rather than replaced by empty ones; nothing of this run may be searched.
  bool keptEarlierLibrary = false;
};
