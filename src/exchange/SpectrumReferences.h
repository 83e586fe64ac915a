#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "exchange/ExportedRun.h"
#include "run/Param.h"

// Where each query spectrum of a run lies: which query file, and the ID by
// which other tools find it there. The IDs follow the file's own kind:
//   MGF, DTAS  "index=N", the 0-based place of the block in the file
//   mzML       the spectrum's id attribute (its native ID)
//   mzXML      "scan=N", the scan number
//   DTA        "file=NAME", the DTA file
class CSpectrumReferences {
 public:
  // Lists the spectra of one query file (the next file number).
  void Add(const CDatasetFile& dataset);
  // Sets the hit's file number, spectrum ID and index. A spectrum that no listed
  // file holds (a DTA file, or a file changed since the run) is referred to
  // by its name, "file=NAME", in the first file.
  void Locate(CExportedHit& hit) const;

 private:
  struct CPlace {
    std::size_t file = 0;
    std::string id;
    int64_t index = -1;
  };
  std::map<std::string, CPlace> places;
  std::size_t files = 0;

  void AddMgf(const std::string& path);
  void AddMz(const std::string& path, bool mzml);
};

// The PSI-MS terms of a query file format: file format and spectrum ID format,
// each as accession and name.
struct CSpectraFormatTerms {
  const char* fileAccession;
  const char* fileName;
  const char* idAccession;
  const char* idName;
};
CSpectraFormatTerms SpectraFormatTerms(int32_t format);
