#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/LineReader.h"

namespace {
struct Line {
  std::string text;
  int64_t next;  // Tell() after the line
};

std::vector<Line> ReadAllLines(const std::string& path) {
  CLineReader reader;
  EXPECT_TRUE(reader.Open(path));
  std::vector<Line> lines;
  std::string_view view;
  while (reader.Next(view)) lines.push_back({std::string(view), reader.Tell()});
  return lines;
}

std::vector<std::string> Texts(const std::vector<Line>& lines) {
  std::vector<std::string> texts;
  for (const Line& l : lines) texts.push_back(l.text);
  return texts;
}
}  // namespace

TEST(LineReaderTest, LineEndsOfEveryKindReadAlike) {
  testutil::TempDir dir;
  const std::vector<std::string> expected = {"a", "", "bc", "d"};
  for (const char* content : {"a\n\nbc\nd\n", "a\r\n\r\nbc\r\nd", "a\n\nbc\r\nd\r\n"}) {
    testutil::WriteFile(dir / "f.txt", content);
    EXPECT_EQ(Texts(ReadAllLines(dir / "f.txt")), expected) << content;
  }
  // Lone CRs end lines; a run of CRs (with or without an LF) is one line end.
  testutil::WriteFile(dir / "cr.txt", "a\rb\r\r\rc\r\r\nd");
  EXPECT_EQ(Texts(ReadAllLines(dir / "cr.txt")), (std::vector<std::string>{"a", "b", "c", "d"}));
  testutil::WriteFile(dir / "empty.txt", "");
  EXPECT_TRUE(ReadAllLines(dir / "empty.txt").empty());
}

TEST(LineReaderTest, OffsetsPointBehindEachLineAndSeekReturnsThere) {
  testutil::TempDir dir;
  // Lines of varied length across the first fill boundary (16 KiB) and the
  // following ones; CRLF so that CR and LF may fall into different fills.
  std::string content;
  std::vector<std::string> expected;
  for (int i = 0; i < 5000; ++i) {
    std::string text(static_cast<std::size_t>(i % 23), static_cast<char>('a' + i % 26));
    text += std::to_string(i);
    expected.push_back(text);
    content += text + (i % 3 == 0 ? "\r\n" : "\n");
  }
  testutil::WriteFile(dir / "f.txt", content);
  const std::vector<Line> lines = ReadAllLines(dir / "f.txt");
  ASSERT_EQ(Texts(lines), expected);
  std::size_t offset = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    offset = content.find('\n', offset) + 1;
    ASSERT_EQ(lines[i].next, static_cast<int64_t>(offset)) << i;
  }
  CLineReader reader;
  ASSERT_TRUE(reader.Open(dir / "f.txt"));
  std::string_view view;
  for (std::size_t i : {4000u, 10u, 2999u, 0u, 4998u}) {
    reader.Seek(lines[i].next);
    ASSERT_TRUE(reader.Next(view));
    EXPECT_EQ(view, expected[i + 1]);
  }
  reader.Seek(lines.back().next);
  EXPECT_FALSE(reader.Next(view));
}

TEST(LineReaderTest, OverlongLinesAreCutAndReadingGoesOn) {
  testutil::TempDir dir;
  const std::string longLine(3 * 1024 * 1024, 'x');  // longer than the buffer
  testutil::WriteFile(dir / "f.txt", "first\n" + longLine + "\r\nlast\n");
  CLineReader reader;
  ASSERT_TRUE(reader.Open(dir / "f.txt"));
  std::string_view view;
  bool tooLong = true;
  ASSERT_TRUE(reader.Next(view, &tooLong));
  EXPECT_FALSE(tooLong);
  ASSERT_TRUE(reader.Next(view, &tooLong));
  EXPECT_TRUE(tooLong);
  EXPECT_EQ(view.size(), kMaxLineLength);
  ASSERT_TRUE(reader.Next(view, &tooLong));
  EXPECT_EQ(view, "last");
  EXPECT_FALSE(reader.Next(view));
}

TEST(LineReaderTest, UnopenedOrMissingFileReadsNothing) {
  CLineReader reader;
  std::string_view view;
  EXPECT_FALSE(reader.Next(view));
  EXPECT_FALSE(reader.Open("/nonexistent/dir/file.mgf"));
  EXPECT_FALSE(reader.Next(view));
}
