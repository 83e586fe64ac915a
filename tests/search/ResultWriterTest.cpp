#include <gtest/gtest.h>

#include "SearchTestUtil.h"
#include "common/TestUtil.h"
#include "run/StringUtil.h"
#include "search/LibrarySearcher.h"

using namespace searchtest;

namespace {
struct Fixture {
  CSpectrum query = Spectrum(2892.12345678, 3), library = Spectrum(1000.5, 2);
  CSpectralMatch match{&query, &library, "5-4-0-0-1", 1891.6, 0, 0, 0.123456789, 5.5, 0.67901234,
                       "4", "b2+;y3+;Y1+;", "b2+;", 0.25, 1.0 / 3, 2, 5, 3, {}, {}};
  Fixture() {
    query.name = "run1.100.100.3";
    library.name = "12";
    library.sequence = "PEPJTIDEK";
    library.modifications = {{0, "Acetyl"}, {7, "Oxidation"}};
    library.motifs = {{4, "NXT"}, {9, "NXS"}};
    library.proteinAC = "sp|P1|X";
    library.prevAA = "K";
    library.lastAA = "AV";
    library.startPosition = -42;
  }
  std::string Column(std::size_t i) {
    std::string line;
    CLibrarySearcher::FormatResultLine(match, line);
    std::vector<std::string> cols;
    Split(line, "\t", cols);
    return cols.at(i);
  }
};
}  // namespace

TEST(ResultWriter, TheTwentySevenColumnsMotifAndTargetDecoy) {
  Fixture f;
  std::string line;
  CLibrarySearcher::FormatResultLine(f.match, line);
  EXPECT_EQ(line,
            "run1.100.100.3\t12\t2892.12346\t1000.50000\t3\tPEPJTIDEK\t0,Acetyl;7,Oxidation;\t"
            "1891.62346\t1891.60000\t5-4-0-0-1\t4\tNXT\t3\t2\t0.25000\t5\t0.33333\t0.12346\t"
            "5.50000\t0.67901\tT\tb2+;y3+;Y1+;\tb2+;\tsp|P1|X\tK\tAV\t-42");

  // No modifications print "-"; the last motif of the site's position wins; a
  // site with a comma finds none and the first entry stands.
  f.library.modifications.clear();
  f.library.motifs = {{4, "NXT"}, {9, "NXS"}, {9, "NXC"}};
  f.match.glycoLoc = "9";
  EXPECT_EQ(f.Column(6) + f.Column(11), "-NXC");
  f.match.glycoLoc = "9,";
  EXPECT_EQ(f.Column(11), "NXT");

  // "Decoy_" must start the name, case-sensitive, and be shorter than it.
  for (auto [name, hit] : {std::pair{"Decoy_12", "D"}, {"Decoy_", "T"}, {"decoy_12", "T"}}) {
    f.library.name = name;
    EXPECT_EQ(f.Column(20), hit) << name;
  }
}

TEST(ResultWriter, HeaderAndOnlyLinesScoringAboveTheLimit) {
  testutil::TempDir dir;
  Fixture f;
  {
    CLibrarySearcher searcher;
    searcher.param.output_result_filename = dir / "result.txt";
    searcher.WriteHeader();
    searcher.results.assign(5, f.match);
    searcher.results[0].score = 0.00001;
    searcher.results[1].score = 0.0000100001;
    searcher.results[2].score = -1.0;
    searcher.results[3].library = nullptr;
    searcher.WriteResults();
    EXPECT_FALSE(testutil::FileExists(dir / "result.txt"));  // in place only when finished
    searcher.Finish();
  }
  std::vector<std::string> lines = testutil::ReadLines(dir / "result.txt");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0],
            "QuerySpecName\tLibSpecName\tQueryPrecursorMH\tLibPrecursorMH\tCharge\tSequence\t"
            "Modification\tMassShift\tGlycanMass\tGlycanName\tGlycoLoc\tMotif\tLibCandidateNum\t"
            "MatchedYIonNum\tMatchedYIonIntSum\tMatchedPepIonNum\tMatchedPepIonIntSum\tDPS\tPS\t"
            "QuorinGlyco_Score\tTarget/DecoyHit\tDPSIon\tPSIon\tProteinAC\tPrevAminoAcid\t"
            "LastAminoAcid\tStartPositions");
  EXPECT_NE(lines[1].find("\t0.00001\tT\t"), std::string::npos);
  EXPECT_NE(lines[2].find("\t0.67901\tT\t"), std::string::npos);
}
