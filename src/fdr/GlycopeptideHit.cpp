#include "fdr/GlycopeptideHit.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string_view>
#include <thread>
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

// The tab-separated fields of a line, as views into it.
std::vector<std::string_view> SplitTabs(std::string_view line) {
  std::vector<std::string_view> fields;
  fields.reserve(28);
  for (std::size_t start = 0;;) {
    const std::size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab == std::string_view::npos ? std::string_view::npos : tab - start));
    if (tab == std::string_view::npos) return fields;
    start = tab + 1;
  }
}

// A number field read as atof reads it; 0 when the line has no such field.
double Number(const std::vector<std::string_view>& f, std::size_t i) {
  if (i >= f.size()) return 0.0;
  char text[64];
  if (f[i].size() >= sizeof text) return std::atof(std::string(f[i]).c_str());
  f[i].copy(text, f[i].size());
  text[f[i].size()] = '\0';
  return std::atof(text);
}

// The charge column; a damaged line's "1e30" or "2000000000" reads as 0
// (unknown), like a charge the scanner of the FDR stage would not take.
uint32_t Charge(const std::vector<std::string_view>& f) {
  const double value = Number(f, 4);
  return value >= 0.0 && value <= kMaxPrecursorCharge ? static_cast<uint32_t>(value) : 0;
}

// A whole number read as atoi reads it, held to the range of int where atoi
// would overflow.
int WholeNumber(const char* text) {
  const long value = std::strtol(text, nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

// Counts the b and y ions of at least 3 residues in an ion list "b3+;y11++;Y2+;".
void CountInnerIons(std::string_view ions, int& innerB, int& innerY) {
  innerB = innerY = 0;
  for (std::size_t start = 0; start < ions.size();) {
    std::size_t end = ions.find(';', start);
    if (end == std::string::npos) end = ions.size();
    if (end - start >= 2 && (ions[start] == 'b' || ions[start] == 'y')) {
      char length[16] = {};  // the ion's residues, read as atoi reads them
      ions.copy(length, std::min(end - start - 1, sizeof length - 1), start + 1);
      if (WholeNumber(length) >= 3) ++(ions[start] == 'b' ? innerB : innerY);
    }
    start = end + 1;
  }
}

}  // namespace

uint64_t StableHash(const std::string& text) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : text) h = (h ^ c) * 1099511628211ull;
  return h;
}

namespace {

// The hit of one result line split into its fields.
void FillHit(CGlycopeptideHit& hit, const std::vector<std::string_view>& f, double score, bool decoy) {
  auto text = [&](std::size_t i) { return i < f.size() ? std::string(f[i]) : std::string(); };
  hit.query = text(0);
  hit.queryMH = Number(f, 2);
  hit.peptideMH = Number(f, 3);
  hit.charge = Charge(f);
  hit.sequence = text(5);
  hit.modification = text(6);
  hit.searchGlycan = text(9);
  hit.glycoLoc = text(10);
  hit.searchScore = score;
  hit.decoy = decoy;
  hit.protein = text(23);
  hit.following = text(25);
  // A damaged start ("inf", "1e30") reads as unknown, as a missing one does.
  const double start = Number(f, 26);
  hit.proteinStart = start >= 1.0 && start <= INT32_MAX ? static_cast<int32_t>(start) : 0;
  CountInnerIons(f.size() > 21 ? f[21] : std::string_view(), hit.innerB, hit.innerY);
  // score, DPS, PS, peptide ions and share, Y ions and share, candidates
  hit.lineFeatures = {score, Number(f, 17), Number(f, 18), Number(f, 15), Number(f, 16),
                      Number(f, 13), Number(f, 14), std::log1p(std::max(0.0, Number(f, 12)))};
}

}  // namespace

namespace {

// The hits of result lines into the first records.size() of `hits`.
void FillResultHits(const std::vector<CFdrRecord>& records, std::vector<CGlycopeptideHit>& hits) {
  for (std::size_t i = 0; i < records.size(); ++i)
    FillHit(hits[i], SplitTabs(records[i].line), records[i].score, records[i].isDecoy);
}

}  // namespace

std::vector<CGlycopeptideHit> ParseResultLines(const std::vector<CFdrRecord>& records) {
  std::vector<CGlycopeptideHit> hits(records.size());
  FillResultHits(records, hits);
  return hits;
}

std::vector<CGlycopeptideHit> ResultAndCandidateHits(const std::vector<CFdrRecord>& records,
                                                     const std::string& candidatePath) {
  std::vector<std::string> lines;
  std::ifstream in(candidatePath, std::ios::binary);
  for (std::string line; std::getline(in, line);) lines.push_back(std::move(line));
  // Sized once: a list of hundreds of thousands of hits that grows by
  // doubling copies and faults in far more memory than it keeps.
  std::vector<CGlycopeptideHit> hits(records.size() + lines.size());
  FillResultHits(records, hits);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    CGlycopeptideHit& hit = hits[records.size() + i];
    const std::vector<std::string_view> f = SplitTabs(lines[i]);
    FillHit(hit, f, Number(f, 19), f.size() > 20 && f[20] == "D");
    hit.candidateRank = 1;
  }
  return hits;
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
  const int preferred = WholeNumber(hit.glycoLoc.c_str());
  hit.ladder = ReadLadder(sites->calculator, byMz, highest, productTolerance);
  hit.fragmentIons = hit.ladder.InnerFound();
  hit.site = CallSite(CandidateSites(hit.sequence, hit.following, sites->acceptors), preferred,
                      sites->calculator, glycanMass, byMz, highest, productTolerance);
}

namespace {

// Query spectra read for the evidence, each with the hits that name it.
struct CSpectrumChunk {
  std::vector<CSpectrum> spectra;
  std::vector<std::vector<std::size_t>> hitsOf;
};

// Prepares the spectra of a chunk as the search did and calls their hits, on
// `threads` threads started here and joined when the returned threads are
// destroyed, while the caller reads on: each hit depends on its own spectrum
// alone, so the evidence is the same for every thread count.
std::vector<std::jthread> StartChunk(CSpectrumChunk& chunk, std::vector<CGlycopeptideHit>& hits,
                                     const CQueryBatch& batch, bool highResolution,
                                     const CSearchParam& settings, const std::vector<CGlycan>& glycanTable,
                                     const CSiteRules* sites, unsigned threads) {
  auto work = [&chunk, &hits, &batch, highResolution, &settings, &glycanTable, sites, threads](unsigned first) {
    std::optional<CSiteRules> own;  // the calculator holds the peptide being called
    if (sites != nullptr) own = *sites;
    for (std::size_t j = first; j < chunk.spectra.size(); j += threads) {
      CSpectrum& spectrum = chunk.spectra[j];
      batch.PrepareSpectrum(spectrum, highResolution);
      std::sort(spectrum.peaks.begin(), spectrum.peaks.end(),
                [](const CPeak& a, const CPeak& b) { return a.mz < b.mz; });
      for (std::size_t i : chunk.hitsOf[j])
        CallHit(hits[i], spectrum, settings, glycanTable, own ? &*own : nullptr);
    }
  };
  std::vector<std::jthread> workers;
  for (unsigned t = 0; t < threads; ++t) workers.emplace_back(work, t);
  return workers;
}

constexpr std::size_t kChunkSpectra = 512;

}  // namespace

void AddSpectrumEvidence(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                         const std::vector<CGlycan>& glycanTable, CSiteRules* sites) {
  std::unordered_map<std::string, std::vector<std::size_t>> wanted;
  for (std::size_t i = 0; i < hits.size(); ++i) wanted[hits[i].query].push_back(i);
  CQueryBatch batch;
  batch.Init(settings);
  const bool highResolution =
      IsHighResolution(settings.query_product_ion_tolerance, settings.query_product_ion_unit);
  // More threads than spectra in a chunk would have nothing to do.
  const unsigned threads = std::min<unsigned>(
      settings.threads > 0 ? settings.threads : std::max(1u, std::thread::hardware_concurrency()),
      kChunkSpectra);
  std::vector<CSpectrum> spectra;
  // One chunk is filled while the one before is called.
  CSpectrumChunk chunks[2];
  std::size_t filling = 0;
  std::vector<std::jthread> calling;
  auto hand = [&] {
    calling.clear();  // joins: the other chunk is free again
    CSpectrumChunk& full = chunks[filling];
    filling = 1 - filling;
    chunks[filling].spectra.clear();
    chunks[filling].hitsOf.clear();
    calling = StartChunk(full, hits, batch, highResolution, settings, glycanTable, sites, threads);
  };
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
      chunks[filling].spectra.push_back(std::move(spectra.back()));
      chunks[filling].hitsOf.push_back(std::move(it->second));
      wanted.erase(it);
      if (chunks[filling].spectra.size() == kChunkSpectra) hand();
    }
    reader->CloseRead();
    delete reader;
  }
  hand();
  calling.clear();
}
