#include "fdr/GlycopeptideHit.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <unordered_map>

#include "run/QuietOutput.h"
#include "search/QueryBatch.h"
#include "spectrum/ChargeLimit.h"
#include "spectrum/SpecIO.h"

namespace {

// Masses by which a decoy glycan moves its Y ions: no glycan fragment, isotope
// step or common neutral loss lies within a product tolerance of them at
// fragment charges 1 to 3.
constexpr double kDecoyOffsets[] = {7.43, -9.37, 12.61, -13.79, 23.27, -21.53, 31.81, -4.61};

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) c == '\t' ? void(fields.emplace_back()) : fields.back().push_back(c);
  return fields;
}

double Number(const std::vector<std::string>& f, std::size_t i) {
  return i < f.size() ? std::atof(f[i].c_str()) : 0.0;
}

// The charge column; a damaged line's "1e30" or "2000000000" reads as 0
// (unknown), like a charge the scanner of the FDR stage would not take.
uint32_t Charge(const std::vector<std::string>& f) {
  const double value = Number(f, 4);
  return value >= 0.0 && value <= kMaxPrecursorCharge ? static_cast<uint32_t>(value) : 0;
}

// Counts the b and y ions of at least 3 residues in an ion list "b3+;y11++;Y2+;".
void CountInnerIons(const std::string& ions, int& innerB, int& innerY) {
  innerB = innerY = 0;
  for (std::size_t start = 0; start < ions.size();) {
    std::size_t end = ions.find(';', start);
    if (end == std::string::npos) end = ions.size();
    if (end - start >= 2 && (ions[start] == 'b' || ions[start] == 'y') &&
        std::atoi(ions.c_str() + start + 1) >= 3)
      ++(ions[start] == 'b' ? innerB : innerY);
    start = end + 1;
  }
}

}  // namespace

uint64_t StableHash(const std::string& text) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : text) h = (h ^ c) * 1099511628211ull;
  return h;
}


std::vector<CGlycopeptideHit> ParseResultLines(const std::vector<CFdrRecord>& records) {
  std::vector<CGlycopeptideHit> hits;
  hits.reserve(records.size());
  for (const CFdrRecord& record : records) {
    const std::vector<std::string> f = SplitTabs(record.line);
    auto text = [&](std::size_t i) { return i < f.size() ? f[i] : std::string(); };
    CGlycopeptideHit& hit = hits.emplace_back();
    hit.query = text(0);
    hit.queryMH = Number(f, 2);
    hit.peptideMH = Number(f, 3);
    hit.charge = Charge(f);
    hit.sequence = text(5);
    hit.modification = text(6);
    hit.searchGlycan = text(9);
    hit.glycoLoc = text(10);
    hit.searchScore = record.score;
    hit.decoy = record.isDecoy;
    hit.protein = text(23);
    hit.following = text(25);
    hit.proteinStart = static_cast<int32_t>(std::max(0.0, Number(f, 26)));
    CountInnerIons(text(21), hit.innerB, hit.innerY);
    // score, DPS, PS, peptide ions and share, Y ions and share, candidates
    hit.lineFeatures = {record.score, Number(f, 17), Number(f, 18), Number(f, 15), Number(f, 16),
                        Number(f, 13), Number(f, 14), std::log1p(std::max(0.0, Number(f, 12)))};
  }
  return hits;
}

std::vector<CGlycopeptideHit> ParseCandidateLines(const std::vector<std::string>& lines) {
  std::vector<CFdrRecord> records;
  records.reserve(lines.size());
  for (const std::string& line : lines) {
    const std::vector<std::string> f = SplitTabs(line);
    CFdrRecord& record = records.emplace_back();
    record.score = Number(f, 19);
    record.isDecoy = f.size() > 20 && f[20] == "D";
    record.line = line;
  }
  std::vector<CGlycopeptideHit> hits = ParseResultLines(records);
  for (CGlycopeptideHit& hit : hits) hit.candidateRank = 1;
  return hits;
}

std::vector<std::string> ReadCandidateLines(const std::string& path) {
  std::vector<std::string> lines;
  std::ifstream in(path, std::ios::binary);
  for (std::string line; std::getline(in, line);) lines.push_back(std::move(line));
  return lines;
}

std::vector<CGlycopeptideHit> ReadCandidateHits(const std::string& path) {
  return ParseCandidateLines(ReadCandidateLines(path));
}

void CallHit(CGlycopeptideHit& hit, const CSpectrum& prepared, const CSearchParam& settings,
             const std::vector<CGlycan>& glycanTable, CSiteRules* sites) {
  const double precursorTolerance = ToleranceInDa(settings.query_precursor_ion_tolerance,
                                                  settings.query_precursor_ion_unit, hit.queryMH);
  hit.call = CallGlycan(glycanTable, hit.queryMH - hit.peptideMH, precursorTolerance, hit.queryMH,
                        prepared.hasNeuAc, prepared.hasNeuGc);
  // The peaks by m/z: as given when they are (every hit of a spectrum shares
  // one sorting), else a sorted copy.
  auto byMass = [](const CPeak& a, const CPeak& b) { return a.mz < b.mz; };
  std::vector<CPeak> sortedCopy;
  const bool sorted = std::is_sorted(prepared.peaks.begin(), prepared.peaks.end(), byMass);
  if (!sorted) {
    sortedCopy = prepared.peaks;
    std::sort(sortedCopy.begin(), sortedCopy.end(), byMass);
  }
  const std::vector<CPeak>& byMz = sorted ? prepared.peaks : sortedCopy;
  // Y ions carry at most one charge less than the precursor.
  const uint32_t highest = hit.charge > 1 ? hit.charge - 1 : 1;
  const CProductTolerance productTolerance{settings.query_product_ion_tolerance,
                                           settings.query_product_ion_unit};
  hit.yIons = FindYIons(byMz, hit.peptideMH, highest, 0.0, productTolerance);
  const uint64_t h = StableHash(hit.query);
  const std::size_t offsets = sizeof kDecoyOffsets / sizeof kDecoyOffsets[0];
  hit.decoyYIons = FindYIons(byMz, hit.peptideMH, highest, kDecoyOffsets[h % offsets],
                             productTolerance);
  if (sites == nullptr) return;
  std::vector<CModification> modifications;
  ParseModifications(hit.modification, modifications);
  if (!sites->calculator.SetPeptide(hit.sequence, modifications)) return;
  const double glycanMass = hit.call.glycan != nullptr ? hit.call.glycan->mass
                                                       : hit.queryMH - hit.peptideMH;
  const int preferred = std::atoi(hit.glycoLoc.c_str());
  hit.ladder = ReadLadder(sites->calculator, byMz, highest, productTolerance);
  hit.fragmentIons = hit.ladder.InnerFound();
  hit.site = CallSite(CandidateSites(hit.sequence, hit.following, sites->acceptors), preferred,
                      sites->calculator, glycanMass, byMz, highest, productTolerance);
}

void AddSpectrumEvidence(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                         const std::vector<CGlycan>& glycanTable, CSiteRules* sites) {
  std::unordered_map<std::string, std::vector<std::size_t>> wanted;
  for (std::size_t i = 0; i < hits.size(); ++i) wanted[hits[i].query].push_back(i);
  CQueryBatch batch;
  batch.Init(settings);
  const bool highResolution =
      IsHighResolution(settings.query_product_ion_tolerance, settings.query_product_ion_unit);
  std::vector<CSpectrum> spectra;
  // The search has read these files and reported what was wrong with them.
  CQuietOutput quiet;
  for (const CDatasetFile& dataset : settings.query_datasets) {
    CSpecIO* reader = CreateSpecIO(dataset.format);
    if (reader == nullptr) continue;
    reader->OpenRead(dataset.pathname);
    for (;;) {
      spectra.clear();
      if (!reader->ReadNext(spectra)) break;
      if (spectra.empty()) continue;
      auto it = wanted.find(spectra.back().name);
      // The first spectrum of a name is the one the search reported first.
      if (it == wanted.end() || !batch.IsGlycoSpectrum(spectra.back())) continue;
      batch.PrepareSpectrum(spectra.back(), highResolution);
      std::sort(spectra.back().peaks.begin(), spectra.back().peaks.end(),
                [](const CPeak& a, const CPeak& b) { return a.mz < b.mz; });
      for (std::size_t i : it->second) CallHit(hits[i], spectra.back(), settings, glycanTable, sites);
      wanted.erase(it);
    }
    reader->CloseRead();
    delete reader;
  }
}

