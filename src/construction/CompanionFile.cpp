// The companion file of a library: which spectra went into which entry.
#include <algorithm>
#include <fstream>

#include "construction/IdentifiedAnalyzer.h"

std::string CompanionFileName(const std::string& libraryPath) {
  // "_libcomp" goes in front of the last point of the whole name and ".txt"
  // replaces the rest, also when that point stands in a folder name. A name
  // without any point has no place for the insertion: the suffix is appended.
  const std::size_t point = libraryPath.rfind('.');
  if (point == std::string::npos) return libraryPath + "_libcomp.txt";
  return libraryPath.substr(0, point) + "_libcomp.txt";
}

void CIdentifiedAnalyzer::WriteComposition(std::size_t n) {
  // A file that can't be opened is not reported: the library itself is the
  // product, the companion is a by-product whose writes are then lost.
  std::ofstream out(CompanionFileName(param.output_speclib_filename));
  if (!out) return;
  const std::size_t count = std::min(n, peptides.size());
  for (std::size_t i = 0; i < count; ++i) {
    out << "SpectrumName:" << (i + 1) << '\n';
    for (const CSpectrumRef& ref : peptides[i].spectra) out << ref.spectrumName << '\n';
    out << '\n';
  }
}
