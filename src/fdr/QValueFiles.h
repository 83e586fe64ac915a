#pragma once
#include <string>
#include <vector>

#include "fdr/GlycopeptideHit.h"

// "<stem>_qvalues<extension>" beside the result file, and the feature file
// "<stem>_qvalues.pin".
std::string QValuePath(const std::string& resultPath, const std::string& extension = "");

// The q-value file (best first) and the feature file, each written whole to a
// temporary file and then renamed into place.
void WriteQValueFiles(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath);
