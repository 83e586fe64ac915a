#pragma once
#include <gtest/gtest.h>

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

// One line per record: "name charge sequence modifications", then, when the
// reader knows the protein, " @accession:start prev last", then each site.
inline std::string Summary(const CIdentifiedSpectrum& r) {
  std::string text = r.spectrumName + " " + std::to_string(r.charge) + " " + r.sequence + " " +
                     ModificationsToString(r.modifications);
  if (!r.proteinAC.empty())
    text += " @" + r.proteinAC + ":" + std::to_string(r.startPosition) + " " + r.prevAA + " " +
            r.lastAA;
  for (const CGlycoSite& site : r.motifs) text += " " + std::to_string(site.position) + site.sequon;
  return text;
}

inline std::vector<std::string> Summaries(const std::vector<CIdentifiedSpectrum>& list) {
  std::vector<std::string> lines;
  for (const CIdentifiedSpectrum& r : list) lines.push_back(Summary(r));
  return lines;
}

// ReadList with standard output captured into `output`.
inline std::vector<CIdentifiedSpectrum> ReadListCaptured(int32_t format, const std::string& path,
                                                        std::string& output) {
  testing::internal::CaptureStdout();
  std::vector<CIdentifiedSpectrum> list = ReadList(format, path);
  output = testing::internal::GetCapturedStdout();
  return list;
}

// `text` with each occurrence of `path` shown as LIST.
inline std::string HidePath(std::string text, const std::string& path) {
  for (std::size_t at; !path.empty() && (at = text.find(path)) != std::string::npos;)
    text.replace(at, path.size(), "LIST");
  return text;
}

}  // namespace listtest
