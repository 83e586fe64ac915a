#pragma once
#include "run/Param.h"

// Entry of the search stage; does nothing when disabled.
void RunSearch(const CSearchParam& settings);
