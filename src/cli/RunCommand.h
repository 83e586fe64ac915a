#pragma once
#include "cli/RunSetup.h"

// `QuorinGlyco run CONFIG`: checks every input first, runs the stages of the
// configuration, prints a summary and writes it beside the result. Returns
// the exit status (cli/ExitStatus.h).
int RunCommand(const CRunOptions& options);
