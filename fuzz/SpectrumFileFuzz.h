#pragma once
// Shared body of the spectrum reader targets: the input is read as it is and
// once more gzipped (the readers tell gzip by content), every spectrum read
// by name and in order, as the search and the construction read them.
#include <memory>
#include <vector>

#include "FuzzFile.h"
#include "spectrum/SpecIO.h"

namespace fuzz {

inline void ReadEverySpectrum(int format, const std::string& path) {
  const std::unique_ptr<CSpecIO> io(CreateSpecIO(format));
  io->OpenRead(path);
  std::vector<CSpectrum> spectra;
  io->ReadAll(spectra);
  io->Rewind();
  if (io->Count() > 0 && !spectra.empty()) io->ReadByName(spectra.front().name, spectra);
  io->CloseRead();
}

inline void ReadPlainAndGzipped(int format, const char* extension, const uint8_t* data, std::size_t size) {
  const std::string& path = ScratchPath(extension);
  WriteFile(path, Bytes(data, size));
  ReadEverySpectrum(format, path);
  WriteFile(path, Gzip(Bytes(data, size)));
  ReadEverySpectrum(format, path);
}

}  // namespace fuzz
