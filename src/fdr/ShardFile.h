#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "fdr/GlycopeptideHit.h"
#include "fdr/ShardEvidence.h"
#include "run/FileFingerprint.h"
#include "run/Param.h"
#include "run/RunPaths.h"
#include "search/SearchCounts.h"

// A search whose ranking is left to a later `fdr` over several searches (a
// shard) writes this file beside its result file: what the merge must check
// (the library, the settings that change the estimate, the result file) and
// what it cannot read from the result file (the motif narrowings of the
// search, the spectrum evidence of the q-values). Text, tab-separated, one
// record per line, the first naming the format and its version, the last
// ("end") counting the lines; with glycopeptide q-values the evidence follows
// it in binary, its size and CRC-32 given by the line "evidence".

inline constexpr int kShardFormatVersion = 2;
extern const char* const kShardFileMagic;

struct CShardFile {
  int version = kShardFormatVersion;
  std::string library;    // the library searched, as the search named it
  std::string massTable;  // the mass table it read
  CFileIdentity libraryIdentity;
  // The settings a merge must find equal in every shard, name and value.
  std::vector<std::pair<std::string, std::string>> settings;
  std::vector<std::string> datasets;  // the query datasets searched
  std::string result;                 // the result file, as the search named it
  uint64_t resultLines = 0;           // its data lines
  CFileIdentity resultIdentity;
  CSearchCounts counts;
  double searchSeconds = 0.0;
  std::vector<CMotifNarrowing> narrowings;
  // With glycopeptide_fdr: the spectrum evidence of each result line, in the
  // result file's order, then the next best candidates the search kept for
  // the q-values with the evidence of each.
  bool glycopeptideFdr = false;
  CShardEvidence evidence;
};

// The settings of a search that change its lines or their estimate; the mass
// table is named by its content.
std::vector<std::pair<std::string, std::string>> EstimateSettings(const CSearchParam& settings);

// Writes the file whole or not at all; false on failure.
bool WriteShardFile(const CShardFile& shard, const std::string& path);

// Reads a shard file; false, with `why` saying what is wrong, when it is
// missing, of another format version, or damaged or cut short.
bool ReadShardFile(const std::string& path, CShardFile& shard, CGlycanNames& glycans,
                   std::string& why);
