// The companion file of a library: which spectra went into which entry.
#include <algorithm>
#include <fstream>
#include <iostream>

#include "construction/IdentifiedAnalyzer.h"
#include "run/Process.h"

std::string CompanionFileName(const std::string& libraryPath) {
  // "_libcomp" goes in front of the last point of the whole name and ".txt"
  // replaces the rest, also when that point stands in a folder name. A name
  // without any point has no place for the insertion: the suffix is appended.
  const std::size_t point = libraryPath.rfind('.');
  if (point == std::string::npos) return libraryPath + "_libcomp.txt";
  return libraryPath.substr(0, point) + "_libcomp.txt";
}

namespace {
[[noreturn]] void FailOnCompanion(const std::string& path) {
  std::cout << "[Error]: The library's companion file " << path << " can't be written."
            << std::endl;
  ExitProgram(1);
}
}  // namespace

void CIdentifiedAnalyzer::WriteComposition(std::size_t n) {
  const std::string path = CompanionFileName(param.output_speclib_filename);
  if (!companion.Open(path)) FailOnCompanion(path);
  std::ofstream& out = companion.Stream();
  const std::size_t count = std::min(n, peptides.size());
  for (std::size_t i = 0; i < count; ++i) {
    out << "SpectrumName:" << (i + 1) << '\n';
    for (const CSpectrumRef& ref : peptides[i].spectra) out << ref.spectrumName << '\n';
    out << '\n';
  }
}

void CIdentifiedAnalyzer::CommitComposition() {
  if (!companion.IsOpen()) return;
  const std::string path = companion.Path();
  if (!companion.Commit()) FailOnCompanion(path);
}
