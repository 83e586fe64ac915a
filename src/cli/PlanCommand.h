#pragma once
#include "cli/RunSetup.h"

// `plan CONFIG`: prints, as JSON, what `run CONFIG` would read and write, with
// its paths as the run takes them, for workflow engines that run the
// configuration in pieces. Runs nothing.
int PlanCommand(const CRunOptions& options);
