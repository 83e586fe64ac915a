#pragma once
#include <string>
#include <vector>

#include "run/Param.h"

// What `run` was asked for on the command line.
struct CRunOptions {
  std::string config;     // as given, relative to the working directory
  std::string massTable;  // --mass-table; empty: beside the configuration, else the installed one
  unsigned threads = 0;   // --threads; 0: all hardware threads
};

// Loads the configuration with explained faults (ends the program on one),
// warns of keys it does not know, takes relative paths from the
// configuration's folder and chooses the mass table. A pepXML list writes its
// updated table beside the library as <library stem>_MassTable.ini, never over
// the table it read.
// False, after a message, when the configuration is no regular file.
bool PrepareRun(const CRunOptions& options, CParam& param);

// The inputs named by the configuration that can't be read, one line each,
// naming the key, the path and why.
std::vector<std::string> UnreadableInputs(const CParam& param);

// <path up to the last point of its file name><suffix>: "a/lib.quolib" with
// "_MassTable.ini" gives "a/lib_MassTable.ini".
std::string BesideWithSuffix(const std::string& path, const std::string& suffix);
