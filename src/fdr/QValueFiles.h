#pragma once
#include <string>
#include <vector>

#include "fdr/GlycopeptideHit.h"
#include "run/RunPaths.h"


// The q-value file (best first) and the feature file, each written whole to a
// temporary file and then renamed into place.
void WriteQValueFiles(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath);
