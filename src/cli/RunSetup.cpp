#include "cli/RunSetup.h"

#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <iostream>

#include "cli/ExitStatus.h"
#include "run/ConfigKeys.h"
#include "run/Process.h"
#include "run/RunPaths.h"

namespace fs = std::filesystem;

namespace {

// A path of the configuration, taken from the configuration's folder when relative.
void Resolve(const fs::path& folder, std::string& path) {
  if (path.empty() || fs::path(path).is_absolute()) return;
  path = (folder / path).lexically_normal().string();
}

std::string Absolute(const std::string& path) {
  std::error_code error;
  fs::path absolute = fs::absolute(path, error);
  return error ? path : absolute.lexically_normal().string();
}

std::string Key(const std::string& key, const std::string& section) {
  return "\"" + key + "\" in section \"" + section + "\"";
}

// Why a path can't be read as an input; empty when it can.
std::string Unreadable(const std::string& path, bool directoryAllowed) {
  switch (GetPathKind(path)) {
    case PathKind::Missing:
      return "no such file";
    case PathKind::Other:
      return "not a regular file (a device, FIFO or socket)";
    case PathKind::Directory:
      if (!directoryAllowed) return "a folder, not a file";
      return ::access(path.c_str(), R_OK | X_OK) == 0 ? "" : "no permission to read it";
    case PathKind::File:
      return ::access(path.c_str(), R_OK) == 0 ? "" : "no permission to read it";
  }
  return "";
}

void CheckInput(const std::string& what, const std::string& path, bool directoryAllowed,
                std::vector<std::string>& problems) {
  const std::string why = Unreadable(path, directoryAllowed);
  if (!why.empty()) problems.push_back(what + ": " + path + ": " + why);
}

void CheckDatasets(const std::vector<CDatasetFile>& datasets, const std::string& prefix,
                   const std::string& section, std::vector<std::string>& problems) {
  for (std::size_t i = 0; i < datasets.size(); ++i) {
    const bool dta = datasets[i].format == 1;  // a DTA dataset may be a folder of .dta files
    CheckInput(Key(prefix + std::to_string(i + 1), section), datasets[i].pathname, dta, problems);
  }
}

constexpr int32_t kLanvekFormat = 2;
constexpr int32_t kPepXmlFormat = 1;

// The options that run one piece of a configuration: one stage, one query
// dataset, another result file. False, after a message, when they don't fit.
bool ApplyPieceOptions(const CRunOptions& options, const fs::path& folder, CParam& param) {
  CConstructionParam& c = param.construction;
  CSearchParam& s = param.search;
  if (options.only == "search") {
    // The library the configuration builds is there already; a pepXML list
    // has left its updated mass table beside it, which the whole run would use.
    if (c.enabled && GetPathKind(c.mass_table_update_filename) == PathKind::File)
      for (const CIdentificationFile& file : c.identification_files)
        if (file.format == kPepXmlFormat) s.mass_table_filename = c.mass_table_update_filename;
    c.enabled = false;
  } else if (options.only == "construction") {
    s.enabled = false;
  }
  if (!options.queryDataset.empty()) {
    if (!s.enabled) {
      std::cout << "[Error]: --query-dataset needs the search, which " << options.config
                << " or --only turns off." << std::endl;
      return false;
    }
    const std::string& wanted = options.queryDataset;
    std::size_t chosen = s.query_datasets.size();
    if (wanted.find_first_not_of("0123456789") == std::string::npos) {
      std::size_t number = 0;  // stays 0 when too large to read
      std::from_chars(wanted.data(), wanted.data() + wanted.size(), number);
      if (number >= 1 && number <= s.query_datasets.size()) chosen = number - 1;
    } else {
      std::string path = wanted;
      Resolve(folder, path);
      for (std::size_t i = 0; i < s.query_datasets.size() && chosen == s.query_datasets.size(); ++i)
        if (s.query_datasets[i].pathname == path || SameFile(s.query_datasets[i].pathname, path)) chosen = i;
    }
    if (chosen == s.query_datasets.size()) {
      std::cout << "[Error]: --query-dataset " << wanted << " is not a query dataset of "
                << options.config << ": expected a number from 1 to " << s.query_datasets.size()
                << " or a query_dataset_pathname_N as written there." << std::endl;
      return false;
    }
    s.query_datasets = {s.query_datasets[chosen]};
  }
  if (!options.result.empty()) s.output_result_filename = Absolute(options.result);
  return true;
}

}  // namespace

std::string BesideWithSuffix(const std::string& path, const std::string& suffix) {
  const std::size_t separator = LastSeparator(path);
  const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
  const std::size_t point = path.rfind('.');
  if (point == std::string::npos || point < nameStart) return path + suffix;
  return path.substr(0, point) + suffix;
}

bool PrepareRun(const CRunOptions& options, CParam& param) {
  if (GetPathKind(options.config) != PathKind::File) {
    std::cout << "[Error]: The configuration file " << options.config
              << " can't be read: it is not an existing regular file." << std::endl;
    return false;
  }
  param.configure_filename = options.config;
  param.explainFaults = true;
  param.Load();
  for (const auto& [section, key] : UnknownConfigKeys(param.config)) {
    std::cout << "[Warning]: The key \"" << key << "\" in section \"" << section
              << "\" is not one the program reads; it is ignored." << std::endl;
  }

  const fs::path folder = fs::path(Absolute(options.config)).parent_path();
  CConstructionParam& c = param.construction;
  CSearchParam& s = param.search;
  for (CIdentificationFile& file : c.identification_files) Resolve(folder, file.path);
  for (CDatasetFile& dataset : c.library_datasets) Resolve(folder, dataset.pathname);
  Resolve(folder, c.protein_database);
  Resolve(folder, c.output_speclib_filename);
  Resolve(folder, s.input_speclib_filename);
  for (CDatasetFile& dataset : s.query_datasets) Resolve(folder, dataset.pathname);
  Resolve(folder, s.output_result_filename);

  std::string table = options.massTable.empty() ? std::string() : Absolute(options.massTable);
  if (table.empty()) {
    const fs::path besideConfig = folder / kMassTableFilename;
    table = GetPathKind(besideConfig.string()) == PathKind::File
                ? besideConfig.string()
                : ExecutableFolder() + kMassTableFilename;
  }
  c.mass_table_filename = s.mass_table_filename = table;
  if (c.enabled)
    c.mass_table_update_filename = BesideWithSuffix(c.output_speclib_filename, "_MassTable.ini");
  s.threads = options.threads;
  c.pauseAtStart = false;  // the classic interface's one-second wait serves no one here
  return ApplyPieceOptions(options, folder, param);
}

int PrepareRunFailure(const CRunOptions& options) {
  return GetPathKind(options.config) == PathKind::File ? exit_status::kRefused
                                                       : exit_status::kConfigurationFile;
}

std::vector<std::string> UnreadableInputs(const CParam& param) {
  std::vector<std::string> problems;
  const CConstructionParam& c = param.construction;
  const CSearchParam& s = param.search;
  if (c.enabled || s.enabled) CheckInput("the mass table", c.mass_table_filename, false, problems);
  if (c.enabled) {
    bool lanvek = false;
    for (std::size_t i = 0; i < c.identification_files.size(); ++i) {
      CheckInput(Key("identification_filename_" + std::to_string(i + 1), "construction"),
                 c.identification_files[i].path, false, problems);
      lanvek = lanvek || c.identification_files[i].format == kLanvekFormat;
    }
    CheckDatasets(c.library_datasets, "library_dataset_pathname_", "construction", problems);
    // The FASTA file is read for Lanvek lists, and for the residues after the
    // peptides of the other lists when asked.
    if (lanvek || c.motifs_across_cleavage)
      CheckInput(Key("protein_database", "construction"), c.protein_database, false, problems);
  }
  if (s.enabled) {
    // A library that this run builds needn't exist yet.
    if (!c.enabled || !SameFile(s.input_speclib_filename, c.output_speclib_filename))
      CheckInput(Key("input_speclib_filename", "search"), s.input_speclib_filename, false,
                 problems);
    CheckDatasets(s.query_datasets, "query_dataset_pathname_", "search", problems);
  }
  return problems;
}
