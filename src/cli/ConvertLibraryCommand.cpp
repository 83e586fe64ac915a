#include "cli/ConvertLibraryCommand.h"

#include <iostream>

#include "cli/ExitStatus.h"
#include "exchange/LibraryConversion.h"
#include "molecule/MassTable.h"
#include "run/Process.h"
#include "run/SafeOutputFile.h"
#include "run/RunPaths.h"
#include "run/StringUtil.h"

namespace {

std::string LowerExtension(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  const std::size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string extension = path.substr(dot);
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return extension;
}

}  // namespace

int ConvertLibraryCommand(const CConvertOptions& options) {
  RemoveTemporariesOnSignals();
  const std::string from = LowerExtension(options.in);
  const std::string to = LowerExtension(options.out);
  const bool toMsp = from == ".quolib" && to == ".msp";
  const bool fromMsp = from == ".msp" && to == ".quolib";
  if (!toMsp && !fromMsp) {
    std::cout << "[Error]: convert-library converts .quolib to .msp or .msp to .quolib; got "
              << options.in << " to " << options.out << std::endl;
    return exit_status::kRefused;
  }
  if (GetPathKind(options.in) != PathKind::File) {
    std::cout << "[Error]: the library " << options.in << " is missing or not a regular file"
              << std::endl;
    return exit_status::kRefused;
  }
  if (fromMsp && options.config.empty()) {
    std::cout << "[Error]: reading MSP needs --config CONFIG: its [construction] settings make "
                 "the entries (theta, tolerance, motifs, Y ions)" << std::endl;
    return exit_status::kRefused;
  }
  CParam& param = CParam::GetInstance();
  std::string massTable = options.massTable.empty() ? ExecutableFolder() + kMassTableFilename
                                                    : options.massTable;
  if (!options.config.empty()) {
    CRunOptions run;
    run.config = options.config;
    run.massTable = options.massTable;
    if (!PrepareRun(run, param)) return PrepareRunFailure(run);
    massTable = param.construction.mass_table_filename;
  }
  if (fromMsp && !param.construction.enabled) {
    std::cout << "[Error]: " << options.config
              << " has construction = no: its construction settings are needed to read MSP"
              << std::endl;
    return exit_status::kRefused;
  }
  for (const std::string& input : {options.in, options.config, massTable}) {
    if (!input.empty() && SameFile(options.out, input)) {
      std::cout << "[Error]: " << options.out << " would overwrite the input " << input
                << std::endl;
      return exit_status::kRefused;
    }
  }

  CMassTable table;
  CMassTableFile tableFile;
  tableFile.filename = massTable;
  tableFile.Load(table);
  CSiteMark mark;
  mark.mspName = options.siteMark.empty() ? "Deamidated" : options.siteMark;
  mark.tableName = !param.construction.modification_remove.empty()
                       ? param.construction.modification_remove
                       : mark.mspName + "[N]";
  mark.mass = table.Modification(mark.tableName);

  if (toMsp) return ConvertQuolibToMsp(options.in, options.out, mark, table) ? 0 : 1;

  CConstructionParam settings = param.construction;
  settings.mass_table_filename = massTable;
  // The site marks are found under the table name, as in the lists.
  param.construction.modification_remove = settings.modification_remove = mark.tableName;
  CMspImportCounts counts;
  if (!ConvertMspToQuolib(options.in, options.out, settings, mark, counts))
    return exit_status::kRefused;
  const auto line = [](const std::string& label, std::size_t count) {
    std::cout << "  " << label << std::string(label.size() < 44 ? 44 - label.size() : 1, ' ')
              << count << "\n";
  };
  line("MSP records", counts.records + counts.faulty);
  line("skipped: faulty (reported above)", counts.faulty);
  line("skipped: unknown modification", counts.unknownModification);
  line("skipped: no " + mark.mspName + " on a sequon", counts.noSite);
  line("skipped: decoys of other origin", counts.decoys);
  line("entries written", counts.entries);
  std::cout << "  library                                     " << options.out << std::endl;
  // Records that could not be read make the conversion incomplete, as a faulty list does a run.
  return counts.faulty > 0 ? exit_status::kIncomplete : exit_status::kSuccess;
}
