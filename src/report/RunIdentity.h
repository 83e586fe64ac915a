#pragma once
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

// A file that belongs to one result of a run, under the name by which the run
// summary records its fingerprint ("result", "qvalues", "features").
struct CRunFile {
  std::string role;
  std::string path;
};

// Key of a file's fingerprint in the summary's "run" object.
std::string FingerprintKey(const std::string& role);

// Empty when every file of `files` that exists is the one that the run of the
// summary wrote, or when the summary records no fingerprints (a summary of an
// older version). Otherwise says which file comes from another run: a run
// stopped after it replaced the result but before the q-values and the
// summary, for example, leaves the result of one run beside the others'.
std::string MixedRunProblem(const nlohmann::json& summary, const std::string& summaryPath,
                            const std::vector<CRunFile>& files);

// The summary of a run as a JSON value; null when the file is missing. A path
// that is not a regular file, or a file that is too large or not a JSON object,
// gives null and `problem` set.
nlohmann::json ReadSummaryFile(const std::string& path, std::string& problem);
