#include "fdr/GlycopeptideQValues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <unordered_map>

#include "fdr/QValues.h"
#include "fdr/Rescorer.h"
#include "molecule/MassTable.h"
#include "run/NumberText.h"
#include "run/Process.h"
#include "search/QueryBatch.h"
#include "spectrum/SpecIO.h"

namespace {

// Masses by which a decoy glycan moves its Y ions: no glycan fragment, isotope
// step or common neutral loss lies within a product tolerance of them at
// fragment charges 1 to 3.
constexpr double kDecoyOffsets[] = {7.43, -9.37, 12.61, -13.79, 23.27, -21.53, 31.81, -4.61};
constexpr uint32_t kFolds = 3;

const char* const kFeatureNames[] = {
    "score",      "dps",         "ps",        "pepIons",      "pepIntShare",
    "yIons",      "yIntShare",   "lnCandidates", "yCoreLevels", "yCoreIntensity",
    "sialicContradictions", "absMassErrorPpm", "isotope", "massErrorZ2",
    "innerB",     "innerY",      "innerCoverage"};

// The features that say which peptide matched: b and y ions, except the two
// shortest of each kind. A reversed decoy never shares the C-terminal K or R
// of a tryptic query, while every target of the same ending does; counted,
// y1 and y2 would make chance targets outscore chance decoys. The Y ions and
// the scores built on them are left out: they confirm the peptide's mass,
// which a library neighbour of about the same mass shares.
constexpr std::size_t kPeptideFeatures[] = {7, 13, 14, 15, 16};

// A squared standardised mass error above this says no more than this does.
constexpr double kLargestErrorZ2 = 25.0;

// FNV-1a: a hash that is the same on every platform, for folds and decoys.
uint64_t StableHash(const std::string& text) {
  uint64_t h = 1469598103934665603ull;
  for (unsigned char c : text) h = (h ^ c) * 1099511628211ull;
  return h;
}

std::vector<std::string> SplitTabs(const std::string& line) {
  std::vector<std::string> fields(1);
  for (char c : line) c == '\t' ? void(fields.emplace_back()) : fields.back().push_back(c);
  return fields;
}

double Number(const std::vector<std::string>& f, std::size_t i) {
  return i < f.size() ? std::atof(f[i].c_str()) : 0.0;
}

// Writes `text` to a temporary file beside `path` and renames it into place,
// so that the file is either complete or not there. Ends the run on failure.
void WriteFileAtomically(const std::string& path, const std::string& text) {
  const std::string partial = path + ".part";
  std::FILE* file = std::fopen(partial.c_str(), "wb");
  bool failed = file == nullptr;
  if (file != nullptr) {
    failed = std::fwrite(text.data(), 1, text.size(), file) != text.size();
    failed = std::fclose(file) != 0 || failed;
  }
  if (!failed) failed = std::rename(partial.c_str(), path.c_str()) != 0;
  if (failed) {
    std::remove(partial.c_str());
    std::cout << "Glycopeptide q-value file write error: failed to write file " << path
              << std::endl;
    ExitProgram(1);
  }
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
    hit.charge = static_cast<uint32_t>(std::max(0.0, Number(f, 4)));
    hit.sequence = text(5);
    hit.modification = text(6);
    hit.searchGlycan = text(9);
    hit.glycoLoc = text(10);
    hit.searchScore = record.score;
    hit.decoy = record.isDecoy;
    hit.protein = text(23);
    CountInnerIons(text(21), hit.innerB, hit.innerY);
    // score, DPS, PS, peptide ions and share, Y ions and share, candidates
    hit.lineFeatures = {record.score, Number(f, 17), Number(f, 18), Number(f, 15), Number(f, 16),
                        Number(f, 13), Number(f, 14), std::log1p(std::max(0.0, Number(f, 12)))};
  }
  return hits;
}

void CallHit(CGlycopeptideHit& hit, const CSpectrum& prepared, const CSearchParam& settings,
             const std::vector<CGlycan>& glycanTable) {
  const double precursorTolerance = ToleranceInDa(settings.query_precursor_ion_tolerance,
                                                  settings.query_precursor_ion_unit, hit.queryMH);
  hit.call = CallGlycan(glycanTable, hit.queryMH - hit.peptideMH, precursorTolerance, hit.queryMH,
                        prepared.hasNeuAc, prepared.hasNeuGc);
  std::vector<CPeak> byMz = prepared.peaks;
  std::sort(byMz.begin(), byMz.end(), [](const CPeak& a, const CPeak& b) { return a.mz < b.mz; });
  // Y ions carry at most one charge less than the precursor.
  const uint32_t highest = hit.charge > 1 ? hit.charge - 1 : 1;
  const CProductTolerance productTolerance{settings.query_product_ion_tolerance,
                                           settings.query_product_ion_unit};
  hit.yIons = FindYIons(byMz, hit.peptideMH, highest, 0.0, productTolerance);
  const uint64_t h = StableHash(hit.query);
  const std::size_t offsets = sizeof kDecoyOffsets / sizeof kDecoyOffsets[0];
  hit.decoyYIons = FindYIons(byMz, hit.peptideMH, highest, kDecoyOffsets[h % offsets],
                             productTolerance);
  hit.spectrumFound = true;
}

void AddSpectrumEvidence(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                         const std::vector<CGlycan>& glycanTable) {
  std::unordered_map<std::string, std::vector<std::size_t>> wanted;
  for (std::size_t i = 0; i < hits.size(); ++i) wanted[hits[i].query].push_back(i);
  CQueryBatch batch;
  batch.Init(settings);
  const bool highResolution =
      IsHighResolution(settings.query_product_ion_tolerance, settings.query_product_ion_unit);
  std::vector<CSpectrum> spectra;
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
      for (std::size_t i : it->second) CallHit(hits[i], spectra.back(), settings, glycanTable);
      wanted.erase(it);
    }
    reader->CloseRead();
    delete reader;
  }
}

CMassErrorModel FitMassErrors(const std::vector<CGlycopeptideHit>& hits,
                              const std::vector<bool>& confident) {
  std::vector<double> errors;
  for (std::size_t i = 0; i < hits.size(); ++i)
    if (confident[i] && !hits[i].decoy && hits[i].call.glycan != nullptr && hits[i].call.isotope == 0)
      errors.push_back(hits[i].call.massErrorPpm);
  CMassErrorModel model;
  if (errors.size() < kMinimalErrorSample) return model;
  auto median = [](std::vector<double> v) {
    std::nth_element(v.begin(), v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2), v.end());
    return v[v.size() / 2];
  };
  model.centre = median(errors);
  for (double& e : errors) e = std::fabs(e - model.centre);
  model.spread = std::max(kSmallestSpreadPpm, 1.4826 * median(errors));
  return model;
}

double IsotopeRivalProbability(const CGlycanCall& call, const CMassErrorModel& model) {
  if (call.glycan == nullptr || std::isnan(call.rivalErrorPpm)) return 0.0;
  auto likelihood = [&](double errorPpm, int isotope) {
    const double z = (errorPpm - model.centre) / model.spread;
    return (isotope == 1 ? kIsotopeErrorPrior : 1.0 - kIsotopeErrorPrior) * std::exp(-0.5 * z * z);
  };
  const double chosen = likelihood(call.massErrorPpm, call.isotope);
  const double rival = likelihood(call.rivalErrorPpm, 1 - call.isotope);
  return chosen + rival > 0.0 ? rival / (chosen + rival) : 0.5;
}

void AddIsotopeRivals(std::vector<CGlycopeptideHit>& hits) {
  std::vector<bool> confident;
  for (const CGlycopeptideHit& hit : hits) confident.push_back(hit.peptideQ + hit.glycanQ <= kConfidentQ);
  const CMassErrorModel model = FitMassErrors(hits, confident);
  // Lines in order of their own risk; each then carries the larger of the
  // two decoy estimates so far plus the mean chance, so far, that the other
  // isotope reading was the right one.
  std::vector<std::size_t> order(hits.size());
  std::iota(order.begin(), order.end(), 0);
  std::vector<double> rival(hits.size());
  for (std::size_t i = 0; i < hits.size(); ++i)
    rival[i] = IsotopeRivalProbability(hits[i].call, model);
  auto base = [&](std::size_t i) { return std::min(1.0, hits[i].peptideQ + hits[i].glycanQ); };
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return base(a) + rival[a] < base(b) + rival[b];
  });
  double highestBase = 0.0, rivalSum = 0.0;
  for (std::size_t k = 0; k < order.size(); ++k) {
    highestBase = std::max(highestBase, base(order[k]));
    rivalSum += rival[order[k]];
    hits[order[k]].glycopeptideQ = std::min(1.0, highestBase + rivalSum / static_cast<double>(k + 1));
  }
  double running = 1.0;
  for (std::size_t k = order.size(); k-- > 0;) {
    running = std::min(running, hits[order[k]].glycopeptideQ);
    hits[order[k]].glycopeptideQ = running;
  }
}

bool EstimateGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits) {
  CRescoreInput input;
  input.foldCount = kFolds;
  std::vector<double> fallback;
  std::vector<bool> decoys;
  for (const CGlycopeptideHit& hit : hits) {
    fallback.push_back(hit.searchScore);
    decoys.push_back(hit.decoy);
  }
  // The mass errors of right matches gather near a centre, those of chance
  // matches spread over the whole tolerance: a feature once the centre is
  // known from the lines that the search score alone puts at 1 %.
  std::vector<bool> confident;
  for (double q : TargetDecoyQValues(fallback, decoys)) confident.push_back(q <= kConfidentQ);
  const CMassErrorModel errors = FitMassErrors(hits, confident);
  for (CGlycopeptideHit& hit : hits) {
    hit.features = hit.lineFeatures;
    hit.features.resize(8, 0.0);
    hit.features.insert(hit.features.end(),
                        {static_cast<double>(hit.yIons.levels), hit.yIons.intensity,
                         static_cast<double>(hit.call.contradictions),
                         std::fabs(hit.call.massErrorPpm), static_cast<double>(hit.call.isotope)});
    const double z = (hit.call.massErrorPpm - errors.centre) / errors.spread;
    hit.features.push_back(hit.call.glycan != nullptr ? std::min(kLargestErrorZ2, z * z) : kLargestErrorZ2);
    const double innerLadder = std::max(1.0, 2.0 * (static_cast<double>(hit.sequence.size()) - 3.0));
    hit.features.insert(hit.features.end(), {static_cast<double>(hit.innerB),
                                             static_cast<double>(hit.innerY),
                                             (hit.innerB + hit.innerY) / innerLadder});
    // A damaged line can hold "nan" or "inf"; one such value would spoil the
    // model for every line.
    for (double& value : hit.features)
      if (!std::isfinite(value)) value = 0.0;
    std::vector<double>& row = input.features.emplace_back();
    for (std::size_t j : kPeptideFeatures) row.push_back(hit.features[j]);
    input.decoys.push_back(hit.decoy);
    input.folds.push_back(static_cast<uint32_t>(StableHash(hit.query) % kFolds));
  }
  bool learned = false;
  const std::vector<double> scores = CrossValidatedScores(input, fallback, learned);
  std::vector<double> glycanScores;
  std::vector<bool> glycanDecoys;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    hits[i].score = scores[i];
    // Target against decoy glycan, one each per spectrum; the decoy wins ties.
    const double target = hits[i].GlycanScore(), decoy = hits[i].DecoyGlycanScore();
    glycanDecoys.push_back(decoy >= target);
    glycanScores.push_back(std::max(target, decoy));
  }
  const std::vector<double> peptideQ = TargetDecoyQValues(scores, input.decoys);
  const std::vector<double> glycanQ = TargetDecoyQValues(glycanScores, glycanDecoys);
  for (std::size_t i = 0; i < hits.size(); ++i) {
    CGlycopeptideHit& hit = hits[i];
    hit.peptideQ = peptideQ[i];
    hit.glycanQ = glycanDecoys[i] ? 1.0 : glycanQ[i];
  }
  AddIsotopeRivals(hits);
  return learned;
}

std::string QValuePath(const std::string& resultPath, const std::string& extension) {
  const std::size_t separator = LastSeparator(resultPath);
  const std::size_t dot = resultPath.rfind('.');
  const bool hasExtension = dot != std::string::npos &&
                            (separator == std::string::npos || dot > separator + 1);
  const std::string stem = hasExtension ? resultPath.substr(0, dot) : resultPath;
  const std::string ownExtension = hasExtension ? resultPath.substr(dot) : std::string();
  return stem + "_qvalues" + (extension.empty() ? ownExtension : extension);
}

void WriteQValueFiles(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath) {
  std::vector<std::size_t> order(hits.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (hits[a].glycopeptideQ != hits[b].glycopeptideQ)
      return hits[a].glycopeptideQ < hits[b].glycopeptideQ;
    return hits[a].score > hits[b].score;
  });
  std::string text =
      "QuerySpecName\tSequence\tModification\tGlycanName\tGlycoLoc\tTarget/DecoyHit\tScore\t"
      "PeptideQ\tGlycanQ\tGlycopeptideQ\tIsobaricGlycans\tSearchGlycanName\tIsotopeShift\t"
      "GlycanMassErrorPpm\n";
  std::string pin = "SpecId\tLabel\tScanNr";
  for (const char* name : kFeatureNames) (pin += '\t') += name;
  pin += "\tPeptide\tProteins\n";
  for (std::size_t rank = 0; rank < order.size(); ++rank) {
    const CGlycopeptideHit& hit = hits[order[rank]];
    std::string isobaric;
    for (const CGlycan* glycan : hit.call.isobaric) (isobaric += isobaric.empty() ? "" : ";") += glycan->name;
    text += hit.query + '\t' + hit.sequence + '\t' + hit.modification + '\t' + hit.GlycanName() +
            '\t' + hit.glycoLoc + '\t' + (hit.decoy ? "D" : "T") + '\t';
    for (double value : {hit.score, hit.peptideQ, hit.glycanQ, hit.glycopeptideQ}) {
      AppendFixed(text, value, 6);
      text += '\t';
    }
    text += isobaric + '\t' + hit.searchGlycan + '\t';
    AppendSigned(text, hit.call.isotope);
    text += '\t';
    AppendFixed(text, hit.call.massErrorPpm, 2);
    text += '\n';

    pin += hit.query + '\t' + (hit.decoy ? "-1" : "1") + '\t';
    AppendUnsigned(pin, rank + 1);
    for (double value : hit.features) {
      pin += '\t';
      AppendFixed(pin, value, 6);
    }
    pin += "\t-." + hit.sequence + "[" + hit.GlycanName() + "].-\t" +
           (hit.protein.empty() ? std::string("-") : hit.protein) + '\n';
  }
  WriteFileAtomically(QValuePath(resultPath), text);
  WriteFileAtomically(QValuePath(resultPath, ".pin"), pin);
}

void RunGlycopeptideQValues(const CSearchParam& settings, const std::vector<CFdrRecord>& records) {
  std::cout << ">> Estimating glycopeptide q-values." << std::endl;
  CMassTable table;
  CMassTableFile tableFile;
  tableFile.filename = kMassTableFilename;
  tableFile.Load(table);
  table.SortGlycans();
  std::vector<CGlycopeptideHit> hits = ParseResultLines(records);
  AddSpectrumEvidence(hits, settings, table.glycans);
  EstimateGlycopeptideQValues(hits);
  WriteQValueFiles(hits, settings.output_result_filename);
  std::cout << "\t\t" << QValuePath(settings.output_result_filename) << "\n    ---- Complete!\n"
            << std::endl;
}
