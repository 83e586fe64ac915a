#include "report/HitSpectra.h"

#include <iostream>
#include <sstream>

#include "run/QuietOutput.h"
#include "spectrum/DatasetIOPool.h"


// The readers warn on standard output of every name they can't find; here a
// miss is an expected outcome (a name is tried in several datasets) that the
// report itself counts and reports, so their text is held back.
void CHitSpectra::Open(const std::string& libraryPath, const std::vector<CDatasetFile>& files) {
  CQuietOutput quiet;
  library.reset(CreateSpecIO(0));
  library->OpenRead(libraryPath);
  libraryCount = library->Count();
  datasets.clear();
  for (const CDatasetFile& file : files) {
    datasets.emplace_back(CreateSpecIO(file.format));
    if (datasets.back()) datasets.back()->OpenRead(file.pathname);
  }
  BuildDatasetPrefixes(files, prefixes);
}

bool CHitSpectra::ReadFrom(CSpecIO* io, const std::string& name, CSpectrum& out) {
  if (io == nullptr) return false;
  CQuietOutput quiet;
  scratch.clear();
  if (!io->ReadByName(name, scratch) || scratch.empty()) return false;
  out = std::move(scratch.back());
  return true;
}

bool CHitSpectra::LibraryEntry(const std::string& name, CSpectrum& out) {
  return ReadFrom(library.get(), name, out);
}

bool CHitSpectra::Query(const std::string& name, CSpectrum& out) {
  for (std::size_t i = 0; i < datasets.size(); ++i)
    if (i < prefixes.size() && name.starts_with(prefixes[i]) && ReadFrom(datasets[i].get(), name, out))
      return true;
  for (std::size_t i = 0; i < datasets.size(); ++i)
    if (ReadFrom(datasets[i].get(), name, out)) return true;
  return false;
}
