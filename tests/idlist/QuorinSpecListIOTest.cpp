#include <gtest/gtest.h>
#include <unistd.h>

#include <iostream>

#include "ListTestSetup.h"
#include "common/TestUtil.h"
#include "idlist/QuorinSpecListIO.h"

using testutil::TempDir;
using testutil::WriteFile;

namespace {
constexpr int kQuorin = 0;
const std::string kHeading = "Spectrum Name\tSequencet\tModification\tCharge\n";
}  // namespace

TEST(QuorinSpecListIO, ReadsSeparatorsAndLastLine) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "list.txt";
  WriteFile(path, kHeading +
                      "a.1.1.2.dta\tAANGTK\t2,Oxidation[M];3,Deamidated[N];\t2\r\n"
                      "b.1.1.3.dta , KNSTR , 2,Deamidated[N]; , 3\n"
                      "c.1.1.2.dta\tAANGAK\t3,Deamidated[N];\t2\n"  // no sequon: dropped
                      "d.1.1.4.dta\tAANGSK\t3,Deamidated[N];\t4");   // last line kept
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kQuorin, path);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0].spectrumName, "a.1.1.2.dta");
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[0].charge, 2);
  EXPECT_EQ(list[0].modifications,
            (std::vector<CModification>{{2, "Oxidation[M]"}, {3, "Deamidated[N]"}}));
  EXPECT_EQ(list[1].spectrumName, "b.1.1.3.dta");
  EXPECT_EQ(list[1].sequence, "KJSTR");
  EXPECT_EQ(list[1].charge, 3);
  EXPECT_EQ(list[2].spectrumName, "d.1.1.4.dta");
  EXPECT_EQ(list[2].charge, 4);
  EXPECT_EQ(list[2].motifs, (std::vector<CGlycoSite>{{3, "NXS"}}));

  // An empty line ends the list; a short line is reported and skipped.
  WriteFile(path, kHeading + "a.1.1.2.dta\tAANGTK\n"
                             "b.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2\n\n"
                             "c.1.1.2.dta\tAANGTK\t3,Deamidated[N];\t2\n");
  testing::internal::CaptureStdout();
  list = listtest::ReadList(kQuorin, path);
  std::string out = testing::internal::GetCapturedStdout();
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].spectrumName, "b.1.1.2.dta");
  EXPECT_NE(out.find("[Warning]: The line \"a.1.1.2.dta\tAANGTK\""), std::string::npos) << out;

  testing::internal::CaptureStdout();
  EXPECT_TRUE(listtest::ReadList(kQuorin, dir / "none.txt").empty());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error when opening \"" + (dir / "none.txt") + "\".\n");
}

TEST(QuorinSpecListIO, WriteListReadsBack) {
  listtest::UseDefaultSettings();
  TempDir dir;
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
            "Spectrum Name\tSequencet\tModification\tCharge\n"
            "x.5.5.2.dta\tAANGTK\t1,Acetyl[N-term];3,Deamidated[N];\t2\n"
            "x.6.6.3.dta\tNGSAK\t1,Deamidated[N];\t3\n");

  auto list = listtest::ReadList(kQuorin, dir / "out.txt");
  ASSERT_EQ(list.size(), 2u);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(list[i].spectrumName, written[i].spectrumName);
    EXPECT_EQ(list[i].charge, written[i].charge);
    EXPECT_EQ(list[i].modifications, written[i].modifications);
  }
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[1].sequence, "JGSAK");
}

TEST(QuorinSpecListIODeathTest, WriteListFailureEndsTheRun) {
  TempDir dir;
  CQuorinSpecListIO writer;
  writer.Init({dir / "no_such_dir/out.txt", 0.0, kQuorin});
  EXPECT_EXIT(
      {
        std::cout.flush();
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        writer.WriteList({});
      },
      testing::ExitedWithCode(255), "Error when writing \".*out.txt\"\\.");
}
