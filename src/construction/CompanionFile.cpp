// The companion file of a library: which spectra went into which entry.
#include <algorithm>
#include <fstream>

#include "construction/IdentifiedAnalyzer.h"
#include "run/Process.h"

std::string CompanionFileName(const std::string& libraryPath) {
  // The extension is looked for in the file name part only, so that a point
  // in a folder name ("a.b/c") is not mistaken for one. A name without any
  // extension gets "_libcomp.txt" appended.
  const std::size_t separator = LastSeparator(libraryPath);
  const std::size_t nameStart = separator == std::string::npos ? 0 : separator + 1;
  const std::size_t point = libraryPath.rfind('.');
  if (point == std::string::npos || point < nameStart) return libraryPath + "_libcomp.txt";
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
