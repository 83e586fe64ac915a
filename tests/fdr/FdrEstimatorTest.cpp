#include "fdr/FdrEstimator.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "fdr/FdrStage.h"

namespace {

using testutil::TempDir;

const std::string kSearchHeader =
    "QuerySpecName\tLibSpecName\tQueryPrecursorMH\tLibPrecursorMH\tCharge\tSequence\tModification\t"
    "MassShift\tGlycanMass\tGlycanName\tGlycoLoc\tMotif\tLibCandidateNum\tMatchedYIonNum\t"
    "MatchedYIonIntSum\tMatchedPepIonNum\tMatchedPepIonIntSum\tDPS\tPS\tQuorinGlyco_Score\t"
    "Target/DecoyHit\tDPSIon\tPSIon\tProteinAC\tPreviousAminoAcid\tNextAminoAcid\tStartPositions";

// A 27-column result line.
std::string ResultLine(const std::string& query, const std::string& score, char kind,
                       const std::string& proteinAc = "P12345") {
  std::string library = std::string(kind == 'D' ? "Decoy_" : "") + "PEPJTK/2";
  return query + "\t" + library +
         "\t2001.12345\t1000.50000\t2\tPEPJTK\t-\t1000.62345\t1000.62345\tHexNAc(2)Hex(5)\t4\tNXT"
         "\t12\t3\t0.50000\t5\t0.40000\t0.30000\t0.20000\t" +
         score + "\t" + kind + "\t0.1\t0.2\t" + proteinAc + "\tK\tAB\t17";
}

std::vector<CFdrRecord> Hits(const std::string& kinds) {
  std::vector<CFdrRecord> records;
  for (char kind : kinds) records.push_back(CFdrRecord{"", kind == 'D', 0.0, 0.0, 0.0, 0});
  return records;
}

std::vector<double> Fdrs(const std::vector<CFdrRecord>& records) {
  std::vector<double> values;
  for (const CFdrRecord& record : records) values.push_back(record.fdr);
  return values;
}

// Runs the stage on a result file with the given content; returns the lines of
// the ranked file.
std::vector<std::string> RankFile(const TempDir& dir, const std::string& content) {
  std::string path = dir / "result.txt";
  testutil::WriteFile(path, content);
  CSearchParam settings;
  settings.enabled = true;
  settings.output_result_filename = path;
  RunFdr(settings);
  EXPECT_FALSE(testutil::FileExists(path + ".tmp"));
  return testutil::ReadLines(path);
}

TEST(FdrPasses, WorkedExampleAndFormulas) {
  std::vector<CFdrRecord> records = Hits("TTDTTD");
  CFdrEstimator::ForwardPass(records, 1);
  EXPECT_EQ(Fdrs(records), (std::vector<double>{0, 0, 1.0 / 2, 1.0 / 3, 1.0 / 4, 1.0 / 2}));
  CFdrEstimator::BackwardPass(records);
  EXPECT_EQ(Fdrs(records), (std::vector<double>{0, 0, 1.0 / 4, 1.0 / 4, 1.0 / 4, 1.0 / 2}));

  CFdrEstimator::ForwardPass(records, 2);
  EXPECT_EQ(Fdrs(records),
            (std::vector<double>{0, 0, 2.0 / 3, 2.0 / 4, 2.0 / 5, 4.0 / 6}));
  CFdrEstimator::ForwardPass(records, 7);
  EXPECT_EQ(Fdrs(records), (std::vector<double>(6, 0.0)));
}

TEST(FdrPasses, DecoysAtTheTopAndBalancedCounts) {
  std::vector<CFdrRecord> top = Hits("DTTT");
  CFdrEstimator::ForwardPass(top, 1);
  EXPECT_EQ(Fdrs(top), (std::vector<double>{1.0, 1.0, 1.0 / 2, 1.0 / 3}));
  CFdrEstimator::BackwardPass(top);
  EXPECT_EQ(Fdrs(top), (std::vector<double>(4, 1.0 / 3)));

  std::vector<CFdrRecord> moreDecoys = Hits("DDTD");
  CFdrEstimator::ForwardPass(moreDecoys, 1);
  CFdrEstimator::BackwardPass(moreDecoys);
  EXPECT_EQ(Fdrs(moreDecoys), (std::vector<double>(4, 1.0)));

  std::vector<CFdrRecord> none;
  CFdrEstimator::ForwardPass(none, 1);
  CFdrEstimator::BackwardPass(none);
  EXPECT_TRUE(none.empty());
}

TEST(FdrStage, RanksTheResultFileInPlace) {
  TempDir dir;
  // File order is not score order; the 0.7 decoy is the third best hit.
  std::string content = kSearchHeader + "\n" + ResultLine("q5", "0.50000", 'T') + "\n" +
                        ResultLine("q1", "0.90000", 'T') + "\n" + ResultLine("q6", "0.40000", 'D') +
                        "\n" + ResultLine("q3", "0.70000", 'D') + "\n" +
                        ResultLine("q2", "0.80000", 'T') + "\n" + "\n" + "short\n" +
                        ResultLine("q4", "0.60000", 'T') + "\n";
  testutil::WriteFile(dir / "result.txt.tmp", "left over from an earlier run");
  std::vector<std::string> lines = RankFile(dir, content);
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0], kFdrResultHeader);
  EXPECT_EQ(lines[1], ResultLine("q1", "0.90000", 'T') + "\t0.000");
  EXPECT_EQ(lines[2], ResultLine("q2", "0.80000", 'T') + "\t0.000");
  EXPECT_EQ(lines[3], ResultLine("q3", "0.70000", 'D') + "\t0.250");
  EXPECT_EQ(lines[4], ResultLine("q4", "0.60000", 'T') + "\t0.250");
  EXPECT_EQ(lines[5], ResultLine("q5", "0.50000", 'T') + "\t0.250");
  EXPECT_EQ(lines[6], ResultLine("q6", "0.40000", 'D') + "\t0.500");
}

TEST(FdrStage, TiesKeepFileOrderAndOrderFollowsFdr) {
  TempDir dir;
  std::string content = kSearchHeader + "\n" + ResultLine("a", "0.50000", 'T') + "\n" +
                        ResultLine("b", "0.50000", 'D') + "\n" + ResultLine("c", "0.90000", 'T') +
                        "\n" + ResultLine("d", "0.50000", 'T') + "\n";
  std::vector<std::string> lines = RankFile(dir, content);
  ASSERT_EQ(lines.size(), 5u);
  // Score order c, a, b, d: forward 0, 0, 1/2, 1/3; backward 0, 0, 1/3, 1/3.
  EXPECT_EQ(lines[1], ResultLine("c", "0.90000", 'T') + "\t0.000");
  EXPECT_EQ(lines[2], ResultLine("a", "0.50000", 'T') + "\t0.000");
  EXPECT_EQ(lines[3], ResultLine("b", "0.50000", 'D') + "\t0.333");
  EXPECT_EQ(lines[4], ResultLine("d", "0.50000", 'T') + "\t0.333");
}

TEST(FdrStage, EmptyResultsLineEndsAndLongLines) {
  TempDir dir;
  EXPECT_EQ(RankFile(dir, kSearchHeader + "\n"), (std::vector<std::string>{kFdrResultHeader}));
  EXPECT_EQ(RankFile(dir, ""), (std::vector<std::string>{kFdrResultHeader}));

  // CRLF line ends, a last line without a line end, and a line far longer than
  // any line buffer: each stays one whole line.
  std::string longAc(20000, 'P');
  std::string content = kSearchHeader + "\r\n" + ResultLine("x", "0.30000", 'T', longAc) +
                        "\r\n" + ResultLine("y", "0.80000", 'T');
  std::vector<std::string> lines = RankFile(dir, content);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], ResultLine("y", "0.80000", 'T') + "\t0.000");
  EXPECT_EQ(lines[2], ResultLine("x", "0.30000", 'T', longAc) + "\t0.000");
}

TEST(FdrStage, DamagedLinesAreKeptAndRanked) {
  TempDir dir;
  std::string garbage = "binary\x01\x02\xff garbage that is long enough";
  std::string content = kSearchHeader + "\n" + ResultLine("n", "nan", 'T') + "\n" + garbage +
                        "\n" + ResultLine("z", "0.20000", 'D') + "\n";
  std::vector<std::string> lines = RankFile(dir, content);
  ASSERT_EQ(lines.size(), 4u);
  // The unreadable line scores 0 and counts as a target; a score that isn't a
  // number ranks last. Forward 1, 1, 1/2; backward 1/2 for all.
  EXPECT_EQ(lines[1], ResultLine("z", "0.20000", 'D') + "\t0.500");
  EXPECT_EQ(lines[2], garbage + "\t0.500");
  EXPECT_EQ(lines[3], ResultLine("n", "nan", 'T') + "\t0.500");
}

void RunFdrOnStderr(const std::string& resultPath) {
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  CSearchParam settings;
  settings.enabled = true;
  settings.output_result_filename = resultPath;
  RunFdr(settings);
}

TEST(FdrStage, MissingResultFileAndDisabledStage) {
  TempDir dir;
  std::string path = dir / "absent.txt";
  EXPECT_EXIT(RunFdrOnStderr(path), testing::ExitedWithCode(1),
              "^>> Estimating FDR[.]\nIdentification result file load error: failed to open "
              "result file " +
                  path + "[.]tmp\n$");

  CSearchParam disabled;
  disabled.output_result_filename = dir / "untouched.txt";
  testutil::WriteFile(dir / "untouched.txt", "x");
  RunFdr(disabled);
  EXPECT_EQ(testutil::ReadFile(dir / "untouched.txt"), "x");
  EXPECT_FALSE(testutil::FileExists(dir / "untouched.txt.tmp"));
}

}  // namespace
