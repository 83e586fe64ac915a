#include "cli/ExportCommand.h"

#include <iostream>

#include "cli/ExitStatus.h"
#include "exchange/MzIdentMlWriter.h"
#include "exchange/PepXmlWriter.h"
#include "run/Process.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"

namespace {

// The files the export reads; the output must be none of them.
std::vector<std::string> ExportInputs(const CParam& param, const CExportedRun& run) {
  std::vector<std::string> inputs = {param.configure_filename, run.resultPath,
                                     param.search.input_speclib_filename,
                                     param.search.mass_table_filename};
  if (!run.qvaluePath.empty()) inputs.push_back(run.qvaluePath);
  for (const CDatasetFile& dataset : param.search.query_datasets) inputs.push_back(dataset.pathname);
  return inputs;
}

}  // namespace

int ExportCommand(const CRunOptions& options, const std::string& format, const std::string& out) {
  RemoveTemporariesOnSignals();
  CParam& param = CParam::GetInstance();
  if (!PrepareRun(options, param)) return PrepareRunFailure(options);
  if (!param.search.enabled) {
    std::cout << "[Error]: " << options.config
              << " has search = no: there is no result file to export." << std::endl;
    return exit_status::kRefused;
  }
  CExportedRun run;
  std::string error;
  if (!ReadExportedRun(param.search, run, error)) {
    std::cout << "[Error]: " << error << std::endl;
    return exit_status::kRefused;
  }
  const bool mzid = format == "mzid";
  if (mzid && run.hits.empty()) {
    // The schema wants at least one identification result.
    std::cout << "[Error]: " << run.resultPath
              << " holds no identification line: an mzIdentML file needs at least one"
              << std::endl;
    return exit_status::kRefused;
  }
  const std::string target =
      !out.empty() ? out : BesideWithSuffix(run.resultPath, mzid ? ".mzid" : ".pep.xml");
  for (const std::string& input : ExportInputs(param, run)) {
    if (SameFile(target, input)) {
      std::cout << "[Error]: the export " << target << " would overwrite " << input
                << ", an input of the run; choose another --out" << std::endl;
      return exit_status::kRefused;
    }
  }
  CExchangeSettings settings;
  settings.param = &param;
  settings.creationDate = CurrentDateTime();
  CMassTableFile tableFile;
  tableFile.filename = param.search.mass_table_filename;
  tableFile.Load(settings.massTable);
  settings.massTable.SortGlycans();

  CSafeOutputFile file;
  if (!file.Open(target, std::ios::binary)) {
    std::cout << "[Error]: can't write " << target << std::endl;
    return exit_status::kRefused;
  }
  if (mzid) {
    WriteMzIdentMl(run, settings, file.Stream());
  } else {
    WritePepXml(run, settings, target, file.Stream());
  }
  if (!file.Commit()) {
    std::cout << "[Error]: writing " << target << " failed" << std::endl;
    return exit_status::kRefused;
  }
  std::cout << "Exported " << run.hits.size() << " identifications"
            << (run.qvaluePath.empty() ? "" : " with their q-values") << " to " << target
            << std::endl;
  return exit_status::kSuccess;
}
