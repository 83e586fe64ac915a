#include "fdr/FdrStage.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycopeptideQValues.h"
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
