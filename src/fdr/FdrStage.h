#pragma once
#include "fdr/FdrEstimator.h"
#include "run/Param.h"

// Entry of the FDR stage: ranks the result file of the search in place.
// Returns what the ranking found.
CFdrCounts RunFdr(const CSearchParam& settings);
