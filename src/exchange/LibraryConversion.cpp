#include "exchange/LibraryConversion.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "construction/IdentifiedAnalyzer.h"
#include "construction/LibraryBuilder.h"
#include "exchange/MspNames.h"
#include "exchange/MspLibraryEntry.h"
#include "exchange/MspReader.h"
#include "idlist/SpecListIO.h"
#include "molecule/MassTable.h"
#include "run/SafeOutputFile.h"
#include "run/StringUtil.h"
#include "spectrum/QuolibIO.h"

namespace {

// The items of Mods=: "2/4,C,CAM/7,M,Oxidation" as NIST comments write it, or
// "2(4,C,CAM)(7,M,Oxidation)" as in NIST names; none for "0".
std::vector<std::string> ModificationItems(const std::string& text) {
  std::vector<std::string> items;
  if (text.find('(') == std::string::npos) {
    Split(text, "/", items);
    if (!items.empty()) items.erase(items.begin());  // the count
    return items;
  }
  for (std::size_t open = text.find('('); open != std::string::npos; open = text.find('(', open + 1)) {
    const std::size_t close = text.find(')', open);
    items.push_back(text.substr(open + 1, close == std::string::npos ? std::string::npos : close - open - 1));
  }
  return items;
}

// The peptide of a record as an identification list would give it; false
// (with the reason) when a modification is not in the mass table.
bool RecordPeptide(const CMspRecord& record, const CMassTable& table, const CSiteMark& mark,
                   CIdentifiedSpectrum& peptide, std::string& problem) {
  const std::size_t slash = record.name.find('/');
  peptide.sequence = record.name.substr(0, slash);
  const auto charge = record.comment.find("Charge");
  peptide.charge = slash != std::string::npos ? std::atoi(record.name.c_str() + slash + 1)
                   : charge != record.comment.end() ? std::atoi(charge->second.c_str()) : 0;
  const auto mods = record.comment.find("Mods");
  std::vector<std::string> items;
  if (mods != record.comment.end()) items = ModificationItems(mods->second);
  for (const std::string& item : items) {
    std::vector<std::string> parts;
    Split(item, ",", parts);
    if (parts.size() != 3 || parts[1].size() != 1) {
      problem = "has a Mods= item that is not position,residue,name: " + item;
      return false;
    }
    const int32_t position = std::atoi(parts[0].c_str()) + 1;
    const std::string name = parts[2] == mark.mspName
                                 ? mark.tableName
                                 : TableModificationName(table, parts[2], parts[1][0]);
    if (name.empty()) {
      problem = "has the unknown modification " + parts[2] + " (on " + parts[1] +
                "), which the mass table lacks";
      return false;
    }
    peptide.modifications.push_back({position, name});
  }
  SortModifications(peptide.modifications);
  const auto value = [&](const char* key) {
    const auto found = record.comment.find(key);
    return found == record.comment.end() ? std::string() : found->second;
  };
  peptide.proteinAC = value("Protein");
  peptide.startPosition = std::atoi(value("Start").c_str());
  peptide.prevAA = value("PrevAA");
  peptide.lastAA = value("LastAA");
  // NIST's Fullname=R.PEPTIDE.L gives one residue on each side.
  const std::string full = value("Fullname");
  if (peptide.prevAA.empty() && peptide.lastAA.empty() && full.size() > 4 && full[1] == '.' &&
      full[full.size() - 2] == '.') {
    if (full.front() != '-') peptide.prevAA = full.substr(0, 1);
    if (full.back() != '-') peptide.lastAA = full.substr(full.size() - 1);
  }
  return true;
}

// The library's entries in the order of the file (target, then its decoy),
// which the name index of the reader does not keep.
class CQuolibInFileOrder : public CQuolibIO {
 public:
  std::vector<std::string> Names() const {
    std::vector<std::pair<std::streamoff, std::string>> places;
    for (const auto& [name, place] : index) places.emplace_back(place, name);
    std::sort(places.begin(), places.end());
    std::vector<std::string> names;
    for (auto& place : places) names.push_back(std::move(place.second));
    return names;
  }
};

CSpectrum MeasuredSpectrum(const CMspRecord& record) {
  CSpectrum spectrum;
  for (const CMspPeak& line : record.peaks) {
    CPeak peak;
    peak.mz = line.mz;
    peak.intensity = line.intensity;
    spectrum.peaks.push_back(peak);
  }
  return spectrum;
}

}  // namespace

bool ConvertQuolibToMsp(const std::string& in, const std::string& out, const CSiteMark& mark,
                        const CMassTable& table) {
  CQuolibInFileOrder library;
  library.OpenRead(in);
  CSafeOutputFile file;
  if (!file.Open(out, std::ios::binary)) {
    std::cout << "[Error]: can't write " << out << std::endl;
    return false;
  }
  std::vector<CSpectrum> entries;
  std::size_t written = 0;
  for (const std::string& name : library.Names()) {
    if (!library.ReadByName(name, entries)) continue;
    WriteMspRecord(entries.back(), mark, table, file.Stream());
    entries.clear();
    ++written;
  }
  library.CloseRead();
  if (!file.Commit()) {
    std::cout << "[Error]: writing " << out << " failed" << std::endl;
    return false;
  }
  std::cout << "Converted " << written << " library entries to " << out << std::endl;
  return true;
}

bool ConvertMspToQuolib(const std::string& in, const std::string& out,
                        const CConstructionParam& settings, const CSiteMark& mark,
                        CMspImportCounts& counts) {
  CLibraryBuilder builder;
  builder.param = settings;
  CMassTableFile tableFile;
  tableFile.filename = settings.mass_table_filename;
  tableFile.Load(builder.calculator.massTable);
  const CMassTable& table = builder.calculator.massTable;
  builder.library.OpenWrite(out);
  if (!builder.library.WriteSucceeded()) return false;

  // Records of other origin are spectra: as in construction, one peptide per
  // peptide ion, its spectra merged into a consensus, numbered in order.
  CIdentifiedAnalyzer analyzer;
  analyzer.param = settings;
  std::vector<CIdentifiedSpectrum> measured;
  std::vector<CSpectrum> measuredSpectra;
  CSpectrum target, decoy;
  std::map<std::string, double> targetMasses;
  bool opened = false;
  counts.faulty = ReadMspFile(in, [&](const CMspRecord& record) {
    ++counts.records;
    CIdentifiedSpectrum peptide;
    std::string problem;
    if (!RecordPeptide(record, table, mark, peptide, problem)) {
      ++counts.unknownModification;
      std::cout << "[Warning]: " << in << ": " << record.Label() << " " << problem << "; skipped"
                << std::endl;
      return;
    }
    const auto origin = record.comment.find(kMspOriginKey);
    if (origin != record.comment.end() && origin->second == kMspOrigin) {
      // A library entry written here, target or decoy: read back as it was.
      if (!RebuildLibraryEntry(record, peptide, builder, targetMasses, target)) {
        ++counts.noSite;
        return;
      }
      builder.library.WriteOne(target);
      ++counts.entries;
      return;
    }
    const auto decoyFlag = record.comment.find("Decoy");
    if (decoyFlag != record.comment.end() && decoyFlag->second == "1") {
      ++counts.decoys;  // a decoy of another origin: each target gets its own
      return;
    }
    if (!MarkGlycosites(peptide, peptide.lastAA.empty() ? "00" : peptide.lastAA)) {
      ++counts.noSite;
      return;
    }
    peptide.spectrumName = std::to_string(measuredSpectra.size());
    measured.push_back(peptide);
    measuredSpectra.push_back(MeasuredSpectrum(record));
  }, opened);
  if (!opened) {
    std::cout << "[Error]: can't read the MSP library " << in << std::endl;
    builder.library.CloseWrite();
    return false;
  }

  analyzer.BuildPeptideList(measured);
  analyzer.SplitMultiSite();
  for (std::size_t i = 1; i <= analyzer.peptides.size(); ++i) {
    const CIdentifiedPeptide& peptide = analyzer.peptides[i - 1];
    std::vector<CSpectrum>& spectra = analyzer.spectra;
    spectra.clear();
    for (const CSpectrumRef& ref : peptide.spectra)
      spectra.push_back(measuredSpectra[std::stoul(ref.spectrumName)]);
    MergeIntoConsensus(spectra, settings);
    target = spectra[0];
    target.name = std::to_string(i);
    CopyPeptideFields(peptide, target);
    builder.FinishEntry(target, decoy);
    builder.WriteEntryPair(target, decoy);
  }
  builder.library.CloseWrite();
  counts.entries += builder.counts.entriesWritten;
  return builder.library.WriteSucceeded();
}
