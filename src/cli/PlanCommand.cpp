#include "cli/PlanCommand.h"

#include <iostream>

#include <nlohmann/json.hpp>

#include "cli/ExitStatus.h"
#include "report/HtmlReport.h"
#include "run/RunPaths.h"

int PlanCommand(const CRunOptions& options) {
  CParam& param = CParam::GetInstance();
  if (!PrepareRun(options, param)) return PrepareRunFailure(options);
  const CConstructionParam& c = param.construction;
  const CSearchParam& s = param.search;
  nlohmann::ordered_json plan;
  plan["config"] = options.config;
  plan["construction"] = c.enabled;
  plan["search"] = s.enabled;
  plan["mass_table"] = c.mass_table_filename;
  if (c.enabled) {
    nlohmann::ordered_json inputs = nlohmann::json::array();
    for (const CIdentificationFile& file : c.identification_files) inputs.push_back(file.path);
    for (const CDatasetFile& dataset : c.library_datasets) inputs.push_back(dataset.pathname);
    plan["construction_inputs"] = inputs;
    plan["library"] = c.output_speclib_filename;
    plan["companion"] = CompanionFileName(c.output_speclib_filename);
  }
  if (s.enabled) {
    plan["search_library"] = s.input_speclib_filename;
    nlohmann::ordered_json datasets = nlohmann::json::array();
    for (const CDatasetFile& dataset : s.query_datasets) datasets.push_back(dataset.pathname);
    plan["query_datasets"] = datasets;
    plan["glycopeptide_fdr"] = s.glycopeptide_fdr;
    plan["result"] = s.output_result_filename;
    if (s.glycopeptide_fdr) {
      plan["qvalues"] = QValuePath(s.output_result_filename);
      plan["features"] = QValuePath(s.output_result_filename, ".pin");
    }
    plan["summary"] = BesideWithSuffix(s.output_result_filename, "_summary.json");
    plan["report"] = DefaultReportPath(s.output_result_filename);
  }
  std::cout << plan.dump(2) << std::endl;
  return exit_status::kSuccess;
}
