// Mascot generic format: block index by title, block parser, block writer.
#include "spectrum/MgfIO.h"

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

void CMgfIO::BuildIndex() {
  index.clear();
  title.clear();
  std::string_view line;
  while (input.Next(line)) {
    if (First(line) != 'B') continue;
    const std::streamoff position = input.Tell();
    // The next T line names the block, wherever it stands: a block without a
    // title lends its position to the title of the next one.
    bool titled = false;
    while (input.Next(line)) {
      if (First(line) == 'T') {
        titled = true;
        break;
      }
    }
    if (!titled) break;  // the file ended before a title: the block goes unnamed
    ScanKeyWord(line, "TITLE=", title);  // a failed scan keeps the title last read
    index.insert_or_assign(title, position);
  }
}

bool CMgfIO::ParseAtCursor() {
  std::string_view line;
  bool hasPeakLine = false;
  // Header: charge and precursor m/z persist from the block read before when
  // the block does not state them.
  while (input.Next(line)) {
    const char c = First(line);
    if (c >= '0' && c <= '9') {
      hasPeakLine = true;
      break;
    }
    if (c == 'C') {
      int charge = 0;
      if (ScanKeyInt(line, "CHARGE=", charge)) work.charge = static_cast<uint32_t>(charge);
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
  // Peak list up to the E line. A line that fails the scan repeats the previous
  // peak (the work peak keeps its values). The end of the file ends the list.
  do {
    if (First(line) == 'E') break;
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
