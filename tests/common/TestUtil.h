#pragma once
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace testutil {

// A fresh directory under the system temp folder, removed with the object.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::filesystem::path& path() const { return dir_; }
  std::string operator/(const std::string& name) const { return (dir_ / name).string(); }

 private:
  std::filesystem::path dir_;
};

void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);
std::vector<std::string> ReadLines(const std::string& path);
// Tab-separated fields of a line, empty ones included.
std::vector<std::string> Fields(const std::string& line);
bool FileExists(const std::string& path);

struct RunResult {
  int exitCode = -1;   // as the shell sees it: -1 shows as 255
  std::string output;  // standard output and standard error
};

// Runs `program` in `workingDir` with `stdinText` on standard input.
RunResult RunProgram(const std::string& program, const std::string& stdinText,
                     const std::string& workingDir = ".",
                     const std::vector<std::string>& args = {});

// Copies the built QuorinGlyco and the default MassTable.ini into `dir` and
// returns the copied executable's path: the program works in its own folder.
std::string InstallProgram(const std::string& dir);

// Generates the demo dataset (lists, spectra, demo.conf with absolute paths,
// truth.tsv) into `dir` with the built generator.
RunResult GenerateDemo(const std::string& dir);

// For death tests, which watch standard error: sends what the program prints
// there, after what was already buffered for standard output.
void PrintToStderr();

// Reads the file at a path and returns one summary line per record read;
// `printed` gets what the reading printed.
using RecordReader =
    std::function<std::vector<std::string>(const std::string& path, std::string& printed)>;

// Cuts `head` followed by `records` at every byte and checks that each cut
// file still gives, unchanged, every record that the file cut behind its last
// whole record gives, and prints what that file prints before anything about
// the cut record: a cut never spoils the records before it. Where records
// are indexed by a name line whose failed scan keeps the name last read, the
// cut record may take one earlier record's place under its name (each summary
// begins with the name and a blank).
void ExpectCutsKeepWholeRecords(const RecordReader& read, const std::string& head,
                                const std::vector<std::string>& records,
                                bool nameInherited = false);

// Path of a file of the shared real-data collection (may not exist).
std::string RealData(const std::string& relative);

// Empty when the real-data folder is present, else the reason for skipping,
// which names the folder.
std::string RealDataMissing();

}  // namespace testutil

// Skips the calling test when the real-data folder is absent; each file of the
// collection may still be missing and is then passed over by the test.
#define SKIP_WITHOUT_REALDATA()                                                  \
  if (const std::string missing = testutil::RealDataMissing(); !missing.empty()) \
  GTEST_SKIP() << missing
