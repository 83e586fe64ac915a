#include "fdr/FdrStage.h"

#include <cstdio>
#include <iostream>
#include <string>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycopeptideQValues.h"
#include "fdr/ShardFile.h"
#include "run/Process.h"

CFdrCounts RunFdr(const CSearchParam& settings) {
  if (!settings.enabled) return {};
  const std::string& resultPath = settings.output_result_filename;
  // The search's lines move to the temporary file and are written back ranked;
  // if the run ends in between, they are still there.
  const std::string tmpPath = resultPath + ".tmp";
  std::remove(tmpPath.c_str());
  // A directory in the result's place is left where it is; the load then
  // reports the missing temporary file.
  if (GetPathKind(resultPath) != PathKind::Directory)
    std::rename(resultPath.c_str(), tmpPath.c_str());
  CFdrEstimator estimator(tmpPath, resultPath, 1);
  estimator.Estimate();
  // The ranked file is complete: the search's lines are no longer needed.
  std::remove(tmpPath.c_str());
  if (settings.glycopeptide_fdr) RunGlycopeptideQValues(settings, estimator.records);
  return estimator.Counts();
}

void DeferFdr(const CSearchParam& settings, const CSearchCounts& counts,
              const std::vector<CMotifNarrowing>& narrowings, double searchSeconds) {
  if (!settings.enabled) return;
  std::cout << ">> Keeping what a later fdr over several searches needs." << std::endl;
  const std::string& resultPath = settings.output_result_filename;
  CShardFile shard;
  shard.library = settings.input_speclib_filename;
  shard.massTable = settings.mass_table_filename;
  shard.settings = EstimateSettings(settings);
  for (const CDatasetFile& dataset : settings.query_datasets) shard.datasets.push_back(dataset.pathname);
  shard.result = resultPath;
  shard.counts = counts;
  shard.searchSeconds = searchSeconds;
  shard.narrowings = narrowings;
  CFdrEstimator lines("", "", 1);
  lines.LoadFile(resultPath, false);
  shard.resultLines = lines.records.size();
  // The mass table must outlive the evidence, whose glycans point into it.
  CMassTable table;
  if (settings.glycopeptide_fdr) {
    shard.glycopeptideFdr = true;
    shard.evidence = ParseResultLines(lines.records);
    AddEvidenceFromDatasets(shard.evidence, settings, table);
  }
  const std::string path = ShardPath(resultPath);
  if (!IdentifyFile(shard.library, shard.libraryIdentity, true) ||
      !IdentifyFile(resultPath, shard.resultIdentity, false) || !WriteShardFile(shard, path)) {
    std::cout << "[Error]: The shard file " << path << " can't be written." << std::endl;
    ExitProgram(1);
  }
  std::cout << "\t\t" << path << "\n    ---- Complete!\n" << std::endl;
}
