#include "fdr/FdrStage.h"

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycopeptideQValues.h"
#include "fdr/ShardFile.h"
#include "run/Process.h"
#include "run/SafeOutputFile.h"

namespace {

// Gives the search's lines their second name: a hard link, else a copy.
bool KeepSearchLines(const std::string& resultPath, const std::string& tmpPath) {
  std::error_code error;
  std::filesystem::create_hard_link(resultPath, tmpPath, error);
  if (!error) return true;
  return std::filesystem::copy_file(resultPath, tmpPath, error) && !error;
}

}  // namespace

CFdrCounts RunFdr(const CSearchParam& settings) {
  if (!settings.enabled) return {};
  const std::string& resultPath = settings.output_result_filename;
  // The search's lines stay under the result's name until the ranked file
  // replaces them whole, and are also kept in the temporary file while the
  // stage runs. A run stopped at any point leaves the result file complete
  // (ranked or not) and no temporary file.
  std::string tmpPath = resultPath + ".tmp";
  std::remove(tmpPath.c_str());
  CScratchName scratch(tmpPath);
  // A directory in the result's place is left where it is; the load then
  // reports the missing temporary file. Where the file system can give the
  // lines no second name, they are read from the result itself.
  if (GetPathKind(resultPath) == PathKind::File && !KeepSearchLines(resultPath, tmpPath))
    tmpPath = resultPath;
  CFdrEstimator estimator(tmpPath, resultPath, 1);
  estimator.Estimate();
  std::remove(scratch.Path().c_str());
  CFdrCounts counts = estimator.Counts();
  if (settings.glycopeptide_fdr)
    counts.lowestGlycopeptideQ = RunGlycopeptideQValues(settings, estimator.records);
  return counts;
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
  // The mass table must outlive the hits, whose glycans point into it.
  CMassTable table;
  const std::string candidatePath = CandidatePath(resultPath);
  if (settings.glycopeptide_fdr) {
    shard.glycopeptideFdr = true;
    // The search's next best candidates of each line follow the lines, as in
    // the q-value step of a whole run.
    std::vector<CGlycopeptideHit> hits = ResultAndCandidateHits(lines.records, candidatePath);
    AddEvidenceFromDatasets(hits, settings, table);
    shard.evidence.Reserve(hits.size());
    for (std::size_t i = 0; i < hits.size(); ++i)
      i < lines.records.size() ? shard.evidence.AddLine(hits[i]) : shard.evidence.AddCandidate(hits[i]);
  }
  const std::string path = ShardPath(resultPath);
  if (!IdentifyFile(shard.library, shard.libraryIdentity, true) ||
      !IdentifyFile(resultPath, shard.resultIdentity, false) || !WriteShardFile(shard, path)) {
    std::cout << "[Error]: The shard file " << path << " can't be written." << std::endl;
    ExitProgram(1);
  }
  // The shard holds the candidates now.
  std::remove(candidatePath.c_str());
  std::cout << "\t\t" << path << "\n    ---- Complete!\n" << std::endl;
}
