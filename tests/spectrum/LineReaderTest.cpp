#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "spectrum/LineReader.h"

namespace {
// The lines of a file and the offset behind each.
std::vector<std::pair<std::string, int64_t>> ReadAllLines(const std::string& path) {
  CLineReader reader;
  EXPECT_TRUE(reader.Open(path));
  std::vector<std::pair<std::string, int64_t>> lines;
  std::string_view view;
  while (reader.Next(view)) lines.emplace_back(std::string(view), reader.Tell());
  return lines;
}

std::vector<std::string> Texts(const std::string& path) {
  std::vector<std::string> texts;
  for (const auto& line : ReadAllLines(path)) texts.push_back(line.first);
  return texts;
}
}  // namespace

TEST(LineReaderTest, LineEndsOfEveryKindReadAlike) {
  testutil::TempDir dir;
  for (const char* content : {"a\n\nbc\nd\n", "a\r\n\r\nbc\r\nd", "a\n\nbc\r\nd\r\n"}) {
    testutil::WriteFile(dir / "f.txt", content);
    EXPECT_EQ(Texts(dir / "f.txt"), (std::vector<std::string>{"a", "", "bc", "d"})) << content;
  }
  // Lone CRs end lines; a run of CRs (with or without an LF) is one line end.
  testutil::WriteFile(dir / "f.txt", "a\rb\r\r\rc\r\r\nd");
  EXPECT_EQ(Texts(dir / "f.txt"), (std::vector<std::string>{"a", "b", "c", "d"}));
  testutil::WriteFile(dir / "f.txt", "");
  EXPECT_TRUE(Texts(dir / "f.txt").empty());
  CLineReader reader;
  std::string_view view;
  EXPECT_FALSE(reader.Next(view));  // nothing open
  EXPECT_FALSE(reader.Open("/nonexistent/dir/file.mgf"));
  EXPECT_FALSE(reader.Next(view));
}

TEST(LineReaderTest, OffsetsAcrossFillsSeeksAndOverlongLines) {
  testutil::TempDir dir;
  // Lines of varied length across the fill boundaries; CRLF so that CR and LF
  // may fall into different fills.
  std::string content;
  std::vector<std::string> expected;
  for (int i = 0; i < 5000; ++i) {
    const char letter = static_cast<char>('a' + i % 26);
    expected.push_back(std::string(static_cast<std::size_t>(i % 23), letter) + std::to_string(i));
    content += expected.back() + (i % 3 == 0 ? "\r\n" : "\n");
  }
  testutil::WriteFile(dir / "f.txt", content);
  const auto lines = ReadAllLines(dir / "f.txt");
  ASSERT_EQ(lines.size(), expected.size());
  std::size_t offset = 0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    offset = content.find('\n', offset) + 1;
    ASSERT_EQ(lines[i].first, expected[i]);
    ASSERT_EQ(lines[i].second, static_cast<int64_t>(offset)) << i;
  }
  CLineReader reader;
  ASSERT_TRUE(reader.Open(dir / "f.txt"));
  std::string_view view;
  for (std::size_t i : {4000u, 10u, 2999u, 0u, 4998u}) {
    reader.Seek(lines[i].second);
    ASSERT_TRUE(reader.Next(view));
    EXPECT_EQ(view, expected[i + 1]);
  }
  reader.Seek(lines.back().second);
  EXPECT_FALSE(reader.Next(view));

  // A line longer than the buffer is cut, and reading goes on behind it.
  testutil::WriteFile(dir / "f.txt", "first\n" + std::string(3 << 20, 'x') + "\r\nlast\n");
  ASSERT_TRUE(reader.Open(dir / "f.txt"));
  bool tooLong = true;
  ASSERT_TRUE(reader.Next(view, &tooLong) && !tooLong);
  ASSERT_TRUE(reader.Next(view, &tooLong) && tooLong);
  EXPECT_EQ(view.size(), kMaxLineLength);
  ASSERT_TRUE(reader.Next(view));
  EXPECT_EQ(view, "last");
  EXPECT_FALSE(reader.Next(view));
}
