#pragma once
#include "run/Param.h"

// Entry of the library construction stage; does nothing when disabled.
void RunConstruction(const CConstructionParam& settings);
