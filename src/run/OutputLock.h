#pragma once
#include <memory>
#include <string>
#include <vector>

#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"

// Exclusive locks (flock) on the outputs of a run, so that a second run that
// writes the same files refuses to start while the first one runs: two runs
// interleaved would mix their files. Each output is locked through a lock file
// ".<name>.lock" beside it, removed when the lock is released (with the
// object, or by ExitProgram or a signal).
class COutputLock {
 public:
  COutputLock() = default;
  COutputLock(const COutputLock&) = delete;
  COutputLock& operator=(const COutputLock&) = delete;
  ~COutputLock();

  // Locks `path`; false when another process holds it.
  bool Lock(const std::string& path);

 private:
  struct CHeld {
    int fd = -1;
    std::unique_ptr<CScratchName> name;
  };
  std::vector<CHeld> held;
};

// Locks the primary outputs of a run (the library, the result); when another
// run holds one, prints which setting names it and ends the program with
// status 1 before any file is written.
void LockRunOutputs(const CRunPaths& paths, COutputLock& lock);
