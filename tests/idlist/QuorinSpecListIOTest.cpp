#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "idlist/QuorinSpecListIO.h"

namespace {
constexpr int kQuorin = 0;
const std::string kHeading = "Spectrum Name\tSequencet\tModification\tCharge\n";
}  // namespace

TEST(QuorinSpecListIO, ReadsSeparatorsShortLinesAndTheLastLine) {
  listtest::UseDefaultSettings();
  testutil::TempDir dir;
  const std::string path = dir / "list.txt";
  testutil::WriteFile(path, kHeading +
                                "a.1.1.2.dta\tAANGTK\t2,Oxidation[M];3,Deamidated[N];\t2\r\n"
                                "b.1.1.3.dta , KNSTR , 2,Deamidated[N]; , 3\n"
                                "c.1.1.2.dta\tAANGAK\t3,Deamidated[N];\t2\n"  // no sequon
                                "d.1.1.2.dta\tAANGTK\n"                        // short: skipped
                                "e.1.1.4.dta\tAANGSK\t3,Deamidated[N];\t4");   // no line end: kept
  std::string out;
  EXPECT_EQ(listtest::Summaries(listtest::ReadListCaptured(kQuorin, path, out)),
            (std::vector<std::string>{
                "a.1.1.2.dta 2 AAJGTK 2,Oxidation[M];3,Deamidated[N]; 3NXT",
                "b.1.1.3.dta 3 KJSTR 2,Deamidated[N]; 2NXT", "e.1.1.4.dta 4 AAJGSK 3,Deamidated[N]; 3NXS"}));
  EXPECT_EQ(out, "[Warning]: The line \"d.1.1.2.dta\tAANGTK\" of \"" + path +
                     "\" has fewer than four fields! It will be skipped!\n");

  // An empty line ends the list; a missing file is reported.
  testutil::WriteFile(path, kHeading + "b.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2\n\n"
                                       "c.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2\n");
  EXPECT_EQ(listtest::ReadList(kQuorin, path).size(), 1u);
  EXPECT_TRUE(listtest::ReadListCaptured(kQuorin, dir / "none.txt", out).empty());
  EXPECT_EQ(out, "Error when opening \"" + (dir / "none.txt") + "\".\n");
}

TEST(QuorinSpecListIODeathTest, WriteListReadsBackOrEndsTheRun) {
  listtest::UseDefaultSettings();
  testutil::TempDir dir;
  std::vector<CIdentifiedSpectrum> written(2);
  written[0].spectrumName = "x.5.5.2.dta";
  written[0].sequence = "AANGTK";
  written[0].charge = 2;
  written[0].modifications = {{1, "Acetyl[N-term]"}, {3, "Deamidated[N]"}};
  written[1].spectrumName = "x.6.6.3.dta";
  written[1].sequence = "NGSAK";
  written[1].charge = 3;
  written[1].modifications = {{1, "Deamidated[N]"}};
  CQuorinSpecListIO writer;
  writer.Init({dir / "out.txt", 0.0, kQuorin});
  writer.WriteList(written);
  EXPECT_EQ(testutil::ReadFile(dir / "out.txt"),
            kHeading + "x.5.5.2.dta\tAANGTK\t1,Acetyl[N-term];3,Deamidated[N];\t2\n"
                       "x.6.6.3.dta\tNGSAK\t1,Deamidated[N];\t3\n");
  EXPECT_EQ(listtest::Summaries(listtest::ReadList(kQuorin, dir / "out.txt")),
            (std::vector<std::string>{
                "x.5.5.2.dta 2 AAJGTK 1,Acetyl[N-term];3,Deamidated[N]; 3NXT",
                "x.6.6.3.dta 3 JGSAK 1,Deamidated[N]; 1NXS"}));

  writer.Init({dir / "no_such_dir/out.txt", 0.0, kQuorin});
  EXPECT_EXIT((testutil::PrintToStderr(), writer.WriteList({})), testing::ExitedWithCode(255),
              "Error when writing \".*out.txt\"\\.");
}
