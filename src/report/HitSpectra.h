#pragma once
#include <memory>
#include <string>
#include <vector>

#include "run/Param.h"
#include "spectrum/SpecIO.h"
#include "spectrum/Spectrum.h"

// The spectra behind the hits, read by name: library entries from the library
// file, query spectra from the run's query datasets. Each file is indexed once.
class CHitSpectra {
 public:
  // Opens (indexes) the library and every dataset. Missing files read as empty.
  void Open(const std::string& libraryPath, const std::vector<CDatasetFile>& datasets);
  bool LibraryEntry(const std::string& name, CSpectrum& out);
  // Looks first in the dataset whose file name, up to its last point, begins
  // the spectrum name, then in the others.
  bool Query(const std::string& name, CSpectrum& out);
  std::size_t LibraryEntryCount() const { return libraryCount; }

 private:
  bool ReadFrom(CSpecIO* io, const std::string& name, CSpectrum& out);

  std::unique_ptr<CSpecIO> library;
  std::size_t libraryCount = 0;
  std::vector<std::unique_ptr<CSpecIO>> datasets;
  std::vector<std::string> prefixes;
  std::vector<CSpectrum> scratch;
};
