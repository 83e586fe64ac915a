#include "search/SpectralLibrary.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "run/Param.h"

void CSpectralLibrary::Init(const std::string& pathname, const std::string& massTablePath) {
  file.pathname = pathname;
  file.format = 0;
  minMz = 0.0;
  maxMz = 2500.0;
  maxCharge = 8;
  CMassTableFile tableFile;
  tableFile.filename = massTablePath;
  tableFile.Load(massTable);
  // The loader sorts too; sorting a sorted table again could only shuffle ties.
  if (!std::is_sorted(massTable.glycans.begin(), massTable.glycans.end(),
                      [](const CGlycan& a, const CGlycan& b) { return a.mass < b.mass; }))
    massTable.SortGlycans();
}

void CSpectralLibrary::Load() {
  spectra.clear();
  peakTable.Clear();
  reader = CreateSpecIO(file.format);
  if (reader != nullptr) {
    reader->OpenRead(file.pathname);
    spectra.reserve(reader->Count());
    // Entry by entry, so that only one entry's peak records exist at a time:
    // prepared, then moved into the compact table.
    while (reader->ReadNext(spectra)) {
      PrepareLibrarySpectrum(spectra.back(), minMz, maxMz);
      peakTable.Add(spectra.back());
    }
    reader->CloseRead();
    delete reader;
    reader = nullptr;
  }
  BuildIndex();
}

void PrepareLibrarySpectrum(CSpectrum& spectrum, double minMz, double maxMz) {
  // A damaged entry can carry "nan" or "inf" in a peak line; such peaks would
  // break every sort and sum below, so they go before anything else.
  std::vector<CPeak>& peaks = spectrum.peaks;
  peaks.erase(std::remove_if(peaks.begin(), peaks.end(),
                             [](const CPeak& p) {
                               return !std::isfinite(p.mz) || !std::isfinite(p.intensity);
                             }),
              peaks.end());
  spectrum.TrimMzRange(minMz, maxMz);
  uint32_t annotated = 0;
  double sum = 0.0;
  for (const CPeak& peak : peaks) {
    if (peak.type == kPeakB || peak.type == kPeakY || peak.type == kPeakYCore) ++annotated;
    sum += peak.intensity * peak.intensity;
  }
  spectrum.topPeakCount = annotated;
  const double norm = std::pow(sum, 0.5);
  // An entry whose intensities are all 0 stays as it is rather than turning into NaN.
  if (norm > 0.0 && std::isfinite(norm)) {
    const double factor = 1.0 / norm;
    for (CPeak& peak : peaks) peak.intensity *= factor;
  }
}

void CSpectralLibrary::BuildIndex() {
  // Spectra put in by hand (not loaded) move their peaks into the table here.
  const bool tableCurrent =
      peakTable.EntryCount() == spectra.size() &&
      std::all_of(spectra.begin(), spectra.end(), [](const CSpectrum& s) { return s.peaks.empty(); });
  if (!tableCurrent) {
    peakTable.Clear();
    for (CSpectrum& spectrum : spectra) peakTable.Add(spectrum);
  }
  peakTable.Attach(spectra);
  massIndex.assign(maxCharge + 1, {});
  for (auto& row : massIndex) row.reserve(512);
  for (std::size_t i = 0; i < spectra.size(); ++i) {
    const CSpectrum& spectrum = spectra[i];
    // Charges above maxCharge stay unindexed. So does an entry whose precursor
    // mass is not a finite number: it could never fit a glycan and would break
    // the sort of its row.
    if (spectrum.charge > maxCharge || !std::isfinite(spectrum.precursorMass)) continue;
    massIndex[spectrum.charge].push_back({spectrum.precursorMass, static_cast<uint32_t>(i)});
  }
  for (auto& row : massIndex)
    std::sort(row.begin(), row.end(), [](const CLibraryIndexEntry& a, const CLibraryIndexEntry& b) {
      return a.mass < b.mass;
    });
  // The rows searched, merged by mass; equal masses keep row and row order.
  mergedIndex.clear();
  for (uint32_t row = 1; row <= maxCharge && row < massIndex.size(); ++row)
    for (std::size_t rank = 0; rank < massIndex[row].size(); ++rank)
      mergedIndex.push_back({massIndex[row][rank].mass, row, static_cast<uint32_t>(rank)});
  std::sort(mergedIndex.begin(), mergedIndex.end(), [](const MergedEntry& a, const MergedEntry& b) {
    return a.mass < b.mass || (a.mass == b.mass && (a.row < b.row || (a.row == b.row && a.rank < b.rank)));
  });

  probesAll.clear();
  probesWithoutNeuAc.clear();
  largestGlycanMass = 0.0;
  for (auto it = massTable.glycans.rbegin(); it != massTable.glycans.rend(); ++it) {
    const double mass = it->mass;
    if (!std::isfinite(mass)) continue;
    largestGlycanMass = std::max(largestGlycanMass, std::fabs(mass));
    if (probesAll.empty() || probesAll.back() != mass) probesAll.push_back(mass);
    if (!it->hasNeuAc && (probesWithoutNeuAc.empty() || probesWithoutNeuAc.back() != mass))
      probesWithoutNeuAc.push_back(mass);
  }
  std::sort(probesAll.begin(), probesAll.end(), std::greater<double>());
  probesAll.erase(std::unique(probesAll.begin(), probesAll.end()), probesAll.end());
  std::sort(probesWithoutNeuAc.begin(), probesWithoutNeuAc.end(), std::greater<double>());
  probesWithoutNeuAc.erase(std::unique(probesWithoutNeuAc.begin(), probesWithoutNeuAc.end()),
                           probesWithoutNeuAc.end());
}

void CSpectralLibrary::TestEntry(const CSpectrum& query, double tolerance,
                                 const CLibraryIndexEntry& entry,
                                 std::vector<CSpectrum*>& candidates, CGlycanLists& glycanLists) {
  const double delta = query.precursorMass - entry.mass;
  if (delta < 0.0) return;  // no glycan for a negative mass
  std::size_t low = 0, high = 0;
  massTable.FindGlycanRange(delta, tolerance, low, high);
  for (std::size_t g = low; g < high; ++g) {
    const CGlycan& glycan = massTable.glycans[g];
    // A NeuAc glycan needs the query's NeuAc marker. NeuGc is deliberately not
    // tested: hasNeuGc is noted on both sides, but a NeuGc glycan passes for
    // every query, as it always has; a NeuGc test would change which glycans
    // existing libraries report.
    if (glycan.hasNeuAc && !query.hasNeuAc) continue;
    glycanLists.Add(&glycan);
  }
  if (glycanLists.OpenListEmpty()) return;
  glycanLists.Close();
  candidates.push_back(&spectra[entry.spectrumIndex]);
}

// A query whose precursor mass is not a finite number, or whose tolerance is
// negative or not a number, has no candidates (no glycan interval exists).
static bool SelectionPossible(double mass, double tolerance) {
  return std::isfinite(mass) && tolerance >= 0.0;
}

void CSpectralLibrary::SelectCandidatesByWalk(const CSpectrum& query,
                                              std::vector<CSpectrum*>& candidates,
                                              CGlycanLists& glycanLists) {
  const double mass = query.precursorMass;
  const double tolerance = CParam::GetInstance().QueryPrecursorTolerance(mass);
  if (!SelectionPossible(mass, tolerance)) return;
  const double upper = mass + tolerance;
  for (uint32_t row = 1; row <= maxCharge && row < massIndex.size(); ++row) {
    for (const CLibraryIndexEntry& entry : massIndex[row]) {
      if (entry.mass > upper) break;
      TestEntry(query, tolerance, entry, candidates, glycanLists);
    }
  }
}

// An entry of mass m fits glycan g when (Q - m) - t < g <= (Q - m) + t, each
// operation rounded. Instead of testing every lighter entry, each distinct
// glycan mass g looks up the entries with m in [Q - g - t - eps, Q - g + t + eps]
// by bisection of the rows merged by mass; eps is many orders of magnitude
// above the rounding error of either form, so the windows hold every entry
// that fits. The glycans are taken by descending mass, so the windows rise
// through the index; with one eps for the whole query each window end is a
// monotone function of g (rounding is monotone), and so positions already
// taken can be skipped. The entries hit are then put in row order and through
// the very test of the walk, which makes the result identical.
void CSpectralLibrary::SelectCandidates(const CSpectrum& query,
                                        std::vector<CSpectrum*>& candidates,
                                        CGlycanLists& glycanLists) {
  const double mass = query.precursorMass;
  const double tolerance = CParam::GetInstance().QueryPrecursorTolerance(mass);
  if (!SelectionPossible(mass, tolerance)) return;
  const std::vector<double>& probes = query.hasNeuAc ? probesAll : probesWithoutNeuAc;
  const double eps = 1e-9 * (std::fabs(mass) + tolerance + largestGlycanMass + 1.0);
  auto below = [](const MergedEntry& e, double value) { return e.mass < value; };
  auto above = [](double value, const MergedEntry& e) { return value < e.mass; };

  // Row << 32 | place in the row of every entry hit, a few hundred per query;
  // storage of each thread, which keeps its room from query to query.
  thread_local std::vector<uint64_t> hits;
  hits.clear();
  auto next = mergedIndex.begin();  // first position not taken yet
  for (double glycan : probes) {
    if (next == mergedIndex.end()) break;
    const double centre = mass - glycan;
    const double lowEnd = centre - tolerance - eps;
    const double highEnd = centre + tolerance + eps;
    auto first = std::lower_bound(next, mergedIndex.end(), lowEnd, below);
    auto last = std::upper_bound(first, mergedIndex.end(), highEnd, above);
    for (auto it = first; it != last; ++it) hits.push_back(uint64_t{it->row} << 32 | it->rank);
    next = last;
  }
  std::sort(hits.begin(), hits.end());
  for (uint64_t hit : hits)
    TestEntry(query, tolerance, massIndex[hit >> 32][hit & 0xFFFFFFFFu], candidates, glycanLists);
}
