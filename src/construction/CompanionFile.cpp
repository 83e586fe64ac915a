// The companion file of a library: which spectra went into which entry.
#include <algorithm>
#include <fstream>
#include <iostream>

#include "construction/IdentifiedAnalyzer.h"
#include "run/Process.h"

namespace {
[[noreturn]] void FailOnCompanion(const std::string& path, const CSafeOutputFile& file) {
  std::cout << CompanionWriteError(path) << '\n' << FailureLine(file) << std::flush;
  ExitProgram(1);
}
}  // namespace

void CIdentifiedAnalyzer::WriteComposition(std::size_t n) {
  const std::string path = CompanionFileName(param.output_speclib_filename);
  if (!companion.Open(path)) FailOnCompanion(path, companion);
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
  if (!companion.Commit()) FailOnCompanion(path, companion);
}
