// The library file: entries of fixed lines, written by the construction stage
// and read by position (not by key) in the search stage.
#include "spectrum/QuolibIO.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "run/NumberText.h"
#include "run/StringUtil.h"
#include "spectrum/ScanFormat.h"

namespace {

// The value of a "Key=value" line: the text between the first and a second
// "=", trimmed; empty when the line has no "=".
std::string ValueAfterEquals(std::string_view line) {
  const std::size_t at = line.find('=');
  if (at == std::string_view::npos) return {};
  std::string_view rest = line.substr(at + 1);
  rest = rest.substr(0, rest.find('='));
  std::string value(rest);
  Trim(value);
  return value;
}

void ParseMotifs(std::string_view line, std::vector<CGlycoSite>& motifs) {
  motifs.clear();
  const std::size_t at = line.find('=');
  if (at == std::string_view::npos) return;
  std::vector<std::string> pieces;
  Split(std::string(line.substr(at + 1)), ";", pieces);
  for (const std::string& piece : pieces) {
    std::string left;
    std::string right;
    SplitFirst(piece, ":", left, right);
    Trim(right);
    motifs.push_back({static_cast<int32_t>(std::atoi(left.c_str())), right});
  }
}

}  // namespace

void CQuolibIO::Init() {
  work.peaks.clear();
  work.peaks.reserve(64);
  extension = ".quolib";
  entryCount = 0;
}

void CQuolibIO::BuildIndex() {
  index.clear();
  title.clear();
  std::string_view line;
  while (input.Next(line)) {
    if (line.empty() || line.front() != 'I') continue;
    if (!input.Next(line)) break;
    ScanKeyWord(line, "SpectrumName=", title);  // a failed scan keeps the name last read
    // The stored position is that of the "Sequence=" line.
    index.insert_or_assign(title, input.Tell());
  }
}

bool CQuolibIO::ParseAtCursor() {
  // An entry cut short by the end of the file keeps what it has read: fields
  // behind the cut hold their previous values, except peaks and motifs, which
  // end empty (or with the peaks read before the cut). No line is invented.
  work.peaks.clear();
  work.motifs.clear();
  std::string_view line;
  std::string text;

  if (!input.Next(line)) return true;
  ScanKeyWord(line, "Sequence=", work.sequence);

  if (!input.Next(line)) return true;
  if (ScanKeyWord(line, "Modifications=", text)) ParseModifications(text, work.modifications);

  int number = 0;
  if (!input.Next(line)) return true;
  ScanKeyDouble(line, "PrecursorIonMass=", work.precursorMass);
  if (!input.Next(line)) return true;
  if (ScanKeyInt(line, "Charge=", number)) work.charge = static_cast<uint32_t>(number);
  if (!input.Next(line)) return true;
  if (ScanKeyInt(line, "Frequency=", number)) work.frequency = static_cast<uint32_t>(number);

  if (!input.Next(line)) return true;
  work.proteinAC = ValueAfterEquals(line);
  if (!input.Next(line)) return true;
  work.prevAA = ValueAfterEquals(line);
  if (!input.Next(line)) return true;
  work.lastAA = ValueAfterEquals(line);

  if (!input.Next(line)) return true;
  ScanKeyInt(line, "StartPostion=", work.startPosition);

  if (!input.Next(line)) return true;
  ParseMotifs(line, work.motifs);

  if (!input.Next(line)) return true;
  int peakCount = 0;
  ScanKeyInt(line, "Peaks=", peakCount);
  work.peaks.reserve(static_cast<std::size_t>(std::clamp(peakCount, 0, 65536)));
  int count = static_cast<int>(workPeak.count);
  int position = static_cast<int>(workPeak.position);
  int charge = static_cast<int>(workPeak.charge);
  for (int i = 0; i < peakCount; ++i) {
    if (!input.Next(line)) break;
    // A line that fails the scan repeats the fields of the peak before it.
    ScanLibraryPeak(line, workPeak.mz, workPeak.intensity, count, workPeak.type, position, charge);
    workPeak.count = static_cast<uint32_t>(count);
    workPeak.position = static_cast<uint32_t>(position);
    workPeak.charge = static_cast<uint32_t>(charge);
    work.peaks.push_back(workPeak);
  }
  return true;
}

bool CQuolibIO::WriteOne(CSpectrum& spectrum) {
  std::string& out = writeBuffer;
  out.clear();
  out += "ID=";
  AppendUnsigned(out, static_cast<uint64_t>(entryCount) + 1);
  out += "\nSpectrumName=";
  out += spectrum.name;
  out += "\nSequence=";
  out += spectrum.sequence;
  out += "\nModifications=";
  out += ModificationsToString(spectrum.modifications);
  out += "\nPrecursorIonMass=";
  AppendFixed(out, spectrum.precursorMass, 5);
  out += "\nCharge=";
  AppendUnsigned(out, spectrum.charge);
  out += "\nFrequency=";
  AppendUnsigned(out, spectrum.frequency);
  out += "\nProteinAC=";
  out += spectrum.proteinAC;
  out += "\nPrevAA=";
  out += spectrum.prevAA;
  out += "\nLastAA=";
  out += spectrum.lastAA;
  out += "\nStartPostion=";
  AppendSigned(out, spectrum.startPosition);
  out += "\nN Glycan Motif=";
  for (std::size_t i = 0; i < spectrum.motifs.size(); ++i) {
    if (i > 0) out += ';';
    AppendSigned(out, spectrum.motifs[i].position);
    out += ':';
    out += spectrum.motifs[i].sequon;
  }
  out += "\nPeaks=";
  AppendUnsigned(out, spectrum.peaks.size());
  out += '\n';
  for (const CPeak& peak : spectrum.peaks) {
    AppendFixed(out, peak.mz, 4);
    out += ' ';
    AppendFixed(out, peak.intensity, 4);
    out += ' ';
    AppendUnsigned(out, peak.count);
    out += ' ';
    AppendSigned(out, peak.type);
    out += ' ';
    AppendUnsigned(out, peak.position);
    out += ' ';
    AppendUnsigned(out, peak.charge);
    out += '\n';
  }
  out += '\n';
  output.write(out.data(), static_cast<std::streamsize>(out.size()));
  ++entryCount;
  return true;
}
