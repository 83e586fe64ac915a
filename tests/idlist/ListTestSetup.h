#pragma once
#include <string>
#include <vector>

#include "idlist/SpecListIO.h"
#include "run/Param.h"

namespace listtest {

// The settings every list test runs with: Deamidated[N] marks former sites,
// NXS and NXT are the sequons.
inline void UseDefaultSettings() {
  CConstructionParam& c = CParam::GetInstance().construction;
  c.modification_remove = "Deamidated[N]";
  c.N_glycan_motifs = {0, 1};
}

// Runs a reader of the given format on `path` and returns what it appended.
inline std::vector<CIdentifiedSpectrum> ReadList(int32_t format, const std::string& path) {
  std::vector<CIdentifiedSpectrum> list;
  CSpecListIO* reader = CreateSpecListIO(format);
  CIdentificationFile file;
  file.path = path;
  file.format = format;
  reader->Init(file);
  reader->Read(list);
  delete reader;
  return list;
}

}  // namespace listtest
