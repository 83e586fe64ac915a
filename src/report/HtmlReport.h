#pragma once
#include <string>
#include <vector>

#include "run/Param.h"

// What the report of a finished run is made from; paths are used as given.
struct CReportRequest {
  const CConstructionParam* construction = nullptr;  // may be null
  const CSearchParam* search = nullptr;               // required
  std::string resultPath;    // the ranked result file
  std::string libraryPath;   // the library the search used
  std::vector<CDatasetFile> queryDatasets;
  std::string qvaluesPath;   // may not exist
  std::string summaryPath;   // may not exist
  std::string outPath;
  int topN = 0;  // 0: every hit at FDR <= 1 %; else the first topN hits
};

// Writes one self-contained HTML file: run summary, score and FDR plots, the
// hit table and a mirror plot for each shown hit, drawn on demand. Returns 0
// on success; otherwise prints what went wrong and returns 1.
int WriteHtmlReport(const CReportRequest& request);

// The report's file name for a result file: its extension replaced by "_report.html".
std::string DefaultReportPath(const std::string& resultPath);
