#pragma once
#include <string>

#include "cli/RunSetup.h"

// `QuorinGlyco report CONFIG [--out FILE] [--top N]`: after a run of CONFIG,
// writes one self-contained HTML report of its result. Returns the exit status.
int ReportCommand(const CRunOptions& options, const std::string& out, int topN);
