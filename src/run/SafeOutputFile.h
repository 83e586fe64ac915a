#pragma once
#include <fstream>
#include <string>

// An output file that appears under its name only when it is complete. It is
// written to a temporary file in the target folder (so the final rename stays
// on one file system) and moved into place by Commit. Until then an earlier
// file of that name stays byte for byte as it was; a run that ends early, by
// ExitProgram or by a signal, removes the temporary file.
class CSafeOutputFile {
 public:
  CSafeOutputFile() = default;
  CSafeOutputFile(const CSafeOutputFile&) = delete;
  CSafeOutputFile& operator=(const CSafeOutputFile&) = delete;
  ~CSafeOutputFile();  // discards what was not committed

  // Creates the temporary file; false when the folder is missing or not
  // writable, or when the path names a directory.
  bool Open(const std::string& path, std::ios::openmode mode = std::ios::out);
  bool IsOpen() const { return stream.is_open(); }
  std::ofstream& Stream() { return stream; }
  const std::string& Path() const { return target; }

  // Flushes, checks that every write succeeded and renames the temporary file
  // over the target. False (and the temporary file removed) on any failure.
  bool Commit();
  // Removes the temporary file; the target is left untouched.
  void Discard();
  // After Open or Commit failed: why, in the system's words ("No space left
  // on device"); empty when the system gave no reason.
  const std::string& Failure() const { return failure; }

 private:
  std::ofstream stream;
  std::string target;
  std::string temporary;
  std::string failure;
  int slot = -1;  // place in the list of temporaries to remove on an early end
};

// A second name that a run gives a file for its own use, such as the result's
// ".tmp" during the FDR stage. It is removed with the object, and by
// ExitProgram or a signal if the run ends first, so it never outlives the run.
class CScratchName {
 public:
  explicit CScratchName(std::string path);
  CScratchName(const CScratchName&) = delete;
  CScratchName& operator=(const CScratchName&) = delete;
  ~CScratchName();
  const std::string& Path() const { return path; }

 private:
  std::string path;
  int slot = -1;
};

// The line that follows a file's own failure message: a tab, the system's
// reason and a line end; empty when there is no reason to give.
std::string FailureLine(const CSafeOutputFile& file);

// Removes every temporary file not yet committed or discarded. Safe to call
// from a signal handler.
void RemovePendingTemporaries();

// Removes the pending temporaries when the process is ended by SIGINT, SIGTERM,
// SIGHUP or SIGQUIT, then ends it as that signal would have.
void RemoveTemporariesOnSignals();
