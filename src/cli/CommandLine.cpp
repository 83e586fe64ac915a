#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <iostream>
#include <limits>
#include <string>
#include <vector>

#include "cli/ConvertLibraryCommand.h"
#include "cli/ExitStatus.h"
#include "cli/ExportCommand.h"
#include "cli/FdrCommand.h"
#include "cli/PlanCommand.h"
#include "cli/ReportCommand.h"
#include "cli/RunCommand.h"
#include "run/ConfigKeys.h"
#include "run/Param.h"

namespace {

const char* const kDescription =
    "QuorinGlyco finds intact N-glycopeptides in tandem mass spectra by spectral library\n"
    "search: it builds a library from identified deglycosylated peptides, searches glycopeptide\n"
    "spectra against it and ranks the hits by a target-decoy FDR.\n"
    "Without arguments it reads a configuration name on standard input (the classic interface).";

const char* const kExitStatuses =
    "Exit status: 0 success; 1 run refused or stopped (configuration fault, missing input,\n"
    "output over an input, fatal data fault); 2 wrong command line; 3 run finished but\n"
    "incomplete (an input failed while it ran, or the library is empty); 255 configuration\n"
    "file can't be read; 128 + N stopped by signal N (130 Ctrl-C, 143 kill).";

// A whole number from 0 on; the message says what was expected (CLI11's own
// check for this prints the whole range of a double).
CLI::Validator WholeNumber(const std::string& meaning) {
  return CLI::Validator(
      [meaning](std::string& text) -> std::string {
        unsigned long long value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (!text.empty() && error == std::errc() && end == text.data() + text.size() &&
            value <= std::numeric_limits<unsigned>::max() / 2)
          return std::string();
        return "expected a whole number from 0 (" + meaning + "); found \"" + text + "\"";
      },
      "NUMBER");
}

}  // namespace

int RunCommandLine(int argc, char** argv) {
  CLI::App app{kDescription, "QuorinGlyco"};
  app.footer(kExitStatuses);
  app.set_version_flag("--version", "QuorinGlyco " + kVersion);
  app.require_subcommand(0, 1);

  CRunOptions run;
  CLI::App* runCommand = app.add_subcommand(
      "run",
      "Run the stages of a configuration file (relative paths in it are taken from its "
      "folder).");
  runCommand->add_option("CONFIG", run.config, "configuration file (see `QuorinGlyco template`)")
      ->required();
  runCommand
      ->add_option("--threads", run.threads,
                   "threads of the search; default 0: all hardware threads")
      ->check(WholeNumber("0: all hardware threads"));
  runCommand->add_option("--mass-table", run.massTable,
                         "mass table; default MassTable.ini beside CONFIG if there, else the "
                         "installed one (never written)");
  runCommand
      ->add_option("--only", run.only,
                   "run this stage of CONFIG alone (search: the library must be there)")
      ->check(CLI::IsMember({"construction", "search"}));
  runCommand->add_option("--query-dataset", run.queryDataset,
                         "search this one query dataset of CONFIG: its number N, or its "
                         "query_dataset_pathname_N as written there");
  runCommand->add_option("--result", run.result,
                         "result file to write in place of CONFIG's output_result_filename");
  runCommand->add_option("--summary", run.summary,
                         "summary file to write in place of <result stem>_summary.json");
  runCommand->add_flag("--no-fdr", run.noFdr,
                       "leave the ranking (and the q-values) to a later `fdr` over several "
                       "searches: the result file stays unranked and <result stem>_shard.qgs "
                       "beside it keeps what the merge needs");

  std::string fdrOut;
  std::vector<std::string> fdrInputs;
  CLI::App* fdrCommand = app.add_subcommand(
      "fdr",
      "Rank the lines of one or more result files together and add the FDR column, as "
      "one run would (for searches split across machines). Result files of run --no-fdr "
      "(shards, given in the order of their query datasets) are checked against each other "
      "and also get their glycopeptide q-values and a summary.");
  fdrCommand->add_option("--out", fdrOut, "ranked result file to write")->required();
  fdrCommand->add_option("RESULT", fdrInputs, "result files of the search (27 or 28 columns)")
      ->required();

  CRunOptions report;
  std::string reportOut;
  int reportTop = 0;
  CLI::App* reportCommand = app.add_subcommand(
      "report", "After a run: write one self-contained HTML file with the run's summary, score "
                "and FDR plots, the hit table and annotated mirror plots.");
  reportCommand->add_option("CONFIG", report.config, "configuration file of the run")->required();
  reportCommand->add_option("--out", reportOut,
                            "HTML file to write; default: the result file's name with "
                            "_report.html in place of its extension");
  reportCommand
      ->add_option("--top", reportTop, "show the best N hits; default 0: every hit at FDR <= 1 %")
      ->check(WholeNumber("0: every hit at FDR <= 1 %"));
  reportCommand->add_option("--mass-table", report.massTable, "mass table, as for run");

  CRunOptions exportRun;
  std::string exportFormat;
  std::string exportOut;
  CLI::App* exportCommand = app.add_subcommand(
      "export", "After a run: write its identifications as mzIdentML 1.1 or pepXML, with the "
                "q-values where the run wrote them.");
  exportCommand->add_option("CONFIG", exportRun.config, "configuration file of the run")->required();
  exportCommand->add_option("--to", exportFormat, "format: mzid or pepxml")
      ->required()
      ->check(CLI::IsMember({"mzid", "pepxml"}));
  exportCommand->add_option("--out", exportOut,
                            "file to write; default: beside the result file, <result stem>.mzid "
                            "or <result stem>.pep.xml");
  exportCommand->add_option("--mass-table", exportRun.massTable, "mass table, as for run");

  CConvertOptions convert;
  CLI::App* convertCommand = app.add_subcommand(
      "convert-library", "Convert a library between .quolib and NIST MSP, by the extensions.");
  convertCommand->add_option("IN", convert.in, "library to read (.quolib or .msp)")->required();
  convertCommand->add_option("OUT", convert.out, "library to write (.msp or .quolib)")->required();
  convertCommand->add_option("--config", convert.config,
                             "configuration whose [construction] settings make the entries "
                             "(required to read MSP)");
  convertCommand->add_option("--site-mark", convert.siteMark,
                             "MSP modification name that marks a former site asparagine; "
                             "default Deamidated");
  convertCommand->add_option("--mass-table", convert.massTable, "mass table, as for run");

  CRunOptions plan;
  CLI::App* planCommand = app.add_subcommand(
      "plan", "Print, as JSON, the files that `run CONFIG` reads and writes (for workflow "
              "engines); runs nothing.");
  planCommand->add_option("CONFIG", plan.config, "configuration file")->required();
  planCommand->add_option("--mass-table", plan.massTable, "mass table, as for run");

  CLI::App* templateCommand = app.add_subcommand(
      "template", "Print a complete configuration with every key and what it means.");

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& done) {
    app.exit(done);
    return exit_status::kSuccess;
  } catch (const CLI::ParseError& error) {
    app.exit(error);
    return exit_status::kUsage;
  }

  if (*runCommand) return RunCommand(run);
  if (*fdrCommand) return FdrCommand(fdrOut, fdrInputs);
  if (*reportCommand) return ReportCommand(report, reportOut, reportTop);
  if (*exportCommand) return ExportCommand(exportRun, exportFormat, exportOut);
  if (*convertCommand) return ConvertLibraryCommand(convert);
  if (*planCommand) return PlanCommand(plan);
  if (*templateCommand) {
    std::cout << ConfigTemplate();
    return exit_status::kSuccess;
  }
  std::cout << "A command is required: run, fdr, report, plan, export, convert-library or template" << std::endl
            << "Run with --help for more information." << std::endl;
  return exit_status::kUsage;
}
