#include "cli/RunCommand.h"

#include <chrono>
#include <iostream>

#include "cli/ExitStatus.h"
#include "cli/ProgressBar.h"
#include "cli/RunInputCheck.h"
#include "cli/RunSummary.h"
#include "construction/ConstructionStage.h"
#include "fdr/FdrStage.h"
#include "run/FileFingerprint.h"
#include "run/InputFailures.h"
#include "run/OutputLock.h"
#include "run/Process.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"
#include "search/SearchStage.h"

namespace {

template <typename Stage>
double Timed(Stage stage) {
  const auto start = std::chrono::steady_clock::now();
  stage();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int RunCommand(const CRunOptions& options) {
  RemoveTemporariesOnSignals();
  CParam& param = CParam::GetInstance();
  if (!PrepareRun(options, param)) return PrepareRunFailure(options);

  const std::vector<std::string> problems = UnreadableInputs(param);
  if (!problems.empty()) {
    std::cout << "[Error]: " << problems.size() << (problems.size() == 1 ? " input" : " inputs")
              << " named in " << options.config << " can't be read:\n";
    for (const std::string& problem : problems) std::cout << '\t' << problem << '\n';
    std::cout << "Nothing was run." << std::endl;
    return exit_status::kRefused;
  }

  CRunSummary summary;
  summary.stamp = NewRunStamp();
  summary.construction = param.construction.enabled;
  summary.search = param.search.enabled;
  summary.library = param.construction.output_speclib_filename;
  summary.companion = CompanionFileName(summary.library);
  summary.result = param.search.output_result_filename;
  if (summary.search && options.noFdr) {
    summary.shard = ShardPath(summary.result);
  } else if (summary.search && param.search.glycopeptide_fdr) {
    summary.qvalues = QValuePath(summary.result);
    summary.features = QValuePath(summary.result, ".pin");
  }
  if (summary.search)
    summary.summaryFile = BesideWithSuffix(summary.result, "_summary.json");
  else if (summary.construction)
    summary.summaryFile = BesideWithSuffix(summary.library, "_summary.json");
  if (!options.summary.empty()) summary.summaryFile = options.summary;

  CRunPaths paths = CollectRunPaths(param);
  paths.nameSettings = true;
  if (summary.construction) {
    CNamedPath table;
    table.path = param.construction.mass_table_update_filename;
    table.what = "the mass table updated by a pepXML list";
    paths.outputs.push_back(table);
  }
  if (!summary.shard.empty()) {
    CNamedPath file;
    file.path = summary.shard;
    file.what = "the shard file of the result (--no-fdr)";
    paths.outputs.push_back(file);
  }
  if (!summary.summaryFile.empty()) {
    CNamedPath file;
    file.path = summary.summaryFile;
    file.what = "the run summary";
    paths.outputs.push_back(file);
  }
  CheckRunPaths(paths);
  CheckRunInputs(param, paths);
  COutputLock lock;
  LockRunOutputs(paths, lock);

  {
    auto bar = CProgressBar::StartIfTerminal();
    summary.constructionSeconds =
        Timed([&] { summary.built = RunConstruction(param.construction); });
    // Kept for an empty one, the earlier library is not what this run built.
    if (!summary.built.keptEarlierLibrary) {
      std::vector<CMotifNarrowing> narrowings;
      summary.searchSeconds =
          Timed([&] { summary.searched = RunSearch(param.search, &narrowings); });
      const double cpuBefore = ProcessCpuSeconds();
      summary.fdrSeconds = Timed([&] {
        if (options.noFdr)
          DeferFdr(param.search, summary.searched, narrowings, summary.searchSeconds);
        else
          summary.ranked = RunFdr(param.search);
      });
      // The stage runs on this thread alone: the process's CPU time is its own.
      summary.fdrCpuSeconds = ProcessCpuSeconds() - cpuBefore;
    }
  }
  if (!summary.qvalues.empty()) summary.glycopeptideQ = CountQValueTargets(summary.qvalues);
  // A pepXML list may have moved the run onto its updated table.
  summary.massTable = param.search.enabled ? param.search.mass_table_filename
                                           : param.construction.mass_table_filename;
  RecordFingerprints(summary);
  // The summary of a run that kept every earlier output would vouch for them.
  if (!summary.summaryFile.empty() && !summary.built.keptEarlierLibrary)
    if (!WriteSummaryFile(summary))
      std::cout << "[Warning]: The summary file " << summary.summaryFile << " can't be written."
                << std::endl;
  std::cout << FormatSummary(summary);

  const uint64_t failures = InputFailureCount();
  const bool emptyLibrary = (summary.construction && summary.built.entriesWritten == 0) ||
                            (summary.search && summary.searched.librarySpectra == 0);
  if (failures == 0 && !emptyLibrary) return exit_status::kSuccess;
  std::cout << "\nIncomplete:";
  if (failures > 0)
    std::cout << ' ' << failures << (failures == 1 ? " input" : " inputs")
              << " could not be read (see the messages above);";
  if (emptyLibrary) std::cout << " the library is empty;";
  std::cout << " exit status " << exit_status::kIncomplete << "." << std::endl;
  return exit_status::kIncomplete;
}
