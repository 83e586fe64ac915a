#pragma once
#include "run/Param.h"
#include "search/SearchCounts.h"

// Entry of the search stage; does nothing when disabled. Returns what it saw;
// `narrowings`, if given, gets the entries whose motif list it narrowed.
CSearchCounts RunSearch(const CSearchParam& settings,
                        std::vector<CMotifNarrowing>* narrowings = nullptr);
