#include "fdr/FdrStage.h"

#include <cstdio>
#include <string>

#include "fdr/FdrEstimator.h"
#include "fdr/GlycopeptideQValues.h"
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
  CFdrCounts counts = estimator.Counts();
  if (settings.glycopeptide_fdr)
    counts.lowestGlycopeptideQ = RunGlycopeptideQValues(settings, estimator.records);
  return counts;
}
