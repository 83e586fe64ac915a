// Glycopeptide q-values: the conservative target-decoy q-values, the glycan
// call with its isobaric group and isotope reading, the Y-ion evidence, the
// cross-validated rescoring and the names of the files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "fdr/GlycanCall.h"
#include "fdr/GlycopeptideHit.h"
#include "fdr/GlycopeptideQValues.h"
#include "fdr/QValueFiles.h"
#include "fdr/QValues.h"
#include "fdr/Rescorer.h"
#include "molecule/MassTable.h"

namespace {

TEST(GlycopeptideQValues, ConservativeQValuesOnSmallScoreLists) {
  // 20 targets, a target tied with a decoy, a target, a decoy without a score.
  std::vector<double> scores;
  std::vector<bool> decoys;
  for (int i = 0; i < 20; ++i) scores.push_back(100.0 - i), decoys.push_back(false);
  scores.insert(scores.end(), {80.0, 80.0, 79.0, NAN});
  decoys.insert(decoys.end(), {false, true, false, true});
  const std::vector<double> q = TargetDecoyQValues(scores, decoys);
  EXPECT_DOUBLE_EQ(q[0], 1.0 / 20);   // one decoy added: never below 1 / targets
  EXPECT_DOUBLE_EQ(q[19], 1.0 / 20);
  // The tied target does not pass before its decoy (1 / 21): it gets the best
  // estimate at or below the tie, 2 / 22 at 79.
  EXPECT_DOUBLE_EQ(q[20], 2.0 / 22);
  EXPECT_DOUBLE_EQ(q[21], 2.0 / 22);
  EXPECT_DOUBLE_EQ(q[22], 2.0 / 22);
  EXPECT_DOUBLE_EQ(q[23], 3.0 / 22);  // a score that is no number ranks last

  struct Case {
    std::vector<double> scores;
    std::vector<bool> decoys;
    std::vector<double> expected;
  };
  const std::vector<Case> cases = {
      {{2.0, 1.0}, {false, false}, {0.5, 0.5}},              // two chance hits, no decoy
      {{3.0, 2.0, 1.0}, {true, true, true}, {1.0, 1.0, 1.0}},  // all decoys
      {{5.0, 5.0, 5.0, 5.0}, {false, false, false, true}, {2.0 / 3, 2.0 / 3, 2.0 / 3, 2.0 / 3}},
      {{}, {}, {}}};
  for (const Case& c : cases) EXPECT_EQ(TargetDecoyQValues(c.scores, c.decoys), c.expected);
}

// Glycans as the mass table holds them, sorted by mass.
std::vector<CGlycan> Table(const std::vector<std::string>& names) {
  const double hex = 162.052824, hexNAc = 203.079373, neuAc = 291.095417, neuGc = 307.090331,
               dHex = 146.057909;
  CMassTable table;
  for (const std::string& name : names) {
    int n[5];
    std::sscanf(name.c_str(), "%d-%d-%d-%d-%d", &n[0], &n[1], &n[2], &n[3], &n[4]);
    table.AddGlycan(name, n[0] * hex + n[1] * hexNAc + n[2] * neuAc + n[3] * neuGc + n[4] * dHex);
  }
  table.SortGlycans();
  return table.glycans;
}

TEST(GlycopeptideQValues, GlycanCallNamesIsobaricNeuAcNeuGcAndTheIsotopeReading) {
  // Hex + NeuAc = NeuGc + dHex; 2 dHex weigh 1.0204 more than NeuAc.
  const std::vector<CGlycan> table = Table({"5-4-1-0-0", "4-4-0-1-1", "5-4-0-0-2", "5-4-0-0-0"});
  auto mass = [&](const std::string& name) {
    return std::find_if(table.begin(), table.end(), [&](const CGlycan& g) { return g.name == name; })->mass;
  };
  struct Case {
    double delta;
    bool neuAc, neuGc;
    std::set<std::string> group;  // the chosen glycan and its isobaric ones
    std::string chosen;           // when the markers decide
    int isotope;
  };
  const double sialylated = mass("5-4-1-0-0");
  const std::vector<Case> cases = {
      {sialylated, true, false, {"5-4-1-0-0"}, "5-4-1-0-0", 0},
      {sialylated, false, true, {"4-4-0-1-1"}, "4-4-0-1-1", 0},
      {sialylated, false, false, {"5-4-1-0-0", "4-4-0-1-1"}, "", 0},  // no marker seen
      {sialylated, true, true, {"5-4-1-0-0", "4-4-0-1-1"}, "", 0},    // both present
      // The precursor one isotope too high: NeuAc would read as 2 dHex.
      {sialylated + kIsotopeStep, true, false, {"5-4-1-0-0"}, "5-4-1-0-0", 1},
      {sialylated + kIsotopeStep, false, false, {"5-4-0-0-2"}, "5-4-0-0-2", 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.delta) + (c.neuAc ? " NeuAc" : "") + (c.neuGc ? " NeuGc" : ""));
    const CGlycanCall call = CallGlycan(table, c.delta, 0.03, 3000.0, c.neuAc, c.neuGc);
    ASSERT_NE(call.glycan, nullptr);
    std::set<std::string> group = {call.glycan->name};
    for (const CGlycan* g : call.isobaric) group.insert(g->name);
    EXPECT_EQ(group, c.group);
    if (!c.chosen.empty()) {
      EXPECT_EQ(call.glycan->name, c.chosen);
    }
    EXPECT_EQ(call.isotope, c.isotope);
  }
  // Only the mass error tells NeuGc from Hex + dHex one isotope apart.
  const std::vector<CGlycan> twins = Table({"4-4-0-1-0", "5-4-0-0-1"});
  const CGlycanCall call = CallGlycan(twins, twins[0].mass, 0.03, 3000.0, false, true);
  EXPECT_EQ(call.glycan->name, "4-4-0-1-0");
  EXPECT_TRUE(std::isnan(call.rivalErrorPpm));  // the other reading lacks the NeuGc marker
  EXPECT_EQ(CallGlycan(twins, 100.0, 0.03, 3000.0, false, false).glycan, nullptr);
}

TEST(GlycopeptideQValues, YIonsAtThePeptideMassAndNotAtADecoyOffset) {
  const double peptide = 1500.0, proton = 1.00727646688;
  // Y0 and Y1 singly charged, Y2 doubly charged.
  std::vector<CPeak> peaks(4);
  peaks[0].mz = 800.0, peaks[0].intensity = 0.5;  // noise
  peaks[1].mz = (peptide + 406.1588 + proton) / 2 + 0.01, peaks[1].intensity = 0.25;
  peaks[2].mz = peptide, peaks[2].intensity = 0.5;
  peaks[3].mz = peptide + 203.0794, peaks[3].intensity = 0.5;
  std::sort(peaks.begin(), peaks.end(), [](const CPeak& a, const CPeak& b) { return a.mz < b.mz; });
  const CYIonEvidence found = FindYIons(peaks, peptide, 2, 0.0, {0.02, 0});
  EXPECT_EQ(found.levels, 3);
  EXPECT_DOUBLE_EQ(found.intensity, 1.25);
  EXPECT_EQ(FindYIons(peaks, peptide, 1, 0.0, {0.02, 0}).levels, 2);  // no charge 2 tried
  EXPECT_EQ(FindYIons(peaks, peptide, 2, 7.43, {0.02, 0}).levels, 0);
  // 10 ppm reach 0.015 at m/z 1500 but only 0.0095 at m/z 954: Y2++ (0.01 off) is lost.
  EXPECT_EQ(FindYIons(peaks, peptide, 2, 0.0, {10.0, 1}).levels, 2);
  // A damaged charge is tried only as far as any spectrum's, not for minutes.
  EXPECT_EQ(FindYIons(peaks, peptide, 4000000000u, 0.0, {0.02, 0}).levels, 3);
}

TEST(GlycopeptideQValues, DamagedChargesReadAsUnknownAndTheSecondReadingIsQuiet) {
  std::vector<CFdrRecord> records(3);
  // Charge in column 5, the peptide's start in the protein in column 27.
  const std::string rest = std::string(20, '\t');
  records[0].line = "q1\tL\t2000\t1000\t1e30\tPEPJTK" + rest + "\tinf";
  records[1].line = "q2\tL\t2000\t1000\t-2\tPEPJTK" + rest + "\t1e30";
  records[2].line = "q3\tL\t2000\t1000\t3\tPEPJTK" + rest + "\t17";
  std::vector<CGlycopeptideHit> hits = ParseResultLines(records);
  EXPECT_EQ(hits[0].charge, 0u);
  EXPECT_EQ(hits[1].charge, 0u);
  EXPECT_EQ(hits[2].charge, 3u);
  EXPECT_EQ(hits[0].proteinStart, 0);
  EXPECT_EQ(hits[1].proteinStart, 0);
  EXPECT_EQ(hits[2].proteinStart, 17);
  // The search has reported what is wrong with the query files already.
  CSearchParam settings;
  settings.query_datasets = {{"/nonexistent/queries.mgf", 2}};
  testing::internal::CaptureStdout();
  AddSpectrumEvidence(hits, settings, {});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(GlycopeptideQValues, RescoringLearnsOnOtherFoldsAndNeedsEnoughDecoys) {
  CRescoreInput input;
  std::vector<double> fallback;
  for (int i = 0; i < 300; ++i) {
    const bool decoy = i % 3 == 0;
    // Feature 1 separates decoys; feature 0 is noise that the search score follows.
    input.features.push_back({static_cast<double>(i % 7), decoy ? 0.1 * (i % 5) : 1.0 + 0.1 * (i % 5)});
    input.decoys.push_back(decoy);
    input.folds.push_back(static_cast<uint32_t>(i % 3 == 0 ? (i / 3) % 3 : i % 3));
    fallback.push_back(i % 7);
  }
  bool learned = false;
  const std::vector<double> scores = CrossValidatedScores(input, fallback, learned);
  ASSERT_TRUE(learned);
  double lowestTarget = INFINITY, highestDecoy = -INFINITY;
  for (std::size_t i = 0; i < scores.size(); ++i)
    (input.decoys[i] ? highestDecoy : lowestTarget) =
        input.decoys[i] ? std::max(highestDecoy, scores[i]) : std::min(lowestTarget, scores[i]);
  EXPECT_GT(lowestTarget, highestDecoy);

  // Too few decoys in some training set: the search score stands.
  for (std::size_t i = 0; i < input.decoys.size(); ++i) input.decoys[i] = input.decoys[i] && i < 45;
  EXPECT_EQ(CrossValidatedScores(input, fallback, learned), fallback);
  EXPECT_FALSE(learned);
}

TEST(GlycopeptideQValues, TheOtherIsotopeReadingAddsItsChanceToTheGlycopeptideQValue) {
  const std::vector<CGlycan> table = Table({"5-4-1-0-0"});
  const CMassErrorModel model;  // centre 0, spread 3 ppm
  struct Case {
    int isotope;
    double errorPpm, rivalErrorPpm, expected;
  };
  const std::vector<Case> cases = {
      {0, 0.0, NAN, 0.0},         // no rival reading
      {0, 0.0, 0.0, 0.1},         // equal errors: the prior of an isotope error decides
      {1, 0.0, 0.0, 0.9},
      {0, 0.0, 30.0, 0.0}};       // a rival far off in mass hardly counts
  for (const Case& c : cases) {
    CGlycanCall call;
    call.glycan = &table[0];
    call.isotope = c.isotope;
    call.massErrorPpm = c.errorPpm;
    call.rivalErrorPpm = c.rivalErrorPpm;
    EXPECT_NEAR(IsotopeRivalProbability(call, model), c.expected, 1e-9) << c.rivalErrorPpm;
  }

  // Two lines sure of peptide and glycan; the second has an isotope rival at
  // equal error. The first keeps its combined q-value, the second carries
  // the mean chance of the two of being wrong (by the decoys, 0.002 each, or
  // by the other reading).
  std::vector<CGlycopeptideHit> hits(2);
  for (CGlycopeptideHit& hit : hits) {
    hit.combinedQ = 0.002;
    hit.call.glycan = &table[0];
  }
  hits[1].call.rivalErrorPpm = 0.0;
  AddIsotopeRivals(hits);
  EXPECT_DOUBLE_EQ(hits[0].glycopeptideQ, 0.002);
  EXPECT_DOUBLE_EQ(hits[1].glycopeptideQ, (0.002 + (1.0 - 0.998 * 0.9)) / 2);
}

TEST(GlycopeptideQValues, ASmallRunOfOnePeptideIsNotHeldAboveOnePercentByTwoFloors) {
  // 105 target lines with clear Y ions and one decoy below them all, as in a
  // run of one glycoprotein: one added decoy, not one per part.
  std::vector<CGlycopeptideHit> hits(106);
  for (std::size_t i = 0; i < hits.size(); ++i) {
    hits[i].query = "q" + std::to_string(i);
    hits[i].searchScore = 100.0 - static_cast<double>(i) * 0.1;
    hits[i].yIons = {5, 0.5};
    hits[i].decoyYIons = {1, 0.01};
  }
  hits.back().decoy = true;
  EstimateGlycopeptideQValues(hits);
  for (std::size_t i = 0; i < 105; ++i) EXPECT_NEAR(hits[i].glycopeptideQ, 1.0 / 105, 1e-12) << i;
  hits[50].decoyYIons = {6, 0.6};  // this glycan loses to its decoy: a wrong line, counted once
  EstimateGlycopeptideQValues(hits);
  EXPECT_DOUBLE_EQ(hits[50].glycopeptideQ, 1.0);
  EXPECT_NEAR(hits[0].glycopeptideQ, 2.0 / 104, 1e-12);

  // Lines walked by the larger of their two q-values: the line that lost
  // (to either decoy) is the seventh, though its peptide ranks first.
  const std::vector<double> q = CombinedQValues(
      {0.001, 0.001, 0.001, 0.001, 0.001, 0.001, 0.0001, 0.001, 0.001},
      {0.001, 0.002, 0.003, 0.004, 0.005, 0.006, 0.0065, 0.007, 0.008},
      {false, false, false, false, false, false, true, false, false}, std::vector<double>(9, 1.0));
  EXPECT_EQ(q, (std::vector<double>{1.0 / 6, 1.0 / 6, 1.0 / 6, 1.0 / 6, 1.0 / 6, 1.0 / 6, 0.25, 0.25, 0.25}));
}

TEST(GlycopeptideQValues, FileNamesTakeTheSuffixBeforeTheExtension) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"/data/out/result.txt", "/data/out/result_qvalues.txt"},
      {"result", "result_qvalues"},
      {"/data/run.d/result", "/data/run.d/result_qvalues"},
      {"/data/.hidden", "/data/.hidden_qvalues"}};
  for (const auto& [result, expected] : cases) EXPECT_EQ(QValuePath(result), expected) << result;
  EXPECT_EQ(QValuePath("/data/out/result.txt", ".pin"), "/data/out/result_qvalues.pin");
}

}  // namespace
