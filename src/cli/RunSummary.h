#pragma once
#include <string>
#include <utility>
#include <vector>

#include "construction/ConstructionCounts.h"
#include "fdr/FdrEstimator.h"
#include "fdr/QValueCounts.h"
#include "run/Param.h"
#include "search/SearchCounts.h"

// What a run did, stage by stage, and where its files went.
struct CRunSummary {
  bool construction = false, search = false;
  CConstructionCounts built;
  CSearchCounts searched;
  CFdrCounts ranked;
  CQValueCounts glycopeptideQ;  // read back from the q-value file, when written
  double constructionSeconds = 0.0, searchSeconds = 0.0, fdrSeconds = 0.0;
  double fdrCpuSeconds = 0.0;  // CPU time of the FDR stage (or of its deferred part)
  std::string library, companion, massTable, result, summaryFile;
  std::string qvalues, features;  // with glycopeptide_fdr = yes
  // The run's identity: its stamp and the fingerprint of each output, by
  // role ("library", "result", ...), for readers that must not mix runs.
  std::string stamp;
  std::vector<std::pair<std::string, std::string>> fingerprints;
  std::string shard;  // run --no-fdr: the ranking is left to a later fdr, this file keeps what it needs
  // fdr over shards: how many it merged, and their lines.
  std::size_t mergedShards = 0, mergedLines = 0;
};

// The summary as the console shows it.
std::string FormatSummary(const CRunSummary& summary);

// The summary as a JSON object, for other programs (and the report).
std::string SummaryJson(const CRunSummary& summary);

// Records the fingerprint of each output of the summary that is a file.
void RecordFingerprints(CRunSummary& summary);

// Writes SummaryJson to summary.summaryFile, whole or not at all; false on failure.
bool WriteSummaryFile(const CRunSummary& summary);
