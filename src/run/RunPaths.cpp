#include "run/RunPaths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <utility>

#include "run/Process.h"
#include "run/StringUtil.h"

namespace {

CNamedPath Named(const std::string& path, const std::string& what,
                 const std::string& cantWrite = std::string()) {
  CNamedPath named;
  named.path = path;
  named.what = what;
  named.cantWrite = cantWrite;
  return named;
}

std::string Key(const std::string& key, const std::string& section) {
  return "\"" + key + "\" in section \"" + section + "\"";
}

void AddDatasets(const std::vector<CDatasetFile>& datasets, const std::string& prefix,
                 const std::string& section, std::vector<CNamedPath>& inputs) {
  for (std::size_t i = 0; i < datasets.size(); ++i) {
    const bool dta = datasets[i].format == 1;
    CNamedPath input = Named(datasets[i].pathname, Key(prefix + std::to_string(i + 1), section));
    input.dtaDataset = dta;
    input.format = datasets[i].format;
    input.formatWhat = Key(prefix.substr(0, prefix.find("pathname_")) + "format", section);
    inputs.push_back(input);
  }
}

std::string Resolved(const std::string& path) {
  std::error_code error;
  std::filesystem::path resolved = std::filesystem::weakly_canonical(path, error);
  if (error) resolved = std::filesystem::absolute(path, error).lexically_normal();
  return resolved.string();
}

// Whether `output` is a file that reading the DTA folder `folder` would take in.
bool InsideDtaFolder(const std::string& output, const std::string& folder) {
  if (GetPathKind(folder) != PathKind::Directory || !HasAffix(true, false, output, ".dta"))
    return false;
  std::filesystem::path parent = std::filesystem::path(Resolved(output)).parent_path();
  return SameFile(parent.string(), folder);
}

// Why a new file can't be put in place of `path`, in the system's words; empty
// when it can: nothing or a regular file there, in an existing folder that we
// may write to.
std::string WhyNotWritable(const std::string& path) {
  if (path.empty()) return "no file name was given";
  const PathKind kind = GetPathKind(path);
  if (kind == PathKind::Directory) return path + " is a folder: " + std::strerror(EISDIR);
  if (kind == PathKind::Other) return path + " is a device, FIFO or socket, not a regular file";
  const std::size_t cut = LastSeparator(path);
  const std::string folder = cut == std::string::npos ? "." : path.substr(0, cut + 1);
  struct stat info;
  if (::stat(folder.c_str(), &info) != 0)
    return "the folder " + folder + " can't be used: " + std::strerror(errno);
  if (!S_ISDIR(info.st_mode)) return folder + " is not a folder: " + std::strerror(ENOTDIR);
  if (::access(folder.c_str(), W_OK | X_OK) != 0)
    return "the folder " + folder + " can't be written: " + std::strerror(errno);
  return std::string();
}

[[noreturn]] void Refuse(const std::string& message) {
  std::cout << "[Error]: " << message << std::endl;
  ExitProgram(1);
}

}  // namespace

std::string CompanionFileName(const std::string& libraryPath) {
  // "_libcomp" goes in front of the last point of the whole name and ".txt"
  // replaces the rest, also when that point stands in a folder name. A name
  // without any point has no place for the insertion: the suffix is appended.
  const std::size_t point = libraryPath.rfind('.');
  if (point == std::string::npos) return libraryPath + "_libcomp.txt";
  return libraryPath.substr(0, point) + "_libcomp.txt";
}

namespace {

// The result path up to the point of its extension, and that extension.
std::pair<std::string, std::string> StemAndExtension(const std::string& resultPath) {
  const std::size_t separator = LastSeparator(resultPath);
  const std::size_t dot = resultPath.rfind('.');
  const bool hasExtension = dot != std::string::npos &&
                            (separator == std::string::npos || dot > separator + 1);
  if (!hasExtension) return {resultPath, std::string()};
  return {resultPath.substr(0, dot), resultPath.substr(dot)};
}

}  // namespace

std::string QValuePath(const std::string& resultPath, const std::string& extension) {
  const auto [stem, ownExtension] = StemAndExtension(resultPath);
  return stem + "_qvalues" + (extension.empty() ? ownExtension : extension);
}

std::string ShardPath(const std::string& resultPath) {
  return StemAndExtension(resultPath).first + "_shard.qgs";
}

std::string TextShardPath(const std::string& resultPath) {
  return StemAndExtension(resultPath).first + "_shard.tsv";
}

bool SameFile(const std::string& a, const std::string& b) {
  struct stat sa, sb;
  if (::stat(a.c_str(), &sa) == 0 && ::stat(b.c_str(), &sb) == 0)
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
  return Resolved(a) == Resolved(b);
}

CRunPaths CollectRunPaths(const CParam& param) {
  CRunPaths paths;
  paths.inputs.push_back(Named(param.configure_filename, "the configuration file"));
  const CConstructionParam& c = param.construction;
  const CSearchParam& s = param.search;
  if (c.enabled || s.enabled)
    paths.inputs.push_back(Named(c.mass_table_filename, "the mass table"));
  if (c.enabled) {
    for (std::size_t i = 0; i < c.identification_files.size(); ++i) {
      paths.inputs.push_back(
          Named(c.identification_files[i].path,
                Key("identification_filename_" + std::to_string(i + 1), "construction")));
    }
    AddDatasets(c.library_datasets, "library_dataset_pathname_", "construction", paths.inputs);
    paths.inputs.push_back(Named(c.protein_database, Key("protein_database", "construction")));
    const std::string companion = CompanionFileName(c.output_speclib_filename);
    paths.outputs.push_back(
        Named(c.output_speclib_filename, Key("output_speclib_filename", "construction"),
              "\nCDtasIO error: failed to open Dtas file " + c.output_speclib_filename));
    paths.outputs.back().locked = true;
    paths.outputs.push_back(
        Named(companion, "the companion file of " + Key("output_speclib_filename", "construction"),
              CompanionWriteError(companion)));
  }
  if (s.enabled) {
    // The library that this run builds is meant to be searched: it is an input
    // only when the construction stage does not write it.
    if (!c.enabled || !SameFile(s.input_speclib_filename, c.output_speclib_filename))
      paths.inputs.push_back(
          Named(s.input_speclib_filename, Key("input_speclib_filename", "search")));
    AddDatasets(s.query_datasets, "query_dataset_pathname_", "search", paths.inputs);
    paths.outputs.push_back(
        Named(s.output_result_filename, Key("output_result_filename", "search"),
              "Output search result error: failed to open file " + s.output_result_filename));
    paths.outputs.back().locked = true;
    paths.outputs.push_back(
        Named(s.output_result_filename + ".tmp",
              "the temporary file of " + Key("output_result_filename", "search")));
    if (s.glycopeptide_fdr) {
      paths.outputs.push_back(Named(QValuePath(s.output_result_filename),
                                    "the q-value file of " + Key("output_result_filename", "search")));
      paths.outputs.push_back(
          Named(QValuePath(s.output_result_filename, ".pin"),
                "the feature file of " + Key("output_result_filename", "search")));
    }
  }
  return paths;
}

std::string CompanionWriteError(const std::string& path) {
  return "[Error]: The library's companion file " + path + " can't be written.";
}

void CheckRunPaths(const CRunPaths& paths) {
  for (const CNamedPath& input : paths.inputs) {
    if (input.path.empty() || GetPathKind(input.path) != PathKind::Other) continue;
    Refuse(input.what + " names " + input.path +
           ", which is not a regular file or folder (a device, FIFO or socket); it is not read.");
  }
  for (std::size_t i = 0; i < paths.outputs.size(); ++i) {
    const CNamedPath& output = paths.outputs[i];
    for (const CNamedPath& input : paths.inputs) {
      if (input.path.empty()) continue;
      if (SameFile(output.path, input.path) ||
          (input.dtaDataset && InsideDtaFolder(output.path, input.path))) {
        Refuse(output.what + " (" + output.path + ") would overwrite an input of this run: " +
               input.what + " (" + input.path + "). Nothing was written.");
      }
    }
    const std::string why = output.cantWrite.empty() ? "" : WhyNotWritable(output.path);
    if (!why.empty()) {
      std::cout << output.cantWrite << "\n\t" << why;
      if (paths.nameSettings) std::cout << " (named by " << output.what << ")";
      std::cout << std::endl;
      ExitProgram(1);
    }
    for (std::size_t j = 0; j < i; ++j) {
      if (SameFile(output.path, paths.outputs[j].path)) {
        Refuse(output.what + " and " + paths.outputs[j].what + " name the same file (" +
               output.path + "). Nothing was written.");
      }
    }
  }
}
