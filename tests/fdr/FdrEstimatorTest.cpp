#include "fdr/FdrEstimator.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "fdr/FdrStage.h"

namespace {

using Lines = std::vector<std::string>;
const std::string kSearchHeader = "QuerySpecName\tLibSpecName\t(27 columns of the search)\n";

// A 27-column result line, with the FDR column when one is given.
std::string Hit(const std::string& query, const std::string& score, char kind,
                const std::string& fdr = "", const std::string& proteinAc = "P12345") {
  return query + "\t" + (kind == 'D' ? "Decoy_" : "") +
         "PEPJTK/2\t2001.12345\t1000.50000\t2\tPEPJTK\t-\t1000.62345\t1000.62345\t5-2-0-0-0\t4\tNXT"
         "\t12\t3\t0.50000\t5\t0.40000\t0.30000\t0.20000\t" + score + "\t" + kind +
         "\t0.1\t0.2\t" + proteinAc + "\tK\tAB\t17" + (fdr.empty() ? "" : "\t" + fdr);
}

std::vector<double> Passes(const std::string& kinds, int formula, bool backward) {
  std::vector<CFdrRecord> records;
  for (char kind : kinds) records.push_back(CFdrRecord{"", kind == 'D', 0.0, 0.0, 0.0, 0});
  CFdrEstimator::ForwardPass(records, formula);
  if (backward) CFdrEstimator::BackwardPass(records);
  std::vector<double> values;
  for (const CFdrRecord& record : records) values.push_back(record.fdr);
  return values;
}

void RunOn(const std::string& path, bool enabled = true) {
  CSearchParam settings;
  settings.enabled = enabled;
  settings.output_result_filename = path;
  RunFdr(settings);
}

// Runs the stage with no file allowed to grow beyond `bytes`.
void RankWithFilesUpTo(const std::string& path, std::size_t bytes) {
  testutil::PrintToStderr();
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit limit{bytes, bytes};
  ::setrlimit(RLIMIT_FSIZE, &limit);
  RunOn(path);
}

// Runs the stage on a result file of the given content; the lines of the ranked file.
Lines RankFile(const testutil::TempDir& dir, const std::string& content, bool enabled = true) {
  testutil::WriteFile(dir / "result.txt", content);
  RunOn(dir / "result.txt", enabled);
  EXPECT_FALSE(testutil::FileExists(dir / "result.txt.tmp"));
  return testutil::ReadLines(dir / "result.txt");
}

TEST(FdrPasses, WorkedExamplesAndFormulas) {
  using V = std::vector<double>;
  EXPECT_EQ(Passes("TTDTTD", 1, false), (V{0, 0, 1.0 / 2, 1.0 / 3, 1.0 / 4, 1.0 / 2}));
  EXPECT_EQ(Passes("TTDTTD", 1, true), (V{0, 0, 1.0 / 4, 1.0 / 4, 1.0 / 4, 1.0 / 2}));
  EXPECT_EQ(Passes("TTDTTD", 2, false), (V{0, 0, 2.0 / 3, 2.0 / 4, 2.0 / 5, 4.0 / 6}));
  EXPECT_EQ(Passes("TTDTTD", 7, false), V(6, 0.0));
  // A decoy on top has T = 0 (1.0), lowered by the targets behind it; as many
  // or more decoys than targets give 1.0, never a larger quotient.
  EXPECT_EQ(Passes("DTTT", 1, false), (V{1.0, 1.0, 1.0 / 2, 1.0 / 3}));
  EXPECT_EQ(Passes("DTTT", 1, true), V(4, 1.0 / 3));
  EXPECT_EQ(Passes("DDTD", 1, true), V(4, 1.0));
}

TEST(FdrStage, RanksTheResultFileInPlace) {
  testutil::TempDir dir;
  EXPECT_STREQ(kFdrResultHeader,
               "QuerySpecName\tLibSpecName\tQueryPrecursorMH\tLibPrecursorMH\tCharge\tSequence\t"
               "Modification\tMassShift\tGlycanMass\tGlycanName\tGlycoLoc\tMotif\tLibCandidateNum\t"
               "MatchedYIonNum\tMatchedYIonIntSum\tMatchedPepIonNum\tMatchedPepIonIntSum\tDPS\tPS\t"
               "QuorinGlyco_Score\tTarget/DecoyHit\tDPSIon\tPSIon\tProteinAC\tPreviousAminoAcid\t"
               "LastTwoAminoAcid\tStartPositions\tFDR");
  // File order is not score order; an empty and a short line add no record; a
  // stale temporary file goes.
  testutil::WriteFile(dir / "result.txt.tmp", "left over from an earlier run");
  testing::internal::CaptureStdout();
  Lines lines = RankFile(dir, kSearchHeader + Hit("q5", "0.50000", 'T') + "\n" +
                                  Hit("q1", "0.90000", 'T') + "\n" + Hit("q6", "0.40000", 'D') +
                                  "\n" + Hit("q3", "0.70000", 'D') + "\n" +
                                  Hit("q2", "0.80000", 'T') + "\n\nshort\n" +
                                  Hit("q4", "0.60000", 'T') + "\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), ">> Estimating FDR.\n    ---- Complete!\n\n");
  EXPECT_EQ(lines, (Lines{kFdrResultHeader, Hit("q1", "0.90000", 'T', "0.000"),
                          Hit("q2", "0.80000", 'T', "0.000"), Hit("q3", "0.70000", 'D', "0.250"),
                          Hit("q4", "0.60000", 'T', "0.250"), Hit("q5", "0.50000", 'T', "0.250"),
                          Hit("q6", "0.40000", 'D', "0.500")}));

}

TEST(FdrStage, EmptyCrlfLongDamagedAndMissingFiles) {
  testutil::TempDir dir;
  EXPECT_EQ(RankFile(dir, kSearchHeader), Lines{kFdrResultHeader});
  // CRLF, a last line without a line end, a line longer than any line buffer.
  std::string longAc(20000, 'P');
  EXPECT_EQ(RankFile(dir, "header\r\n" + Hit("x", "0.30000", 'T', "", longAc) + "\r\n" +
                              Hit("y", "0.80000", 'T')),
            (Lines{kFdrResultHeader, Hit("y", "0.80000", 'T', "0.000"),
                   Hit("x", "0.30000", 'T', "0.000", longAc)}));
  // An unreadable line scores 0 as a target; a score that isn't a number ranks last.
  std::string garbage = "binary\x01\x02\xff garbage that is long enough";
  EXPECT_EQ(RankFile(dir, kSearchHeader + Hit("n", "nan", 'T') + "\n" + garbage + "\n" +
                              Hit("z", "0.20000", 'D') + "\n"),
            (Lines{kFdrResultHeader, Hit("z", "0.20000", 'D', "0.500"), garbage + "\t0.500",
                   Hit("n", "nan", 'T', "0.500")}));
  // The disabled stage leaves the file alone.
  EXPECT_EQ(RankFile(dir, "x", false), Lines{"x"});

  std::string path = dir / "absent.txt";
  EXPECT_EXIT((testutil::PrintToStderr(), RunOn(path)), testing::ExitedWithCode(1),
              "^>> Estimating FDR[.]\nIdentification result file load error: failed to open "
              "result file " + path + "[.]tmp\n$");
}

TEST(FdrStage, KeepsTheSearchResultWhenItCantFinishAndNeverRanksARankedFile) {
  testutil::TempDir dir;
  const std::string path = dir / "result.txt";
  const std::string searched = kSearchHeader + Hit("a", "0.50000", 'T') + "\n";
  testutil::WriteFile(path, searched);
  // A ranked file that can't be written whole (here: beyond the file size
  // limit) ends the stage with the search's lines still under the result's name.
  EXPECT_EXIT(RankWithFilesUpTo(path, searched.size()), testing::ExitedWithCode(1),
              "failed to write result file " + path + "\n\tFile too large\n");
  EXPECT_EQ(testutil::ReadFile(path), searched);
  EXPECT_FALSE(testutil::FileExists(path + ".tmp"));
  // A file that has its FDR column already came from another run.
  const std::string ranked = std::string(kFdrResultHeader) + "\n" + Hit("a", "0.5", 'T', "0.000") + "\n";
  testutil::WriteFile(path, ranked);
  EXPECT_EXIT((testutil::PrintToStderr(), RunOn(path)), testing::ExitedWithCode(1),
              "already has an FDR column");
  EXPECT_EQ(testutil::ReadFile(path), ranked);
  EXPECT_FALSE(testutil::FileExists(path + ".tmp"));
}

}  // namespace
