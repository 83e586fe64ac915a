#include "fdr/GlycopeptideQValues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <numeric>
#include <tuple>
#include <unordered_map>

#include "fdr/QValueFiles.h"
#include "fdr/QValues.h"
#include "fdr/Rescorer.h"
#include "molecule/MassTable.h"
#include "run/Motif.h"

const std::vector<std::string> kGlycopeptideFeatureNames = {
    "score",      "dps",         "ps",        "pepIons",      "pepIntShare",
    "yIons",      "yIntShare",   "lnCandidates", "yCoreLevels", "yCoreIntensity",
    "sialicContradictions", "absMassErrorPpm", "isotope", "massErrorZ2",
    "innerB",     "innerY",      "innerCoverage", "fragmentIons", "fragmentShare"};

namespace {

// The features that say which peptide matched: b and y ions, except the two
// shortest of each kind. A reversed decoy never shares the C-terminal K or R
// of a tryptic query, while every target of the same ending does; counted,
// y1 and y2 would make chance targets outscore chance decoys. The Y ions and
// the scores built on them are left out: they confirm the peptide's mass,
// which a library neighbour of about the same mass shares.
// Places in kGlycopeptideFeatureNames: lnCandidates, massErrorZ2, innerB,
// innerY, innerCoverage, and the b and y ions of the sequence found in the
// query (fragmentIons, fragmentShare), which tell apart library neighbours
// whose spectra share most peaks, such as two residues swapped.
constexpr std::size_t kPeptideFeatures[] = {7, 13, 14, 15, 16, 17, 18};

// A squared standardised mass error above this says no more than this does.
constexpr double kLargestErrorZ2 = 25.0;

constexpr uint32_t kFolds = 3;

// Peptide forms closer in mass than this are the same mass to the precursor.
constexpr double kSameMassDa = 0.02;

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

std::vector<double> CombinedQValues(const std::vector<double>& peptideQ,
                                    const std::vector<double>& glycanQ,
                                    const std::vector<bool>& lost, std::vector<double> scores) {
  // Lines in order of their larger separate q-value, then their sum, then the
  // score; equal keys share a rank, which the competition treats as a tie.
  const std::size_t n = peptideQ.size();
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), 0);
  for (double& s : scores)
    if (std::isnan(s)) s = -INFINITY;
  auto key = [&](std::size_t i) {
    return std::make_tuple(std::max(peptideQ[i], glycanQ[i]), peptideQ[i] + glycanQ[i], -scores[i]);
  };
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return key(a) < key(b); });
  std::vector<double> rank(n);
  for (std::size_t k = 0; k < n; ++k)
    rank[order[k]] = k > 0 && key(order[k]) == key(order[k - 1]) ? rank[order[k - 1]]
                                                                 : -static_cast<double>(k);
  return TargetDecoyQValues(rank, lost);
}

// The chance that each line is wrong by the decoy competition alone: lines in
// order of their combined q-value, the expected wrong lines among the best j
// are j times the j-th q-value; the local chance is the growth of that count,
// fitted not to fall with the rank (pool adjacent violators). A glycan that
// lost to its decoy (q 1) is wrong.
static std::vector<double> LocalErrorRates(const std::vector<CGlycopeptideHit>& hits) {
  const std::size_t n = hits.size();
  std::vector<std::size_t> byQ(n);
  std::iota(byQ.begin(), byQ.end(), 0);
  std::stable_sort(byQ.begin(), byQ.end(),
                   [&](std::size_t a, std::size_t b) { return hits[a].combinedQ < hits[b].combinedQ; });
  struct CBlock {
    double sum;
    std::size_t count;
  };
  std::vector<CBlock> blocks;
  double before = 0.0;  // wrong lines expected among the best j - 1
  for (std::size_t j = 1; j <= n; ++j) {
    const double expected = std::max(before, static_cast<double>(j) * hits[byQ[j - 1]].combinedQ);
    blocks.push_back({expected - before, 1});
    before = expected;
    while (blocks.size() > 1) {
      const CBlock last = blocks.back(), previous = blocks[blocks.size() - 2];
      if (previous.sum * static_cast<double>(last.count) <= last.sum * static_cast<double>(previous.count))
        break;
      blocks.pop_back();
      blocks.back() = {previous.sum + last.sum, previous.count + last.count};
    }
  }
  std::vector<double> local(n, 1.0);
  std::size_t j = 0;
  for (const CBlock& block : blocks) {
    const double rate = std::clamp(block.sum / static_cast<double>(block.count), 0.0, 1.0);
    for (std::size_t k = 0; k < block.count; ++k, ++j)
      local[byQ[j]] = hits[byQ[j]].combinedQ >= 1.0 ? 1.0 : rate;
  }
  return local;
}

void AddIsotopeRivals(std::vector<CGlycopeptideHit>& hits) {
  std::vector<bool> confident;
  for (const CGlycopeptideHit& hit : hits) confident.push_back(hit.combinedQ <= kConfidentQ);
  const CMassErrorModel model = FitMassErrors(hits, confident);
  // Lines in order of their own risk; each then carries the highest combined
  // decoy estimate so far plus the mean chance, so far, that the line is
  // wrong in a way no decoy models: the other isotope reading was the right
  // one, or the glycan sits on another site.
  std::vector<std::size_t> order(hits.size());
  std::iota(order.begin(), order.end(), 0);
  std::vector<double> rival(hits.size());
  for (std::size_t i = 0; i < hits.size(); ++i)
    rival[i] = 1.0 - (1.0 - IsotopeRivalProbability(hits[i].call, model)) *
                         (1.0 - hits[i].sameMassRival) * hits[i].site.GroupProbability();
  // The decoy estimate is of sets (the lines down to a cut); its growth with
  // the rank is each line's own chance of being wrong by the decoys. With the
  // other chances it gives the line's chance of being wrong; in order of it,
  // the q-value of the best k lines is the mean of theirs.
  const std::vector<double> local = LocalErrorRates(hits);
  std::vector<double> error(hits.size());
  for (std::size_t i = 0; i < hits.size(); ++i) error[i] = 1.0 - (1.0 - local[i]) * (1.0 - rival[i]);
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return error[a] < error[b]; });
  double errorSum = 0.0;
  for (std::size_t k = 0; k < order.size(); ++k) {
    errorSum += error[order[k]];
    hits[order[k]].glycopeptideQ = std::min(1.0, errorSum / static_cast<double>(k + 1));
  }
  double running = 1.0;
  for (std::size_t k = order.size(); k-- > 0;) {
    running = std::min(running, hits[order[k]].glycopeptideQ);
    hits[order[k]].glycopeptideQ = running;
  }
  // A glycan that lost to its decoy is no identification, whatever its rank.
  for (CGlycopeptideHit& hit : hits)
    if (hit.combinedQ >= 1.0) hit.glycopeptideQ = 1.0;
}

void KeepBestCandidates(std::vector<CGlycopeptideHit>& hits, std::vector<double>& scores) {
  // The candidates of a query share its name and precursor; the reported one
  // keeps its place and yields it only to a better one.
  std::unordered_map<std::string, std::size_t> reportedAt;
  auto key = [&](const CGlycopeptideHit& hit) { return hit.query + '\t' + std::to_string(hit.queryMH); };
  std::vector<std::vector<std::size_t>> members(hits.size());
  for (std::size_t i = 0; i < hits.size(); ++i)
    if (hits[i].candidateRank == 0 && reportedAt.emplace(key(hits[i]), i).second) members[i].push_back(i);
  // The candidates of a query without a result line (found only with the
  // precursor one isotope lower) gather under the first of them.
  for (std::size_t i = 0; i < hits.size(); ++i) {
    if (hits[i].candidateRank == 0) continue;
    const auto [found, first] = reportedAt.emplace(key(hits[i]), i);
    members[found->second].push_back(i);
  }
  auto form = [&](std::size_t i) {
    std::string sequence = hits[i].sequence;
    std::replace(sequence.begin(), sequence.end(), 'J', 'N');
    return sequence + '\t' + hits[i].modification;
  };
  auto sameMass = [&](std::size_t a, std::size_t b) {
    return std::fabs(hits[a].peptideMH - hits[b].peptideMH) < kSameMassDa && form(a) != form(b);
  };
  std::vector<CGlycopeptideHit> kept;
  std::vector<double> keptScores;
  const auto groups = std::count_if(members.begin(), members.end(), [](const auto& m) { return !m.empty(); });
  kept.reserve(groups);
  keptScores.reserve(groups);
  for (std::size_t r = 0; r < hits.size(); ++r) {
    if (members[r].empty()) continue;
    std::size_t best = r;
    for (std::size_t m : members[r])
      if (scores[m] > scores[best]) best = m;
    // Forms of the same mass share precursor, Y ions and glycan: the b and y
    // ions that one has and the other lacks decide between them.
    double strongest = 0.0;
    const std::size_t byScore = best;
    for (std::size_t m : members[r]) {
      if (!sameMass(m, byScore)) continue;
      const double odds = LadderLogOdds(hits[m].ladder, hits[byScore].ladder);
      if (odds > strongest) strongest = odds, best = m;
    }
    // The chance that another form is the right one: by the scores read as
    // log-odds, and among forms of the same mass by their ions.
    double others = 0.0, same = 0.0;
    for (std::size_t m : members[r]) {
      if (m == best || form(m) == form(best)) continue;
      others += std::exp(std::min(50.0, scores[m] - scores[best]));
      if (sameMass(m, best)) same += std::exp(std::min(50.0, -LadderLogOdds(hits[best].ladder, hits[m].ladder)));
    }
    keptScores.push_back(scores[best]);
    kept.push_back(std::move(hits[best]));
    kept.back().candidateRival = others / (1.0 + others);
    kept.back().sameMassRival = same / (1.0 + same);
  }
  hits = std::move(kept);
  scores = std::move(keptScores);
}

bool EstimateGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits) {
  CRescoreInput input;
  input.foldCount = kFolds;
  std::vector<double> fallback;
  std::vector<bool> decoys;
  std::vector<double> reported;  // the search scores of the result lines' candidates
  for (const CGlycopeptideHit& hit : hits) {
    fallback.push_back(hit.searchScore);
    reported.push_back(hit.candidateRank == 0 ? hit.searchScore : NAN);
    decoys.push_back(hit.decoy);
  }
  // The mass errors of right matches gather near a centre, those of chance
  // matches spread over the whole tolerance: a feature once the centre is
  // known from the lines that the search score alone puts at 1 %.
  std::vector<bool> confident;
  for (double q : TargetDecoyQValues(reported, decoys)) confident.push_back(q <= kConfidentQ);
  for (std::size_t i = 0; i < hits.size(); ++i) confident[i] = confident[i] && hits[i].candidateRank == 0;
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
    hit.features.insert(hit.features.end(), {static_cast<double>(hit.fragmentIons),
                                             hit.fragmentIons / innerLadder});
    // A damaged line can hold "nan" or "inf"; one such value would spoil the
    // model for every line.
    for (double& value : hit.features)
      if (!std::isfinite(value)) value = 0.0;
    std::vector<double>& row = input.features.emplace_back();
    for (std::size_t j : kPeptideFeatures) row.push_back(hit.features[j]);
    input.decoys.push_back(hit.decoy);
    input.folds.push_back(static_cast<uint32_t>(StableHash(hit.query) % kFolds));
    // The model learns from the reported candidates, whose targets are
    // mostly right at the top; the other candidates are mostly wrong targets.
    input.scoredOnly.push_back(hit.candidateRank != 0);
  }
  bool learned = false;
  std::vector<double> scores = CrossValidatedScores(input, fallback, learned);
  KeepBestCandidates(hits, scores);
  std::vector<bool> peptideDecoys;
  for (const CGlycopeptideHit& hit : hits) peptideDecoys.push_back(hit.decoy);
  // A second model adds how close the best other peptide form came (as
  // Percolator's delta score): a chance match of a peptide the library lacks
  // has several neighbours of about its mass scoring alike, and so does a
  // pair of library neighbours that the spectrum hardly tells apart.
  CRescoreInput chosen;
  chosen.foldCount = kFolds;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    std::vector<double>& row = chosen.features.emplace_back();
    for (std::size_t j : kPeptideFeatures) row.push_back(hits[i].features[j]);
    const double rival = std::clamp(hits[i].candidateRival, 1e-6, 1.0 - 1e-6);
    row.push_back(std::log(rival / (1.0 - rival)));
    chosen.decoys.push_back(hits[i].decoy);
    chosen.folds.push_back(static_cast<uint32_t>(StableHash(hits[i].query) % kFolds));
  }
  bool learnedAgain = false;
  scores = CrossValidatedScores(chosen, scores, learnedAgain);
  std::vector<double> glycanScores;
  std::vector<bool> glycanDecoys;
  for (std::size_t i = 0; i < hits.size(); ++i) {
    hits[i].score = scores[i];
    // Target against decoy glycan, one each per spectrum; the decoy wins ties.
    const double target = hits[i].GlycanScore(), decoy = hits[i].DecoyGlycanScore();
    glycanDecoys.push_back(decoy >= target);
    glycanScores.push_back(std::max(target, decoy));
  }
  const std::vector<double> peptideQ = TargetDecoyQValues(scores, peptideDecoys);
  const std::vector<double> glycanQ = TargetDecoyQValues(glycanScores, glycanDecoys);
  std::vector<bool> lost;
  for (std::size_t i = 0; i < hits.size(); ++i) lost.push_back(hits[i].decoy || glycanDecoys[i]);
  std::vector<double> combinedQ = CombinedQValues(peptideQ, glycanQ, lost, scores);
  // Wrong peptides that no decoy models (absent forms matched to a library
  // neighbour) make the sum of the two separate estimates the safer bound
  // wherever decoys are many; it adds no decoy of its own, so a small run
  // keeps the single one of the competition.
  const std::vector<double> plainPeptideQ = TargetDecoyQValues(scores, peptideDecoys, 0.0);
  const std::vector<double> plainGlycanQ = TargetDecoyQValues(glycanScores, glycanDecoys, 0.0);
  for (std::size_t i = 0; i < hits.size(); ++i)
    combinedQ[i] = std::min(1.0, std::max(combinedQ[i], plainPeptideQ[i] + plainGlycanQ[i]));
  for (std::size_t i = 0; i < hits.size(); ++i) {
    CGlycopeptideHit& hit = hits[i];
    hit.peptideQ = peptideQ[i];
    hit.glycanQ = glycanDecoys[i] ? 1.0 : glycanQ[i];
    // A glycan that lost to its decoy is no identification, whatever its rank.
    hit.combinedQ = glycanDecoys[i] ? 1.0 : combinedQ[i];
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
  CSiteRules sites;
  sites.calculator.massTable = table;
  // The sequons of the construction's motifs; NXS and NXT when the run
  // builds no library and so names none.
  const std::string acceptors =
      MotifAcceptorLetters(CParam::GetInstance().construction.GetMotifRegex());
  if (!acceptors.empty()) sites.acceptors = acceptors;
  AddSpectrumEvidence(hits, settings, table.glycans, &sites);
}

double FinishGlycopeptideQValues(std::vector<CGlycopeptideHit>& hits, const std::string& resultPath) {
  EstimateGlycopeptideQValues(hits);
  WriteQValueFiles(hits, resultPath);
  std::cout << "\t\t" << QValuePath(resultPath) << "\n    ---- Complete!\n" << std::endl;
  double lowest = 1.0;
  for (const CGlycopeptideHit& hit : hits)
    if (!hit.decoy) lowest = std::min(lowest, hit.glycopeptideQ);
  return lowest;
}

double RunGlycopeptideQValues(const CSearchParam& settings, const std::vector<CFdrRecord>& records) {
  std::cout << ">> Estimating glycopeptide q-values." << std::endl;
  CMassTable table;
  // The search's next best candidates of each line follow the lines.
  const std::string candidatePath = CandidatePath(settings.output_result_filename);
  std::vector<CGlycopeptideHit> hits = ResultAndCandidateHits(records, candidatePath);
  AddEvidenceFromDatasets(hits, settings, table);
  const double lowest = FinishGlycopeptideQValues(hits, settings.output_result_filename);
  std::remove(candidatePath.c_str());
  return lowest;
}
