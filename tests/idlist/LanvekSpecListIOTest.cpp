#include <gtest/gtest.h>
#include <unistd.h>

#include <iostream>

#include "ListTestSetup.h"
#include "common/TestUtil.h"

using testutil::TempDir;
using testutil::WriteFile;

namespace {

constexpr int kLanvek = 2;

const char* kFasta =
    ">P1 first protein\n"
    "MKAANGTKLL\n"
    "NVSR\n"
    ">P2 second\r\n"
    "MNGSKR\r\n"
    ">REVERSE_P1 decoy\n"
    "RSVNLLKTGNAAKM\n";

std::string Hit(const std::string& sequence, const std::string& mods,
                const std::string& proteins) {
  return "*\t1\t" + sequence + "\t1000.5\t" + mods + "\t10\t0.1\t5\t3\t" + proteins + "\n";
}

struct LanvekFiles {
  TempDir dir;
  std::string list = dir / "result.txt";
  LanvekFiles() {
    WriteFile(dir / "db.fasta", kFasta);
    CParam::GetInstance().construction.protein_database = dir / "db.fasta";
  }
};

}  // namespace

TEST(LanvekSpecListIO, ReadsFirstHitsWithFlanksFromTheDatabase) {
  listtest::UseDefaultSettings();
  LanvekFiles files;
  WriteFile(files.list,
            "heading 1\nheading 2\n"
            "1\ta.b.10.10.2.0.dta\t999.1\n" +
                Hit("AANGTK", "3,N(Deamidated[N]);", "REVERSE_P1/P1") +
                Hit("AANGTK", "null", "P1") +
                "2\tx.10.11.3.dta\t999.1\n" +
                Hit("LLNVSR", "3,N(Deamidated[N]);", "P1/REVERSE_P1") +
                Hit("MNGSK", "2,N(Deamidated[N]);", "P2") + Hit("MNGSK", "null", "P2") +
                "3\ty.5.5.0.dta\t999.1\n" + Hit("MNGSK", "2,N(Deamidated[N]);", "P2") +
                "4\tz.3.dta\t999.1\n" + Hit("MNGSK", "2,N(Deamidated[N]);", "P2") +
                "5\tm.7.7.2.dta\t999.1\n" +
                Hit("MNGSK", "2,N(Deamidated[N]);", "P2/P1") +
                "6\tm.8.8.3.dta\t999.1\n" + Hit("MKAAN", "5,N(Deamidated[N]);", "P1") +
                "\n"
                "7\tm.9.9.2.dta\t999.1\n" + Hit("MNGSK", "2,N(Deamidated[N]);", "P2"));
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kLanvek, files.list);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out,
            "[Warning]: The charge of the spectrum y.5.5.0.dtais unknown! This result will be "
            "discarded!\n"
            "[Warning]: The name of the spectrum z.3.dta has no charge token! This result will "
            "be discarded!\n");
  ASSERT_EQ(list.size(), 4u);

  EXPECT_EQ(list[0].spectrumName, "a.b.10.10.2.0.dta");
  EXPECT_EQ(list[0].charge, 2);
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[0].proteinAC, "P1");
  EXPECT_EQ(list[0].startPosition, 3);
  EXPECT_EQ(list[0].prevAA, "K");
  EXPECT_EQ(list[0].lastAA, "LL");

  EXPECT_EQ(list[1].spectrumName, "x.10.11.3.dta");
  EXPECT_EQ(list[1].charge, 3);
  EXPECT_EQ(list[1].sequence, "LLJVSR");
  EXPECT_EQ(list[1].proteinAC, "P1");
  EXPECT_EQ(list[1].startPosition, 9);
  EXPECT_EQ(list[1].lastAA, "--");

  EXPECT_EQ(list[2].spectrumName, "m.7.7.2.dta");
  EXPECT_EQ(list[2].proteinAC, "P2");
  EXPECT_EQ(list[2].startPosition, 1);
  EXPECT_EQ(list[2].prevAA, "-");
  EXPECT_EQ(list[2].lastAA, "R-");

  // A sequon reaching past the peptide, told by the residues behind it.
  EXPECT_EQ(list[3].sequence, "MKAAJ");
  EXPECT_EQ(list[3].lastAA, "GT");
  EXPECT_EQ(list[3].motifs, (std::vector<CGlycoSite>{{5, "NXT"}}));
}

TEST(LanvekSpecListIO, ShortFilesAndMissingList) {
  listtest::UseDefaultSettings();
  LanvekFiles files;
  testing::internal::CaptureStdout();
  EXPECT_TRUE(listtest::ReadList(kLanvek, files.dir / "none.txt").empty());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error when opening \"" + (files.dir / "none.txt") + "\".\n");

  // The third line met the end of the file: nothing is read.
  WriteFile(files.list, "h1\nh2\n1\tm.7.7.2.dta\t1");
  EXPECT_TRUE(listtest::ReadList(kLanvek, files.list).empty());
  // A hit line that ends the file without a line end is still taken.
  WriteFile(files.list,
            "h1\nh2\n1\tm.7.7.2.dta\t1\n*\t1\tMNGSK\t1\t2,N(Deamidated[N]);\t1\t1\t1\t1\tP2");
  EXPECT_EQ(listtest::ReadList(kLanvek, files.list).size(), 1u);
  // A hit line without its ten fields is reported and skipped.
  WriteFile(files.list, "h1\nh2\n1\tm.7.7.2.dta\t1\n*\t1\tMNGSK\t1\n"
                        "2\tm.8.8.2.dta\t1\n" + Hit("MNGSK", "2,N(Deamidated[N]);", "P2"));
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kLanvek, files.list);
  std::string out = testing::internal::GetCapturedStdout();
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].spectrumName, "m.8.8.2.dta");
  EXPECT_NE(out.find("m.7.7.2.dta has fewer than ten fields"), std::string::npos) << out;
}

TEST(LanvekSpecListIODeathTest, UnknownProteinOrPeptideEndsTheRun) {
  listtest::UseDefaultSettings();
  LanvekFiles files;
  auto run = [&files]() {
    std::cout.flush();
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    listtest::ReadList(kLanvek, files.list);
  };
  WriteFile(files.list, "h1\nh2\n1\tm.7.7.2.dta\t1\n" +
                            Hit("MNGSK", "2,N(Deamidated[N]);", "REVERSE_P9/REVERSE_P2"));
  EXPECT_EXIT(run(), testing::ExitedWithCode(1),
              "There is no protein in database owing the AC of REVERSE_P9\n");
  WriteFile(files.list, "h1\nh2\n1\tm.7.7.2.dta\t1\n" +
                            Hit("WWNGT", "3,N(Deamidated[N]);", "P1"));
  EXPECT_EXIT(run(), testing::ExitedWithCode(1),
              "The protein of P1 does not have the peptide WWNGT\n");
}
