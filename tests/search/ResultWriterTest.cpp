#include <gtest/gtest.h>

#include "SearchTestUtil.h"
#include "common/TestUtil.h"
#include "run/StringUtil.h"
#include "search/LibrarySearcher.h"

using namespace searchtest;

namespace {
struct Fixture {
  CSpectrum query = Spectrum(2892.12345678, 3);
  CSpectrum library = Spectrum(1000.5, 2);
  CSpectralMatch match;
  Fixture() {
    query.name = "run1.100.100.3";
    library.name = "12";
    library.sequence = "PEPJTIDEK";
    library.modifications = {{0, "Acetyl"}, {7, "Oxidation"}};
    library.motifs = {{4, "NXT"}, {9, "NXS"}};
    library.proteinAC = "sp|P1|X";
    library.prevAA = "K";
    library.lastAA = "AV";
    library.startPosition = 42;
    match.query = &query;
    match.library = &library;
    match.glycanName = "5-4-0-0-1";
    match.glycanMass = 1891.6;
    match.glycoLoc = "4";
    match.candidateCount = 3;
    match.matchedYIonCount = 2;
    match.matchedYIonIntensity = 0.25;
    match.matchedPeptideIonCount = 5;
    match.matchedPeptideIonIntensity = 1.0 / 3;
    match.dps = 0.123456789;
    match.ps = 5.5;
    match.score = 0.67901234;
    match.dpsIons = "b2+;y3+;Y1+;";
    match.psIons = "b2+;";
  }
};
}  // namespace

TEST(ResultWriter, LineHasTheTwentySevenColumns) {
  Fixture f;
  std::string line;
  CLibrarySearcher::FormatResultLine(f.match, line);
  EXPECT_EQ(line,
            "run1.100.100.3\t12\t2892.12346\t1000.50000\t3\tPEPJTIDEK\t0,Acetyl;7,Oxidation;\t"
            "1891.62346\t1891.60000\t5-4-0-0-1\t4\tNXT\t3\t2\t0.25000\t5\t0.33333\t0.12346\t"
            "5.50000\t0.67901\tT\tb2+;y3+;Y1+;\tb2+;\tsp|P1|X\tK\tAV\t42");

  // No modifications print "-"; a later motif of the same position wins; a
  // site with a comma finds no motif and the first one stands.
  f.library.modifications.clear();
  f.library.motifs = {{4, "NXT"}, {9, "NXS"}, {9, "NXC"}};
  f.match.glycoLoc = "9";
  CLibrarySearcher::FormatResultLine(f.match, line);
  std::vector<std::string> cols;
  Split(line, "\t", cols);
  ASSERT_EQ(cols.size(), 27u);
  EXPECT_EQ(cols[6], "-");
  EXPECT_EQ(cols[11], "NXC");
  f.match.glycoLoc = "9,";
  CLibrarySearcher::FormatResultLine(f.match, line);
  cols.clear();
  Split(line, "\t", cols);
  EXPECT_EQ(cols[11], "NXT");
}

TEST(ResultWriter, TargetOrDecoyByTheNamePrefix) {
  Fixture f;
  auto hit = [&](const std::string& name) {
    f.library.name = name;
    std::string line;
    CLibrarySearcher::FormatResultLine(f.match, line);
    std::vector<std::string> cols;
    Split(line, "\t", cols);
    return cols.at(20);
  };
  EXPECT_EQ(hit("Decoy_12"), "D");
  EXPECT_EQ(hit("Decoy_"), "T");  // the name must be longer than the prefix
  EXPECT_EQ(hit("decoy_12"), "T");
  EXPECT_EQ(hit("12"), "T");
}

TEST(ResultWriter, HeaderAndOnlyQualifyingLines) {
  testutil::TempDir dir;
  Fixture f;
  {
    CLibrarySearcher searcher;
    searcher.param.output_result_filename = dir / "result.txt";
    searcher.WriteHeader();
    CSpectralMatch low = f.match, above = f.match, failed = f.match, empty = f.match;
    low.score = 0.00001;  // not above the limit
    above.score = 0.0000100001;
    failed.score = -1.0;
    empty.library = nullptr;
    empty.score = 0.0;
    searcher.results = {low, above, failed, empty, f.match};
    searcher.WriteResults();
  }
  std::vector<std::string> lines = testutil::ReadLines(dir / "result.txt");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], kSearchResultHeader);
  EXPECT_EQ(lines[0].substr(0, 27), "QuerySpecName\tLibSpecName\tQ");
  EXPECT_NE(lines[1].find("\t0.00001\tT\t"), std::string::npos);
  EXPECT_NE(lines[2].find("\t0.67901\tT\t"), std::string::npos);
}

TEST(ResultWriter, UnopenableResultFileEndsTheProgram) {
  CLibrarySearcher searcher;
  searcher.param.output_result_filename = "/nonexistent-dir/result.txt";
  EXPECT_EXIT(searcher.WriteHeader(), ::testing::ExitedWithCode(1), "");
}
