#pragma once
#include "run/Param.h"

// Entry of the FDR stage: ranks the result file of the search in place.
void RunFdr(const CSearchParam& settings);
