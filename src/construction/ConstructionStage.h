#pragma once
#include "construction/ConstructionCounts.h"
#include "run/Param.h"

// Entry of the library construction stage; does nothing when disabled.
// Returns what it saw.
CConstructionCounts RunConstruction(const CConstructionParam& settings);
