#pragma once
#include <string>
#include <vector>

// `QuorinGlyco fdr --out RANKED RESULT...`: ranks the lines of several result
// files together, as one run's FDR stage ranks its own (a former FDR column
// is made anew). Returns the exit status.
int FdrCommand(const std::string& out, const std::vector<std::string>& results);
