// Reading and writing shared by the formats that hold many spectra in one file.
#include "spectrum/MulSpecIO.h"

#include <iostream>

#include "run/InputFailures.h"

void CMulSpecIO::OpenRead(const std::string& path) {
  if (!input.Open(path)) {
    std::cout << "\nCMulSpecIO error: failed to open spec file " << path << std::endl;
    NoteInputFailure();
  }
  // A file that did not open reads as empty: the index stays empty, every
  // read finds nothing, and the run goes on with the other datasets.
  BuildIndex();
  Rewind();
}

bool CMulSpecIO::ReadNext(std::vector<CSpectrum>& out) {
  if (cursor == index.end()) return false;
  const std::string& name = cursor->first;
  ++cursor;
  ReadByName(name, out);  // true even where the read failed: the entry is used up
  return true;
}

uint32_t CMulSpecIO::ReadAll(std::vector<CSpectrum>& out) {
  uint32_t count = 0;
  for (; cursor != index.end(); ++cursor) {
    if (ReadByName(cursor->first, out)) ++count;
  }
  return count;
}

void CMulSpecIO::CloseRead() { input.Close(); }

bool CMulSpecIO::ReadByName(const std::string& name, std::vector<CSpectrum>& out) {
  const auto found = index.find(name);
  if (found == index.end() || found->second == 0) {
    std::cout << "\n[Warning]: Unable to load spectrum " << name << '\n';
    return false;
  }
  input.Seek(found->second);
  work.name = name;
  ParseAtCursor();
  out.push_back(work);
  return true;
}

void CMulSpecIO::Rewind() { cursor = index.begin(); }

uint32_t CMulSpecIO::Count() { return static_cast<uint32_t>(index.size()); }

void CMulSpecIO::OpenWrite(const std::string& path) {
  writeOk = outputFile.Open(path);
  if (!writeOk) {
    std::cout << "\nCDtasIO error: failed to open Dtas file " << path << '\n'
              << FailureLine(outputFile) << std::flush;
  }
}

uint32_t CMulSpecIO::WriteRange(std::vector<CSpectrum>& spectra, uint32_t first, uint32_t last) {
  uint32_t written = 0;
  // A last index past the end is taken as the end of the vector.
  for (std::size_t i = first; i <= last && i < spectra.size(); ++i) {
    if (!WriteOne(spectra[i])) break;
    ++written;
  }
  return written;
}

void CMulSpecIO::CloseWrite() {
  if (!outputFile.IsOpen()) return;
  writeOk = outputFile.Commit();
  if (!writeOk) {
    // A write that failed on the way (a full disk) says so in the words of a
    // file that can't be opened: either way the file is not there.
    std::cout << "\nCDtasIO error: failed to open Dtas file " << outputFile.Path() << '\n'
              << FailureLine(outputFile) << std::flush;
  }
}
