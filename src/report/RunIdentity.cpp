#include "report/RunIdentity.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "run/FileFingerprint.h"
#include "run/Process.h"

namespace {
// A summary is a few kilobytes; anything near this size is no summary.
constexpr std::uintmax_t kLargestSummary = 1 << 24;
}  // namespace

std::string FingerprintKey(const std::string& role) { return role + "_fingerprint"; }

std::string MixedRunProblem(const nlohmann::json& summary, const std::string& summaryPath,
                            const std::vector<CRunFile>& files) {
  if (!summary.is_object()) return std::string();
  const auto run = summary.find("run");
  if (run == summary.end() || !run->is_object()) return std::string();
  const std::string stamp = run->value("stamp", std::string("?"));
  for (const CRunFile& file : files) {
    if (GetPathKind(file.path) == PathKind::Missing) continue;
    const auto recorded = run->find(FingerprintKey(file.role));
    const std::string expected =
        recorded != run->end() && recorded->is_string() ? recorded->get<std::string>() : "";
    if (!expected.empty() && FileFingerprint(file.path) == expected) continue;
    return file.path + " is not the " + file.role + " file that the run " + stamp + " of " +
           summaryPath + " wrote: the files come from different runs (was a run stopped?). " +
           "Run again to make them agree.";
  }
  return std::string();
}

nlohmann::json ReadSummaryFile(const std::string& path, std::string& problem) {
  problem.clear();
  const PathKind kind = path.empty() ? PathKind::Missing : GetPathKind(path);
  if (kind == PathKind::Missing) return nullptr;
  std::error_code error;
  if (kind != PathKind::File) {
    problem = "the run summary " + path + " is not a regular file";
  } else if (std::filesystem::file_size(path, error) > kLargestSummary || error) {
    problem = "the run summary " + path + " is too large to be one";
  } else {
    std::ifstream in(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    nlohmann::json summary = nlohmann::json::parse(text, nullptr, false);
    if (!summary.is_discarded() && summary.is_object()) return summary;
    problem = "the run summary " + path + " is not readable JSON";
  }
  return nullptr;
}
