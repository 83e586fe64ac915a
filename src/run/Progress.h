#pragma once
#include <cstdint>
#include <functional>
#include <string>

// Progress of the long loops (peptides of the construction, spectra of a query
// dataset), for a progress bar. Nothing happens unless a sink is set.
using ProgressSink = std::function<void(const std::string& task, uint64_t done, uint64_t total)>;

void SetProgressSink(ProgressSink sink);
bool HasProgressSink();
void ReportProgress(const std::string& task, uint64_t done, uint64_t total);
