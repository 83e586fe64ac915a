#pragma once
#include <cstdint>
#include <string>

// Target lines of a q-value file at the GlycopeptideQ cuts of the summary,
// read back from the file the FDR stage wrote.
struct CQValueCounts {
  bool read = false;  // the file was there, with its GlycopeptideQ and target/decoy columns
  uint64_t targetsAt1 = 0;  // target lines at GlycopeptideQ <= 0.01
  uint64_t targetsAt5 = 0;  // target lines at GlycopeptideQ <= 0.05
};

CQValueCounts CountQValueTargets(const std::string& path);
