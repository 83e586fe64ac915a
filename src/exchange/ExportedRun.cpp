#include "exchange/ExportedRun.h"

#include <array>
#include <cstdlib>
#include <fstream>

#include "exchange/SpectrumReferences.h"
#include "run/RunPaths.h"
#include "run/StringUtil.h"

namespace {

constexpr std::size_t kResultColumns = 27;

// Column numbers (0-based) of a result line.
enum : std::size_t {
  kQuery = 0, kLibrary, kQueryMH, kLibraryMH, kCharge, kSequence, kModification, kMassShift,
  kGlycanMass, kGlycanName, kGlycoLoc, kTargetDecoy = 20, kProtein = 23, kPreviousAA, kLastAA,
  kStart
};

std::vector<std::string> TabFields(std::string line) {
  if (!line.empty() && line.back() == '\r') line.pop_back();
  std::vector<std::string> fields;
  std::size_t from = 0;
  for (std::size_t tab; (tab = line.find('\t', from)) != std::string::npos; from = tab + 1)
    fields.push_back(line.substr(from, tab - from));
  fields.push_back(line.substr(from));
  return fields;
}

CExportedHit HitOfFields(std::vector<std::string> fields) {
  CExportedHit hit;
  hit.query = fields[kQuery];
  hit.sequence = fields[kSequence];
  ParseModifications(fields[kModification] == "-" ? "" : fields[kModification],
                     hit.modifications);
  hit.charge = static_cast<uint32_t>(std::strtoul(fields[kCharge].c_str(), nullptr, 10));
  hit.queryMH = std::strtod(fields[kQueryMH].c_str(), nullptr);
  hit.libraryMH = std::strtod(fields[kLibraryMH].c_str(), nullptr);
  hit.glycanMass = std::strtod(fields[kGlycanMass].c_str(), nullptr);
  hit.glycanName = fields[kGlycanName];
  hit.site = std::atoi(fields[kGlycoLoc].c_str());
  hit.decoy = !fields[kTargetDecoy].empty() && fields[kTargetDecoy][0] == 'D';
  hit.protein = fields[kProtein];
  hit.prevAA = fields[kPreviousAA];
  hit.lastAA = fields[kLastAA];
  hit.start = std::atoi(fields[kStart].c_str());
  hit.fields = std::move(fields);
  return hit;
}

// Adds the q-value columns to the hits of the same query (one line per query).
bool ReadQValues(const std::string& path, CExportedRun& run, std::string& error) {
  std::ifstream in(path, std::ios::binary);
  std::string line;
  if (!in || !std::getline(in, line)) {
    error = "the q-value file " + path + " can't be read";
    return false;
  }
  run.qvalueColumns = TabFields(line);
  std::map<std::string, std::size_t> byQuery;
  for (std::size_t i = 0; i < run.hits.size(); ++i) byQuery.emplace(run.hits[i].query, i);
  while (std::getline(in, line)) {
    const std::vector<std::string> fields = TabFields(line);
    const auto found = byQuery.find(fields[0]);
    if (found == byQuery.end()) continue;  // a line of no result line adds nothing
    for (std::size_t c = 1; c < fields.size() && c < run.qvalueColumns.size(); ++c)
      run.hits[found->second].qvalues[run.qvalueColumns[c]] = fields[c];
  }
  return true;
}

}  // namespace

std::string CExportedHit::PlainSequence() const {
  std::string plain = sequence;
  for (char& residue : plain)
    if (residue == 'J') residue = 'N';
  return plain;
}

bool ReadExportedRun(const CSearchParam& settings, CExportedRun& run, std::string& error) {
  run = CExportedRun();
  run.resultPath = settings.output_result_filename;
  std::ifstream in(run.resultPath, std::ios::binary);
  if (!in) {
    error = "there is no result file " + run.resultPath +
            ": the run has not finished (run it first)";
    return false;
  }
  std::string line;
  if (std::getline(in, line)) run.header = TabFields(line);
  for (std::size_t number = 2; std::getline(in, line); ++number) {
    if (line.empty() || line == "\r") continue;
    std::vector<std::string> fields = TabFields(line);
    if (fields.size() < kResultColumns) {
      error = run.resultPath + " line " + std::to_string(number) + " has " +
              std::to_string(fields.size()) + " columns; a result line has 27 or 28";
      return false;
    }
    run.hits.push_back(HitOfFields(std::move(fields)));
  }
  if (in.bad()) {
    error = "the result file " + run.resultPath + " can't be read";
    return false;
  }
  if (settings.glycopeptide_fdr) {
    const std::string qvalues = QValuePath(run.resultPath);
    if (std::ifstream(qvalues).good()) {
      run.qvaluePath = qvalues;
      if (!ReadQValues(qvalues, run, error)) return false;
    }
  }
  CSpectrumReferences references;
  for (const CDatasetFile& dataset : settings.query_datasets) references.Add(dataset);
  for (CExportedHit& hit : run.hits) references.Locate(hit);
  return true;
}

std::string GlycanCompositionText(const std::string& countsName) {
  static const std::array<const char*, 5> kStored = {"Hex", "HexNAc", "NeuAc", "NeuGc", "dHex"};
  static const std::array<std::size_t, 5> kPrinted = {1, 0, 4, 2, 3};  // HexNAc Hex dHex NeuAc NeuGc
  std::vector<std::string> counts;
  Split(countsName, "-", counts);
  std::string text;
  for (std::size_t place : kPrinted) {
    const int count = place < counts.size() ? std::atoi(counts[place].c_str()) : 0;
    if (count > 0) text += std::string(kStored[place]) + "(" + std::to_string(count) + ")";
  }
  return text;
}
