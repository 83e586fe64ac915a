#pragma once
#include <string>
#include <vector>

#include "run/Param.h"

// What `run` was asked for on the command line.
struct CRunOptions {
  std::string config;     // as given, relative to the working directory
  std::string massTable;  // --mass-table; empty: beside the configuration, else the installed one
  unsigned threads = 0;   // --threads; 0: all hardware threads
  // For workflow engines that run one configuration in pieces:
  std::string only;          // --only construction|search: that stage alone
  std::string queryDataset;  // --query-dataset: search this one dataset (number or path)
  std::string result;        // --result: the result file in place of the configured one
  std::string summary;       // --summary: the summary file in place of the default
  bool noFdr = false;        // --no-fdr: leave the ranking to a later fdr (shard file)
};

// Loads the configuration with explained faults (ends the program on one),
// warns of keys it does not know, takes relative paths from the
// configuration's folder and chooses the mass table. A pepXML list writes its
// updated table beside the library as <library stem>_MassTable.ini, never over
// the table it read.
// The options for running in pieces are applied last.
// False, after a message, when the configuration is no regular file or an
// option does not fit it.
bool PrepareRun(const CRunOptions& options, CParam& param);

// The exit status after PrepareRun failed: 255 when the configuration can't
// be read, 1 when options don't fit a readable one.
int PrepareRunFailure(const CRunOptions& options);

// The inputs named by the configuration that can't be read, one line each,
// naming the key, the path and why.
std::vector<std::string> UnreadableInputs(const CParam& param);

// <path up to the last point of its file name><suffix>: "a/lib.quolib" with
// "_MassTable.ini" gives "a/lib_MassTable.ini".
std::string BesideWithSuffix(const std::string& path, const std::string& suffix);
