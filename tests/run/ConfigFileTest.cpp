#include "run/ConfigFile.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "run/StringUtil.h"
#include "run/TextLine.h"

namespace {

using testutil::TempDir;

CConfigFile ReadText(const std::string& text) {
  TempDir dir;
  testutil::WriteFile(dir / "c.ini", text);
  CConfigFile config;
  config.Read(dir / "c.ini");
  return config;
}

TEST(ConfigFile, Grammar) {
  CConfigFile config = ReadText(
      "before = dropped\n"
      "[s]\r\na = b = c\npath = /data/run#1/x.mgf\nother = value ; comment\n# comment\n"
      "lonely\n   \t  \n\tspaced\t=\t  v  \ntwice = 1\ntwice = 2\nCase = upper\n"
      "[ spaced ]\ny = 1\n[s]\nz = 3\n[e]\n= b\nlast = yes");
  EXPECT_EQ(config.Get("s", "a"), "b = c");
  EXPECT_EQ(config.Get("s", "path"), "/data/run");  // cut at "#" or ";" wherever it stands
  EXPECT_EQ(config.Get("s", "other"), "value");
  EXPECT_EQ(config.Get("s", "lonely"), "");
  EXPECT_EQ(config.FindSection("s")->entries.count("lonely"), 1u);
  EXPECT_EQ(config.Get("s", "spaced"), "v");
  EXPECT_EQ(config.Get("s", "twice"), "2");
  EXPECT_EQ(config.FindSection("s")->entries.count(""), 0u);  // the blank line added nothing
  EXPECT_EQ(config.Get("s", "case"), "");
  EXPECT_EQ(config.Get("s", "Case"), "upper");
  // Blanks inside the brackets belong to the name; only the first of two
  // equal headers is ever seen; a key line before any header goes nowhere.
  ASSERT_EQ(config.sections.size(), 4u);
  EXPECT_EQ(config.Get(" spaced ", "y"), "1");
  EXPECT_EQ(config.Get("spaced", "y"), "");
  EXPECT_EQ(config.Get("s", "z"), "");
  EXPECT_EQ(config.Get("s", "before"), "");
  EXPECT_EQ(config.Get("e", ""), "b");
  EXPECT_EQ(config.Get("e", "last"), "yes");  // no final line end
  EXPECT_EQ(config.Get("missing", "x"), "");
  EXPECT_TRUE(ReadText("").sections.empty());
}

TEST(ConfigFile, ReadingReplacesEarlierContent) {
  // Binary and overlong configurations are run through the program (RunOrderTest).
  CConfigFile config = ReadText("[s]\nk = 1\n");
  TempDir dir;
  testutil::WriteFile(dir / "b.ini", "[b]\nk = 2\n");
  config.Read(dir / "b.ini");
  EXPECT_EQ(config.FindSection("s"), nullptr);
  EXPECT_EQ(config.Get("b", "k"), "2");
}

TEST(ConfigFile, WriteSortsKeysKeepsSectionOrderAndShowsEnteredLookups) {
  TempDir dir;
  CConfigFile config = ReadText("[z]\nb = 2\na = 1\n[a]\nk = v\n");
  config.Get("z", "absent");  // entered with an empty value
  config.Set("a", "new", "x");
  config.Set("nowhere", "k", "v");
  config.Write(dir / "out.ini");
  EXPECT_EQ(testutil::ReadFile(dir / "out.ini"),
            "[z]\na = 1\nabsent = \nb = 2\n[a]\nk = v\nnew = x\n");
}

TEST(ConfigFile, UnwritableFileAndUnreadableDirectory) {
  // Unreadable configurations are run through the program itself (RunOrderTest).
  TempDir dir;
  EXPECT_EXIT(CConfigFile().Write(dir / "no/such/dir.ini"), testing::ExitedWithCode(255), "");
  // Reading lines from a directory ends at once instead of throwing.
  std::ifstream in(dir.path().string(), std::ios::binary);
  std::string line;
  EXPECT_FALSE(ReadLine(in, line));
}

TEST(StringHelpers, TrimSplitHasAffix) {
  std::string text = " \t\r value  x \r\t ", newline = "\nkeep\n";
  Trim(text);
  Trim(newline);
  EXPECT_EQ(text, "value  x");
  EXPECT_EQ(newline, "\nkeep\n");

  std::string left, right;
  SplitFirst("a=b=c", "=", left, right);
  EXPECT_EQ(left + "|" + right, "a|b=c");
  SplitFirst("none", "=", left, right);
  EXPECT_EQ(left + "|" + right, "none|");
  std::vector<std::string> pieces{"kept"};
  Split(",a,,b,", ",", pieces);  // appends; inner empty pieces count, a trailing one doesn't
  EXPECT_EQ(pieces, (std::vector<std::string>{"kept", "", "a", "", "b"}));
  pieces.clear();
  Split("", ",", pieces);
  EXPECT_TRUE(pieces.empty());
  Split("a<>b", "<>", pieces);
  EXPECT_EQ(pieces, (std::vector<std::string>{"a", "b"}));

  EXPECT_TRUE(HasAffix(true, true, "file.mgf", ".mgf"));
  EXPECT_FALSE(HasAffix(true, true, "file.MGF", ".mgf"));
  EXPECT_TRUE(HasAffix(true, false, "file.MGF", ".mgf"));
  EXPECT_TRUE(HasAffix(false, false, "Decoy_PEP", "decoy_"));
  EXPECT_FALSE(HasAffix(false, true, "Decoy_PEP", "decoy_"));
  EXPECT_FALSE(HasAffix(true, true, ".mgf", ".mgf"));  // the affix must be strictly shorter
}

}  // namespace
