#include <gtest/gtest.h>
#include <unistd.h>

#include <iostream>

#include "ListTestSetup.h"
#include "common/TestUtil.h"

using testutil::TempDir;
using testutil::WriteFile;

namespace {
constexpr int kTabTxt = 7;
const std::string kHeading = "Name\tCharge\tSequence\tModifications\n";
}  // namespace

TEST(TabTxtSpecListIO, ReadsRecordsUpToAnEmptyLine) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "list.txt";
  WriteFile(path, kHeading +
                      "s.1.1.2.dta\t2\tAANGTK\t1,A(Acetyl[N-term]);3,N(Deamidated[N]);\r\n"
                      "s.2.2.3.dta\t3\tAANGAK\t3,N(Deamidated[N]);\n"   // no sequon: dropped
                      "s.3.3.2.dta\t2\tNGSK\tnull\n"                     // no mark: dropped
                      "s.4.4.4.dta\t4\tKNSTR\t2,N(Deamidated[N]);\n"
                      "\n"
                      "s.5.5.2.dta\t2\tAANGTK\t3,N(Deamidated[N]);\n");
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kTabTxt, path);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0].spectrumName, "s.1.1.2.dta");
  EXPECT_EQ(list[0].charge, 2);
  EXPECT_EQ(list[0].sequence, "AAJGTK");
  EXPECT_EQ(list[0].modifications,
            (std::vector<CModification>{{1, "Acetyl[N-term]"}, {3, "Deamidated[N]"}}));
  EXPECT_EQ(list[0].lastAA, "");
  EXPECT_EQ(list[0].proteinAC, "");
  EXPECT_EQ(list[1].spectrumName, "s.4.4.4.dta");
  EXPECT_EQ(list[1].charge, 4);
  EXPECT_EQ(list[1].sequence, "KJSTR");
}

TEST(TabTxtSpecListIO, EndsOfFileAndFaultyLines) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "list.txt";
  // The line at which the end of the file is met is lost.
  WriteFile(path, kHeading + "a.1.1.2.dta\t2\tAANGTK\t3,N(Deamidated[N]);\n"
                             "b.1.1.2.dta\t2\tAANGTK\t3,N(Deamidated[N]);");
  EXPECT_EQ(listtest::ReadList(kTabTxt, path).size(), 1u);

  // Heading alone, empty file, missing file.
  WriteFile(path, kHeading);
  testing::internal::CaptureStdout();
  EXPECT_TRUE(listtest::ReadList(kTabTxt, path).empty());
  WriteFile(path, "");
  EXPECT_TRUE(listtest::ReadList(kTabTxt, path).empty());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(listtest::ReadList(kTabTxt, dir / "missing.txt").empty());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Error when opening \"" + (dir / "missing.txt") + "\".\n");

  // An empty field and a broken modification text skip their record only.
  WriteFile(path, kHeading + "a.1.1.2.dta\t\tAANGTK\t3,N(Deamidated[N]);\n"
                             "b.1.1.2.dta\t2\tAANGTK\t3\n"
                             "c.1.1.2.dta\t2\tAANGTK\t3,N(Deamidated[N]);\n");
  testing::internal::CaptureStdout();
  auto list = listtest::ReadList(kTabTxt, path);
  std::string out = testing::internal::GetCapturedStdout();
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].spectrumName, "c.1.1.2.dta");
  EXPECT_NE(out.find("[Warning]: The line \"a.1.1.2.dta"), std::string::npos) << out;
  EXPECT_NE(out.find("[Warning]: The modifications \"3\" of the spectrum b.1.1.2.dta"),
            std::string::npos)
      << out;
}

TEST(TabTxtSpecListIODeathTest, WrongTabCountEndsTheRun) {
  listtest::UseDefaultSettings();
  TempDir dir;
  const std::string path = dir / "list.txt";
  WriteFile(path, kHeading + "a.1.1.2.dta 2\tAANGTK\t3,N(Deamidated[N]);\n");
  // The message goes to standard output; it is sent to standard error here so
  // that the death test can see it.
  EXPECT_EXIT(
      {
        std::cout.flush();
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        listtest::ReadList(kTabTxt, path);
      },
      testing::ExitedWithCode(1),
      "^\\[Error\\] The format of the spectral identification list is wrong!\n$");
}
