#include "run/ConfigFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "run/StringUtil.h"
#include "run/TextLine.h"

namespace {

using testutil::TempDir;
using testutil::WriteFile;

CConfigFile ReadText(const std::string& text) {
  TempDir dir;
  WriteFile(dir / "c.ini", text);
  CConfigFile config;
  config.Read(dir / "c.ini");
  return config;
}

TEST(ConfigFileGrammar, EntriesCommentsAndBlankLines) {
  CConfigFile config = ReadText(
      "[s]\n"
      "a = b = c\n"
      "path = /data/run#1/x.mgf\n"
      "other = value ; trailing comment\n"
      "# whole comment line\n"
      "lonely\n"
      "= right\n"
      "   \t  \n"
      "\tspaced\t=\t  v  \n"
      "twice = 1\n"
      "twice = 2\n"
      "Case = upper\n");
  EXPECT_EQ(config.Get("s", "a"), "b = c");
  EXPECT_EQ(config.Get("s", "path"), "/data/run");
  EXPECT_EQ(config.Get("s", "other"), "value");
  EXPECT_EQ(config.Get("s", "lonely"), "");
  EXPECT_EQ(config.FindSection("s")->entries.count("lonely"), 1u);
  EXPECT_EQ(config.Get("s", ""), "");  // the blank line stands for nothing
  EXPECT_EQ(config.Get("s", "spaced"), "v");
  EXPECT_EQ(config.Get("s", "twice"), "2");
  EXPECT_EQ(config.Get("s", "case"), "");
  EXPECT_EQ(config.Get("s", "Case"), "upper");
}

TEST(ConfigFileGrammar, EmptyKeyLine) {
  CConfigFile config = ReadText("[s]\n= b\n");
  EXPECT_EQ(config.Get("s", ""), "b");
}

TEST(ConfigFileGrammar, Sections) {
  CConfigFile config = ReadText(
      "before = dropped\n"
      "[search]\nx = first\n"
      "[ spaced ]\ny = 1\n"
      "[search]\nx = second\nz = 3\n"
      "[S]\nx = other\n");
  ASSERT_EQ(config.sections.size(), 4u);
  EXPECT_EQ(config.sections[1].name, " spaced ");
  EXPECT_EQ(config.Get(" spaced ", "y"), "1");
  EXPECT_EQ(config.Get("spaced", "y"), "");
  // Only the first of two equal headers is ever seen.
  EXPECT_EQ(config.Get("search", "x"), "first");
  EXPECT_EQ(config.Get("search", "z"), "");
  EXPECT_EQ(config.Get("S", "x"), "other");
  EXPECT_EQ(config.Get("missing", "x"), "");
  // The key line before any header went nowhere.
  for (const CConfigSection& section : config.sections)
    EXPECT_EQ(section.entries.count("before"), 0u) << section.name;
}

TEST(ConfigFileGrammar, LineEndsAndLastLine) {
  CConfigFile crlf = ReadText("[s]\r\na = 1\r\nb = two words\r\n");
  EXPECT_EQ(crlf.Get("s", "a"), "1");
  EXPECT_EQ(crlf.Get("s", "b"), "two words");
  CConfigFile unterminated = ReadText("[s]\nlast = yes");
  EXPECT_EQ(unterminated.Get("s", "last"), "yes");
  CConfigFile empty = ReadText("");
  EXPECT_TRUE(empty.sections.empty());
}

TEST(ConfigFileGrammar, BinaryAndOverlongContentDoesNotBreakReading) {
  std::string garbage;
  for (int i = 0; i < 300000; ++i) garbage.push_back(static_cast<char>((i * 131 + 7) % 256));
  CConfigFile config = ReadText("[s]\nbefore = 1\n" + std::string(200000, 'x') + "\n" + garbage +
                                "\n[t]\nafter = 2\n");
  EXPECT_EQ(config.Get("s", "before"), "1");
  EXPECT_EQ(config.Get("t", "after"), "2");
}

TEST(ConfigFileGrammar, ReadingReplacesEarlierContent) {
  TempDir dir;
  WriteFile(dir / "a.ini", "[a]\nk = 1\n");
  WriteFile(dir / "b.ini", "[b]\nk = 2\n");
  CConfigFile config;
  config.Read(dir / "a.ini");
  config.Read(dir / "b.ini");
  EXPECT_EQ(config.FindSection("a"), nullptr);
  EXPECT_EQ(config.Get("b", "k"), "2");
}

TEST(ConfigFileWrite, SortedKeysSectionsInFileOrderAndEnteredLookups) {
  TempDir dir;
  CConfigFile config = ReadText("[z]\nb = 2\na = 1\n[a]\nk = v\n");
  config.Get("z", "absent");  // entered with an empty value
  config.Set("a", "new", "x");
  config.Set("nowhere", "k", "v");
  config.Write(dir / "out.ini");
  EXPECT_EQ(testutil::ReadFile(dir / "out.ini"),
            "[z]\na = 1\nabsent = \nb = 2\n[a]\nk = v\nnew = x\n");
}

TEST(ConfigFileFailures, UnreadableAndUnwritableFiles) {
  TempDir dir;
  std::string missing = dir / "none.ini";
  EXPECT_EXIT(
      {
        CConfigFile config;
        config.Read(missing);
      },
      testing::ExitedWithCode(255), "");
  // A directory opens like a file on Linux but is no configuration file.
  std::filesystem::create_directory(dir / "folder.ini");
  std::string folder = dir / "folder.ini";
  EXPECT_EXIT(
      {
        ::dup2(STDERR_FILENO, STDOUT_FILENO);
        CConfigFile config;
        config.Read(folder);
      },
      testing::ExitedWithCode(255), "Error when reading \"" + folder + "\"[.]");
  // Reading lines from it ends at once instead of throwing.
  std::ifstream in(folder, std::ios::binary);
  std::string line;
  EXPECT_FALSE(ReadLine(in, line));
  EXPECT_TRUE(line.empty());
  std::string unwritable = dir / "no/such/dir.ini";
  EXPECT_EXIT(
      {
        CConfigFile config;
        config.Write(unwritable);
      },
      testing::ExitedWithCode(255), "");
}

TEST(StringHelpers, Trim) {
  std::string text = " \t\r value  x \r\t ";
  Trim(text);
  EXPECT_EQ(text, "value  x");
  std::string newline = "\nkeep\n";
  Trim(newline);
  EXPECT_EQ(newline, "\nkeep\n");
  std::string blanks = " \t ";
  Trim(blanks);
  EXPECT_EQ(blanks, "");
}

TEST(StringHelpers, SplitFirstAndSplit) {
  std::string left, right;
  SplitFirst("a=b=c", "=", left, right);
  EXPECT_EQ(left, "a");
  EXPECT_EQ(right, "b=c");
  SplitFirst("none", "=", left, right);
  EXPECT_EQ(left, "none");
  EXPECT_EQ(right, "");
  SplitFirst("x::y", "::", left, right);
  EXPECT_EQ(right, "y");

  std::vector<std::string> pieces;
  Split(",a,,b,", ",", pieces);
  EXPECT_EQ(pieces, (std::vector<std::string>{"", "a", "", "b"}));
  pieces.assign(1, "kept");
  Split("x", ",", pieces);
  EXPECT_EQ(pieces, (std::vector<std::string>{"kept", "x"}));
  pieces.clear();
  Split("", ",", pieces);
  EXPECT_TRUE(pieces.empty());
  Split("a<>b", "<>", pieces);
  EXPECT_EQ(pieces, (std::vector<std::string>{"a", "b"}));
}

TEST(StringHelpers, ToLowerAndHasAffix) {
  std::string text = "MiXeD-1_Z";
  ToLower(text);
  EXPECT_EQ(text, "mixed-1_z");
  EXPECT_TRUE(HasAffix(true, true, "file.mgf", ".mgf"));
  EXPECT_FALSE(HasAffix(true, true, "file.MGF", ".mgf"));
  EXPECT_TRUE(HasAffix(true, false, "file.MGF", ".mgf"));
  EXPECT_TRUE(HasAffix(false, false, "Decoy_PEP", "decoy_"));
  EXPECT_FALSE(HasAffix(false, true, "Decoy_PEP", "decoy_"));
  // The affix must be strictly shorter than the text.
  EXPECT_FALSE(HasAffix(true, true, ".mgf", ".mgf"));
  EXPECT_FALSE(HasAffix(false, true, "ab", "abc"));
}

}  // namespace
