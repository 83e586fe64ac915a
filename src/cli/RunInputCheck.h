#pragma once
#include "run/Param.h"
#include "run/RunPaths.h"

// Refuses, before any work, a run whose inputs are plainly not what the
// configuration says: a spectrum dataset of another format (status 1) or a
// mass table without the basic masses (-1, as an unreadable table).
void CheckRunInputs(const CParam& param, const CRunPaths& paths);
