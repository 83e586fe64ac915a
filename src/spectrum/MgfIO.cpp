// Mascot generic format: block index, block parser, block writer.
#include "spectrum/MgfIO.h"

#include <iostream>

#include "spectrum/ChargeLimit.h"
#include "spectrum/MgfBlockIndex.h"
#include "spectrum/MzSpectrumName.h"
#include "spectrum/ScanFormat.h"

namespace {
inline bool Begins(std::string_view line, std::string_view head) {
  return line.substr(0, head.size()) == head;
}
inline char First(std::string_view line) { return line.empty() ? '\0' : line.front(); }
}  // namespace

void CMgfIO::Init() {
  work.peaks.clear();
  work.peaks.reserve(256);
  extension = ".mgf";
  protonMass = 1.00727647012;
}

void CMgfIO::OpenRead(const std::string& pathname) {
  path = pathname;
  CMulSpecIO::OpenRead(pathname);
}

void CMgfIO::BuildIndex() {
  CMgfBlockIndex blocks;
  blocks.Build(input, FileStem(path));
  index = blocks.Positions();
  const std::string report = blocks.Report();
  if (!report.empty()) std::cout << "\n[Warning]: " << path << ": " << report << std::endl;
}

bool CMgfIO::ParseAtCursor() {
  std::string_view line;
  bool hasPeakLine = false;
  // Header: a block without CHARGE or PEPMASS has none (0), rather than the
  // values of whichever block was read before it.
  work.charge = 0;
  work.precursorMass = 0.0;
  while (input.Next(line)) {
    const char c = First(line);
    if (c >= '0' && c <= '9') {
      hasPeakLine = true;
      break;
    }
    if (c == 'C') {
      int charge = 0;
      if (ScanKeyInt(line, "CHARGE=", charge))
        work.charge = ChargeInRange(charge) ? static_cast<uint32_t>(charge) : 0;
    } else if (c == 'P') {
      ScanKeyDouble(line, "PEPMASS=", work.precursorMass);
    } else if (Begins(line, "END IONS") || Begins(line, "BEGIN IONS")) {
      // A block without any peak line ends here with no peaks; it must not
      // take the peaks (or the header) of the block after it.
      break;
    }
  }
  work.precursorMass =
      (work.precursorMass - protonMass) * static_cast<double>(work.charge) + protonMass;
  work.peaks.clear();
  if (!hasPeakLine) return true;
  // Peak list up to the E line (or the next block of a block left open). A
  // line that fails the scan repeats the previous peak (the work peak keeps
  // its values). The end of the file ends the list.
  do {
    if (First(line) == 'E' || Begins(line, "BEGIN IONS")) break;
    ScanPeakLine(line, workPeak.mz, workPeak.intensity);
    work.peaks.push_back(workPeak);
  } while (input.Next(line));
  return true;
}

bool CMgfIO::WriteOne(CSpectrum& spectrum) {
  output << "BEGIN IONS\n";
  output << "SpectrumName=" << spectrum.name << '\n';
  output << "CHARGE=" << spectrum.charge << "+\n";
  spectrum.precursorMass =
      (spectrum.precursorMass - protonMass) / static_cast<double>(spectrum.charge) + protonMass;
  output << "PEPMASS=" << spectrum.precursorMass << '\n';
  output << "Peaks=" << spectrum.peaks.size() << '\n';
  for (const CPeak& peak : spectrum.peaks) output << peak.mz << ' ' << peak.intensity << '\n';
  output << "END IONS\n\n";
  return true;
}
