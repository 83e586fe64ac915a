#include "cli/FdrCommand.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>

#include "cli/ExitStatus.h"
#include "cli/RunSetup.h"
#include "cli/RunSummary.h"
#include "fdr/FdrEstimator.h"
#include "fdr/QValueCounts.h"
#include "fdr/ShardMerge.h"
#include "report/RunIdentity.h"
#include "run/FileFingerprint.h"
#include "run/Process.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"
#include "run/TextLine.h"
#include "search/LibrarySearcher.h"

namespace {

constexpr std::size_t kLongestLine = 1 << 24;

std::size_t Columns(const std::string& line) {
  return static_cast<std::size_t>(std::count(line.begin(), line.end(), '\t')) + 1;
}

// Why a file is no result file of the search or the FDR stage; empty if it is
// one. Every data line must have the columns its header names (27, or 28 with
// FDR): a longer line would keep its extra columns before the new FDR.
std::string NotAResultFile(const std::string& path) {
  if (GetPathKind(path) != PathKind::File) return "it is not an existing regular file";
  std::ifstream in(path, std::ios::binary);
  std::string line;
  if (!in || !ReadLine(in, line, nullptr, 1 << 16)) return "it can't be read";
  if (line != kSearchResultHeader && line != kFdrResultHeader)
    return "its first line is not the header of a result file (27 or 28 columns from "
           "QuerySpecName)";
  const std::size_t columns = Columns(line);
  for (std::size_t number = 2; ReadLine(in, line, nullptr, kLongestLine); ++number) {
    if (line.empty() || Columns(line) == columns) continue;
    return "line " + std::to_string(number) + " has " + std::to_string(Columns(line)) +
           " columns under a header of " + std::to_string(columns);
  }
  // The run that wrote it recorded its fingerprint in the summary beside it.
  const std::string summaryPath = BesideWithSuffix(path, "_summary.json");
  std::string unreadable;  // a summary that can't be read vouches for nothing
  return MixedRunProblem(ReadSummaryFile(summaryPath, unreadable), summaryPath, {{"result", path}});
}

// Result files of runs with --no-fdr: one ranking, and the q-values, over
// all of them; the summary beside the ranked file says what was merged.
int MergeCommand(const std::string& out, const std::vector<std::string>& results) {
  const auto start = std::chrono::steady_clock::now();
  CShardMerge merged;
  if (!MergeShards(out, results, merged)) {
    std::cout << "Nothing was written." << std::endl;
    return exit_status::kRefused;
  }
  CRunSummary summary;
  summary.stamp = NewRunStamp();
  summary.search = true;
  summary.searched = merged.searched;
  summary.searchSeconds = merged.searchSeconds;
  summary.ranked = merged.ranked;
  summary.fdrSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  summary.fdrCpuSeconds = ProcessCpuSeconds();
  summary.mergedShards = merged.shards;
  summary.mergedLines = merged.lines;
  summary.result = out;
  summary.qvalues = merged.qvalues;
  summary.features = merged.features;
  summary.massTable = merged.massTable;
  summary.summaryFile = BesideWithSuffix(out, "_summary.json");
  if (!summary.qvalues.empty()) summary.glycopeptideQ = CountQValueTargets(summary.qvalues);
  RecordFingerprints(summary);
  if (!WriteSummaryFile(summary)) {
    std::cout << "[Error]: The summary file " << summary.summaryFile << " can't be written." << std::endl;
    return exit_status::kRefused;
  }
  std::cout << "Merged " << merged.shards << (merged.shards == 1 ? " shard" : " shards") << " ("
            << merged.lines << " lines) into " << out << "." << std::endl;
  std::cout << FormatSummary(summary);
  return exit_status::kSuccess;
}

}  // namespace

int FdrCommand(const std::string& out, const std::vector<std::string>& results) {
  RemoveTemporariesOnSignals();
  bool ok = true;
  for (std::size_t i = 0; i < results.size(); ++i) {
    const std::string& path = results[i];
    for (std::size_t j = 0; j < i; ++j) {
      if (!SameFile(path, results[j])) continue;
      std::cout << "[Error]: " << path << " and " << results[j]
                << " are the same file: its lines would be counted twice." << std::endl;
      ok = false;
    }
    const std::string why = NotAResultFile(path);
    if (!why.empty()) {
      std::cout << "[Error]: " << path << " can't be ranked: " << why << "." << std::endl;
      ok = false;
    }
    if (SameFile(path, out)) {
      std::cout << "[Error]: --out " << out << " is one of the result files to rank; write the "
                << "ranking to a file of its own." << std::endl;
      ok = false;
    }
  }
  if (!ok) return exit_status::kRefused;
  if (AnyShardFile(results)) return MergeCommand(out, results);

  CFdrEstimator estimator("", out, 1);
  for (const std::string& path : results) estimator.LoadFile(path, true);
  estimator.Rank();
  estimator.Write();
  const CFdrCounts counts = estimator.Counts();
  std::cout << "Ranked " << estimator.records.size() << " lines (" << counts.targets << " targets, "
            << counts.decoys << " decoys) of " << results.size()
            << (results.size() == 1 ? " file" : " files") << " into " << out << ".\n"
            << "Target lines at FDR <= 1 %: " << counts.targetsAt1
            << "; at FDR <= 5 %: " << counts.targetsAt5 << "." << std::endl;
  return exit_status::kSuccess;
}
