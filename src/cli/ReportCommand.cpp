#include "cli/ReportCommand.h"

#include <iostream>

#include "cli/ExitStatus.h"
#include "report/HtmlReport.h"
#include "run/Process.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"

int ReportCommand(const CRunOptions& options, const std::string& out, int topN) {
  RemoveTemporariesOnSignals();
  CParam& param = CParam::GetInstance();
  if (!PrepareRun(options, param)) return PrepareRunFailure(options);
  if (!param.search.enabled) {
    std::cout << "[Error]: " << options.config
              << " has search = no: there is no result file to report on." << std::endl;
    return exit_status::kRefused;
  }
  const std::string& result = param.search.output_result_filename;
  CReportRequest request;
  if (param.construction.enabled) request.construction = &param.construction;
  request.search = &param.search;
  request.resultPath = result;
  request.libraryPath = param.search.input_speclib_filename;
  request.queryDatasets = param.search.query_datasets;
  request.qvaluesPath = QValuePath(result);
  request.summaryPath = BesideWithSuffix(result, "_summary.json");
  request.outPath = out.empty() ? DefaultReportPath(result) : out;
  request.topN = topN;
  // The report says itself where it went, or what went wrong.
  return WriteHtmlReport(request) == 0 ? exit_status::kSuccess : exit_status::kRefused;
}
