#pragma once
#include <string>

#include "cli/RunSetup.h"

// `QuorinGlyco export CONFIG --to mzid|pepxml [--out FILE]`: after a run of
// CONFIG, writes its identifications in a standard exchange format, by
// default beside the result file (<result stem>.mzid, <result stem>.pep.xml).
// Returns the exit status.
int ExportCommand(const CRunOptions& options, const std::string& format, const std::string& out);
