#pragma once
#include "run/Param.h"
#include "search/SearchCounts.h"

// Entry of the search stage; does nothing when disabled. Returns what it saw.
CSearchCounts RunSearch(const CSearchParam& settings);
