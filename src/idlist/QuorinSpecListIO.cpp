#include "idlist/QuorinSpecListIO.h"

#include <cctype>
#include <cstdio>
#include <iostream>

#include "idlist/ListFile.h"
#include "run/Process.h"
#include "run/TextLine.h"

namespace {

bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool IsSeparator(char c) { return c == ' ' || c == ',' || c == '\t'; }

// The scan "%s%*[ ,\t]%s%*[ ,\t]%s%*[ ,\t]%d" by hand; returns the number of
// conversions made (0 to 4), the fields behind a failure stay untouched.
int ScanQuorinLine(std::string_view line, std::string_view fields[3], int& charge) {
  const std::size_t n = line.size();
  std::size_t i = 0;
  for (int f = 0; f < 3; ++f) {
    while (i < n && IsSpace(line[i])) ++i;
    if (i == n) return f;
    std::size_t start = i;
    while (i < n && !IsSpace(line[i])) ++i;
    fields[f] = line.substr(start, i - start);
    std::size_t separator = i;
    while (i < n && IsSeparator(line[i])) ++i;
    if (i == separator) return f + 1;
  }
  while (i < n && IsSpace(line[i])) ++i;
  std::size_t digits = i;
  if (digits < n && (line[digits] == '+' || line[digits] == '-')) ++digits;
  if (digits == n || line[digits] < '0' || line[digits] > '9') return 3;
  charge = ParseInt(line.substr(i));
  return 4;
}

}  // namespace

void CQuorinSpecListIO::Init(const CIdentificationFile& file) { path = file.path; }

void CQuorinSpecListIO::Read(std::vector<CIdentifiedSpectrum>& list) {
  std::ifstream in;
  if (!OpenListFile(path, in)) return;
  std::string line;
  if (!ReadLine(in, line) || in.eof()) return;  // heading alone
  std::string mods;
  std::string_view fields[3];
  bool tooLong = false;
  for (;;) {
    if (!ReadLine(in, line, &tooLong) || line.empty()) break;
    int charge = 0;
    // A line that doesn't give all four fields is reported and skipped rather
    // than filled with the values of the record before it.
    if (ScanQuorinLine(line, fields, charge) < 4) {
      std::cout << "[Warning]: The line \"" << line << "\" of \"" << path
                << "\" has fewer than four fields! It will be skipped!\n";
    } else {
      record.spectrumName.assign(fields[0]);
      record.sequence.assign(fields[1]);
      record.charge = charge;
      mods.assign(fields[2]);
      if (ParseRecordModifications(mods, record)) AddIdentified(list, record, "00");
    }
    if (in.eof() || tooLong) break;
  }
}

void CQuorinSpecListIO::WriteList(const std::vector<CIdentifiedSpectrum>& list) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out.is_open()) {
    std::cout << "Error when writing \"" << path << "\"." << std::endl;
    ExitProgram(-1);
  }
  out << "Spectrum Name\tSequencet\tModification\tCharge\n";
  std::string text;
  for (const CIdentifiedSpectrum& item : list) {
    text.assign(item.spectrumName);
    text.push_back('\t');
    text.append(item.sequence);
    text.push_back('\t');
    text.append(ModificationsToString(item.modifications));
    text.push_back('\t');
    text.append(std::to_string(static_cast<uint32_t>(item.charge)));
    text.push_back('\n');
    out << text;
  }
}
