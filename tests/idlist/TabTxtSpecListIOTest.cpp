#include <gtest/gtest.h>

#include "ListTestSetup.h"
#include "common/TestUtil.h"

namespace {
constexpr int kTabTxt = 7;
const std::string kHeading = "Name\tCharge\tSequence\tModifications\n";
const std::string kMarked = "\t2\tAANGTK\t3,N(Deamidated[N]);";
}  // namespace

TEST(TabTxtSpecListIO, ReadsRecordsUpToAnEmptyLineOrTheLastLineEnd) {
  listtest::UseDefaultSettings();
  testutil::TempDir dir;
  const std::string path = dir / "list.txt";
  testutil::WriteFile(path, kHeading +
                                "s.1.1.2.dta\t2\tAANGTK\t1,A(Acetyl[N-term]);3,N(Deamidated[N]);\r\n"
                                "s.2.2.3.dta\t3\tAANGAK\t3,N(Deamidated[N]);\n"  // no sequon
                                "s.3.3.2.dta\t2\tNGSK\tnull\n"                    // no mark
                                "s.4.4.4.dta\t4\tKNSTR\t2,N(Deamidated[N]);\n"
                                "\n" "s.5.5.2.dta" + kMarked + "\n");
  std::string out;
  EXPECT_EQ(listtest::Summaries(listtest::ReadListCaptured(kTabTxt, path, out)),
            (std::vector<std::string>{
                "s.1.1.2.dta 2 AAJGTK 1,Acetyl[N-term];3,Deamidated[N]; 3NXT",
                "s.4.4.4.dta 4 KJSTR 2,Deamidated[N]; 2NXT"}));
  EXPECT_EQ(out, "");

  // The line at which the end of the file is met is lost; a heading alone or
  // an empty file give nothing; a missing file is reported.
  testutil::WriteFile(path, kHeading + "a.1.1.2.dta" + kMarked + "\nb.1.1.2.dta" + kMarked);
  EXPECT_EQ(listtest::ReadList(kTabTxt, path).size(), 1u);
  for (const std::string& text : {kHeading, std::string()}) {
    testutil::WriteFile(path, text);
    EXPECT_TRUE(listtest::ReadListCaptured(kTabTxt, path, out).empty());
    EXPECT_EQ(out, "");
  }
  EXPECT_TRUE(listtest::ReadListCaptured(kTabTxt, dir / "missing.txt", out).empty());
  EXPECT_EQ(out, "Error when opening \"" + (dir / "missing.txt") + "\".\n");
}

TEST(TabTxtSpecListIODeathTest, FaultyLines) {
  listtest::UseDefaultSettings();
  testutil::TempDir dir;
  const std::string path = dir / "list.txt";
  // An empty field and a broken modification text skip their record only.
  testutil::WriteFile(path, kHeading + "a.1.1.2.dta\t\tAANGTK\t3,N(Deamidated[N]);\n"
                                       "b.1.1.2.dta\t2\tAANGTK\t3\n" "c.1.1.2.dta" + kMarked + "\n");
  std::string out;
  EXPECT_EQ(listtest::Summaries(listtest::ReadListCaptured(kTabTxt, path, out)),
            (std::vector<std::string>{"c.1.1.2.dta 2 AAJGTK 3,Deamidated[N]; 3NXT"}));
  EXPECT_NE(out.find("[Warning]: The line \"a.1.1.2.dta"), std::string::npos) << out;
  EXPECT_NE(out.find("[Warning]: The modifications \"3\" of the spectrum b.1.1.2.dta"),
            std::string::npos) << out;

  // A wrong count of tabs, too few or too many, ends the run.
  for (const char* line : {"a.1.1.2.dta 2\tAANGTK\t3,N(Deamidated[N]);\n",
                           "a.1.1.2.dta\t2\tAANGTK\t3,N(Deamidated[N]);\tx\n"}) {
    testutil::WriteFile(path, kHeading + line + "c.1.1.2.dta" + kMarked + "\n");
    EXPECT_EXIT((testutil::PrintToStderr(), listtest::ReadList(kTabTxt, path)),
                testing::ExitedWithCode(1),
        "^\\[Error\\] The format of the spectral identification list is wrong!\n$")
        << line;
  }
}
