#include "exchange/SpectrumReferences.h"

#include <fstream>
#include <memory>

#include "spectrum/InflatedFile.h"
#include "spectrum/MzHandler.h"
#include "spectrum/MzSpectrumName.h"

namespace {

enum : int32_t { kDta = 1, kMgf = 2, kDtas = 3, kMzml = 4, kMzxml = 5 };

}  // namespace

void CSpectrumReferences::Add(const CDatasetFile& dataset) {
  if (dataset.format == kMgf || dataset.format == kDtas) AddMgf(dataset.pathname);
  if (dataset.format == kMzml || dataset.format == kMzxml)
    AddMz(dataset.pathname, dataset.format == kMzml);
  ++files;  // DTA files are named by their own name: nothing to list
}

// MGF blocks are named by their TITLE up to its first blank, as the reader names them.
void CSpectrumReferences::AddMgf(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string line;
  int64_t blocks = 0;
  bool open = false;
  while (std::getline(in, line)) {
    if (line.rfind("BEGIN IONS", 0) == 0) {
      ++blocks;
      open = true;
    } else if (open && line.rfind("TITLE=", 0) == 0) {
      std::string name = line.substr(6);
      name = name.substr(0, name.find_first_of(" \t\r"));
      places.insert_or_assign(name, CPlace{files, "index=" + std::to_string(blocks - 1), blocks - 1});
      open = false;
    }
  }
}

// The spectra are named by the mzML and mzXML reader's own rule.
void CSpectrumReferences::AddMz(const std::string& path, bool mzml) {
  CInflatedFile file;
  if (!file.Open(path)) return;
  std::unique_ptr<CMzHandler> handler = mzml ? MakeMzmlHandler() : MakeMzxmlHandler();
  CXmlEventStream stream(*handler);
  const std::string stem = FileStem(path);
  handler->Attach(stream, [&](const CMzRecord& record) {
    if (record.msLevel != 2) return;
    const std::string id = mzml ? record.nativeId : "scan=" + std::to_string(record.scanNumber);
    places.insert_or_assign(MzSpectrumName(record, stem), CPlace{files, id, record.position});
  });
  std::string buffer(1 << 16, '\0');
  for (bool fine = true; fine;) {
    const std::size_t got = file.ReadNext(buffer.data(), buffer.size());
    fine = stream.Feed(buffer.data(), got, got == 0) && got != 0;
  }
}

void CSpectrumReferences::Locate(CExportedHit& hit) const {
  const auto found = places.find(hit.query);
  if (found == places.end()) {
    hit.spectraFile = 0;
    hit.spectrumId = "file=" + hit.query;
    hit.spectrumIndex = -1;
    return;
  }
  hit.spectraFile = found->second.file;
  hit.spectrumId = found->second.id;
  hit.spectrumIndex = found->second.index;
}

CSpectraFormatTerms SpectraFormatTerms(int32_t format) {
  switch (format) {
    case kDta:
      return {"MS:1000613", "DTA format", "MS:1000775", "single peak list nativeID format"};
    case kMzml:
      return {"MS:1000584", "mzML format", "MS:1001530", "mzML unique identifier"};
    case kMzxml:
      return {"MS:1000566", "ISB mzXML format", "MS:1000776", "scan number only nativeID format"};
    default:
      return {"MS:1001062", "Mascot MGF format", "MS:1000774", "multiple peak list nativeID format"};
  }
}
