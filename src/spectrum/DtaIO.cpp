// A DTA dataset: one DTA file, or a directory of them listed in name order.
#include "spectrum/DtaIO.h"

#include <iostream>

#include "run/InputFailures.h"
#include "run/Process.h"
#include "run/StringUtil.h"
#include "spectrum/ChargeLimit.h"
#include "spectrum/ScanFormat.h"

void CDtaIO::Init() {
  work.peaks.clear();
  work.peaks.reserve(256);
  extension = ".dta";
}

void CDtaIO::OpenRead(const std::string& pathArgument) {
  files.clear();
  files.reserve(32768);
  path = pathArgument;
  Rewind();
  // Trailing separators go, so that "dir/" and "dir" list alike; a path made
  // of separators only keeps its first one (the root).
  while (path.size() > 1 && (path.back() == '/' || path.back() == '\\')) path.pop_back();
  switch (GetPathKind(path)) {
    case PathKind::File:
      files.push_back(path);
      path.clear();  // the entry of files is the whole path
      return;
    case PathKind::Directory:
      if (path.back() != '/' && path.back() != '\\') path += '/';
      for (const std::string& name : ListDirectory(path)) {
        if (HasAffix(true, false, name, extension)) files.push_back(name);
      }
      return;
    default:
      std::cout << "\nCDtaIO error: Invalid file or directory " << pathArgument << std::endl;
      ExitProgram(1);
  }
}

bool CDtaIO::ReadNext(std::vector<CSpectrum>& out) {
  while (cursor < files.size()) {
    if (ReadByName(files[cursor++], out)) return true;
  }
  return false;
}

uint32_t CDtaIO::ReadAll(std::vector<CSpectrum>& out) {
  Rewind();
  uint32_t count = 0;
  for (; cursor < files.size(); ++cursor) {
    if (ReadByName(files[cursor], out)) ++count;
  }
  return count;
}

void CDtaIO::CloseRead() {
  files.clear();
  path.clear();
}

bool CDtaIO::ReadByName(const std::string& name, std::vector<CSpectrum>& out) {
  const std::string full = path + name;
  // A directory entry named like a DTA file is no file to read.
  if (GetPathKind(full) != PathKind::File || !input.Open(full)) {
    std::cout << "\nCDtaIO error: failed to open dta file " << full << std::endl;
    NoteInputFailure();
    return false;
  }
  const std::size_t separator = LastSeparator(name);
  work.name = separator == std::string::npos ? name : name.substr(separator + 1);

  // A first line that does not scan leaves mass and charge at 0.
  std::string_view line;
  double mass = 0.0;
  int charge = 0;
  if (input.Next(line)) ScanMassCharge(line, mass, charge);
  work.precursorMass = mass;
  work.charge = ChargeInRange(charge) ? static_cast<uint32_t>(charge) : 0;
  work.peaks.clear();
  while (input.Next(line) && !line.empty()) {
    ScanPeakLine(line, workPeak.mz, workPeak.intensity);  // a failed scan repeats the peak before
    work.peaks.push_back(workPeak);
  }
  out.push_back(work);
  input.Close();
  return true;
}

void CDtaIO::Rewind() { cursor = 0; }

uint32_t CDtaIO::Count() { return static_cast<uint32_t>(files.size() - cursor); }
