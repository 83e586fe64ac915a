// DTAS container: a head of three "[" lines, then DTA bodies under ".dta" name lines.
#include "spectrum/DtasIO.h"

#include "spectrum/ChargeLimit.h"
#include "spectrum/ScanFormat.h"

namespace {
// Trim of the string helpers (blanks, tabs, CRs), on a view.
std::string_view Trimmed(std::string_view line) {
  auto trimmed = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
  while (!line.empty() && trimmed(line.back())) line.remove_suffix(1);
  while (!line.empty() && trimmed(line.front())) line.remove_prefix(1);
  return line;
}

// HasAffix(suffix, case ignored) with ".dta": longer than the ending, and ends so.
bool EndsWithDta(std::string_view text) {
  static constexpr std::string_view kDta = ".dta";
  if (text.size() <= kDta.size()) return false;
  const std::string_view end = text.substr(text.size() - kDta.size());
  for (std::size_t i = 0; i < kDta.size(); ++i) {
    char c = end[i];
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c != kDta[i]) return false;
  }
  return true;
}
}  // namespace

void CDtasIO::Init() {
  work.peaks.clear();
  work.peaks.reserve(256);
  extension = ".dta";
}

bool CDtasIO::WriteOne(CSpectrum&) { return false; }

void CDtasIO::BuildIndex() {
  index.clear();
  std::string_view line;
  for (int heads = 0; heads < 3 && input.Next(line);) {
    if (!line.empty() && line.front() == '[') ++heads;
  }
  while (input.Next(line)) {
    const std::string_view name = Trimmed(line);
    if (EndsWithDta(name)) index.insert_or_assign(std::string(name), input.Tell());
  }
}

bool CDtasIO::ParseAtCursor() {
  std::string_view line;
  // At the end of the file the scan has nothing to read: mass and charge keep
  // the values of the spectrum read before, as after any failed scan here.
  if (input.Next(line)) {
    int charge = 0;
    if (ScanMassCharge(line, work.precursorMass, charge) == 2) {
      work.charge = ChargeInRange(charge) ? static_cast<uint32_t>(charge) : 0;
    }
  }
  work.peaks.clear();
  // The list ends at an empty line, a line that begins with a CR, or the end
  // of the file (a spectrum cut off there keeps the peaks read before).
  while (input.Next(line) && !line.empty() && line.front() != '\r') {
    ScanPeakLine(line, workPeak.mz, workPeak.intensity);
    work.peaks.push_back(workPeak);
  }
  return true;
}
