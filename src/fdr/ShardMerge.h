#pragma once
#include <string>
#include <vector>

#include "fdr/FdrEstimator.h"
#include "search/SearchCounts.h"

// What a merge of shards did, for its summary.
struct CShardMerge {
  std::size_t shards = 0;
  std::size_t lines = 0;
  CSearchCounts searched;  // the shards' counts, summed
  double searchSeconds = 0.0;
  CFdrCounts ranked;
  std::string massTable;
  std::string qvalues, features;  // written with glycopeptide_fdr
};

// Whether any of the result files has a shard file beside it (of this format
// version, or of version 1 under its old name).
bool AnyShardFile(const std::vector<std::string>& results);

// Ranks the result files of separate searches (shards, in the order of their
// query datasets) as one search over all their datasets would have been
// ranked: the Motif column as the one search would have narrowed it, and with
// glycopeptide_fdr the q-value files of the one search. Every shard is checked
// before anything is written: same library, same settings, result file as
// its search left it, no query name in two shards. False, after a message for
// each fault, when the merge is refused; nothing is written then.
bool MergeShards(const std::string& out, const std::vector<std::string>& results, CShardMerge& merged);
