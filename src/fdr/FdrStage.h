#pragma once
#include <vector>

#include "fdr/FdrEstimator.h"
#include "run/Param.h"
#include "search/SearchCounts.h"

// Entry of the FDR stage: ranks the result file of the search in place.
// Returns what the ranking found.
CFdrCounts RunFdr(const CSearchParam& settings);

// The stage left to a later `fdr` over several searches: the result file
// stays as the search wrote it, and its shard file (ShardPath) gets what the
// merge needs, with glycopeptide_fdr the spectrum evidence of every line.
// Ends the run with status 1 when the shard file can't be written.
void DeferFdr(const CSearchParam& settings, const CSearchCounts& counts,
              const std::vector<CMotifNarrowing>& narrowings, double searchSeconds);
