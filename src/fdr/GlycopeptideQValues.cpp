#include "fdr/GlycopeptideQValues.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <numeric>

#include "fdr/QValueFiles.h"
#include "fdr/QValues.h"
#include "fdr/Rescorer.h"
#include "molecule/MassTable.h"

const std::vector<std::string> kGlycopeptideFeatureNames = {
    "score",      "dps",         "ps",        "pepIons",      "pepIntShare",
    "yIons",      "yIntShare",   "lnCandidates", "yCoreLevels", "yCoreIntensity",
    "sialicContradictions", "absMassErrorPpm", "isotope", "massErrorZ2",
    "innerB",     "innerY",      "innerCoverage"};

namespace {

// The features that say which peptide matched: b and y ions, except the two
// shortest of each kind. A reversed decoy never shares the C-terminal K or R
// of a tryptic query, while every target of the same ending does; counted,
// y1 and y2 would make chance targets outscore chance decoys. The Y ions and
// the scores built on them are left out: they confirm the peptide's mass,
// which a library neighbour of about the same mass shares.
// Places in kGlycopeptideFeatureNames: lnCandidates, massErrorZ2, innerB,
// innerY, innerCoverage.
constexpr std::size_t kPeptideFeatures[] = {7, 13, 14, 15, 16};

// A squared standardised mass error above this says no more than this does.
constexpr double kLargestErrorZ2 = 25.0;

constexpr uint32_t kFolds = 3;

}  // namespace

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

void AddEvidenceFromDatasets(std::vector<CGlycopeptideHit>& hits, const CSearchParam& settings,
                             CMassTable& table) {
  CMassTableFile tableFile;
  tableFile.filename = settings.mass_table_filename;
  tableFile.Load(table);
  table.SortGlycans();
  AddSpectrumEvidence(hits, settings, table.glycans);
}

void FinishGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath) {
  EstimateGlycopeptideQValues(hits);
  WriteQValueFiles(hits, resultPath);
  std::cout << "\t\t" << QValuePath(resultPath) << "\n    ---- Complete!\n" << std::endl;
}

void RunGlycopeptideQValues(const CSearchParam& settings, const std::vector<CFdrRecord>& records) {
  std::cout << ">> Estimating glycopeptide q-values." << std::endl;
  CMassTable table;
  std::vector<CGlycopeptideHit> hits = ParseResultLines(records);
  AddEvidenceFromDatasets(hits, settings, table);
  FinishGlycopeptideQValues(hits, settings.output_result_filename);
}
