#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "run/Param.h"

// A path the run reads or writes, with the words that tell the user which
// setting names it.
struct CNamedPath {
  std::string path;
  std::string what;               // e.g. "query_dataset_pathname_1" in section "search"
  bool dtaDataset = false;        // a folder of .dta files is read whole
  int32_t format = -1;            // a spectrum dataset's format code, -1 for other paths
  std::string formatWhat;         // the setting that names that format
  std::string cantWrite;          // for an output: the message when it can't be written
  bool locked = false;            // an output that a run locks while it runs
};

// Every file a run of the loaded settings reads and writes.
struct CRunPaths {
  std::vector<CNamedPath> inputs;
  std::vector<CNamedPath> outputs;
  bool nameSettings = false;  // an unwritable output also names its setting
};

CRunPaths CollectRunPaths(const CParam& param);

// Name of the companion file of a library: "_libcomp.txt" in place of everything
// from the last point of the name on ("out.quolib" -> "out_libcomp.txt").
std::string CompanionFileName(const std::string& libraryPath);

// "<stem>_qvalues<extension>" beside the result file (the result's own
// extension when none is given), and the feature file "<stem>_qvalues.pin".
std::string QValuePath(const std::string& resultPath, const std::string& extension = "");
// Where the search leaves the next best candidates of each result line for
// the q-value step, which removes the file: beside the q-value file.
inline std::string CandidatePath(const std::string& resultPath) {
  return QValuePath(resultPath, ".candidates");
}

// The shard file of a result file whose ranking is deferred: <result stem>_shard.qgs.
std::string ShardPath(const std::string& resultPath);
// Where format version 1 kept it, as text: <result stem>_shard.tsv.
std::string TextShardPath(const std::string& resultPath);

// The message of a companion file that can't be written.
std::string CompanionWriteError(const std::string& path);

// Whether two paths name the same file as the system sees it: the same device
// and inode when both exist, else the same path once ".", ".." and links are
// resolved.
bool SameFile(const std::string& a, const std::string& b);

// Refuses, before any file is opened, a run that would write over one of its
// own inputs or write two outputs to one file, an output that can't be
// written (no such folder, a folder without write access, a directory in its
// place), and inputs that are devices, FIFOs or sockets. Prints what is
// wrong, naming the settings, and ends the program with status 1. An output
// that can't be written gets its usual message, then the system's reason.
void CheckRunPaths(const CRunPaths& paths);
