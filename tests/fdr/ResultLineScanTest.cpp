#include "fdr/ResultLineScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

// Columns 1 to 27 of a result line, ready to be damaged one by one.
std::string Line(int column = 0, const std::string& value = "", std::size_t columnCount = 27) {
  std::vector<std::string> columns = {
      "q.1.1.2", "PEPJTK/2", "2001.12345", "1000.50000", "2",       "PEPJTK", "-",
      "1000.62345", "1216.42286", "HexNAc(2)Hex(5)", "4",     "NXT",      "12",     "3",
      "0.50000", "5",        "0.40000",    "0.30000",    "0.20000", "0.12345", "T",
      "0.1",     "0.2",      "P12345",     "K",          "AB",      "17"};
  if (column > 0) columns[static_cast<std::size_t>(column - 1)] = value;
  columns.resize(columnCount);
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) line += (i ? "\t" : "") + columns[i];
  return line;
}

TEST(ResultLineScan, TakesItsFieldsAsTheScanFormatDoes) {
  CResultLineFields fields = ScanResultLine(Line());
  EXPECT_EQ(fields.charge, 2);
  EXPECT_DOUBLE_EQ(fields.massShift, 1000.62345);
  EXPECT_DOUBLE_EQ(fields.score, 0.12345);
  EXPECT_EQ(fields.hitKind, 'T');
  // An empty column moves the later ones: the mass shift comes from column 9,
  // and the glycan name then fails as a number, leaving the rest unset.
  fields = ScanResultLine(Line(7, ""));
  EXPECT_DOUBLE_EQ(fields.massShift, 1216.42286);
  EXPECT_EQ(fields.hitKind, '\0');

  // The fast path must agree with std::sscanf on every odd line.
  const std::vector<std::string> lines = {
      Line(), Line(10, "Hex 5 HexNAc 2"), Line(20, "1e-3"), Line(20, "+0.5"), Line(20, "-.5"),
      Line(20, "5."), Line(20, "nan"), Line(20, "inf"), Line(20, "0x1p-2"), Line(20, "1e"),
      Line(20, "0.5abc"), Line(20, "."), Line(20, "123456789012345678901234567890.5"),
      Line(20, "1e400"), Line(8, "-1e400"), Line(20, "1e-400"), Line(8, "-12.5e+2"), Line(5, "+3"),
      Line(5, "3.5"), Line(5, "1234567890"), Line(5, "abc"), Line(13, "12abc"), Line(16, "7.0"),
      Line(21, "Decoy"), Line(3, "-"), "  \t " + Line() + " \r", Line().substr(0, 40),
      std::string("q\0x", 3) + Line(), Line(2, std::string("a\0b", 3)), "",
      "only words here and there", Line(0, "", 21), Line(0, "", 20)};
  for (const std::string& line : lines) {
    SCOPED_TRACE(line.substr(0, 200));
    CResultLineFields fast = ScanResultLine(line);
    CResultLineFields reference = ScanResultLineWithFormat(line);
    EXPECT_EQ(fast.charge, reference.charge);
    EXPECT_EQ(fast.hitKind, reference.hitKind);
    for (auto [a, b] : {std::pair{fast.massShift, reference.massShift},
                        std::pair{fast.score, reference.score}}) {
      if (std::isnan(b)) EXPECT_TRUE(std::isnan(a));
      else EXPECT_EQ(a, b);
    }
  }
}

TEST(ResultLineScan, ChargesNoSpectrumCarriesReadAsUnknown) {
  for (const char* charge : {"21", "2000000000", "-3"}) {
    SCOPED_TRACE(charge);
    EXPECT_EQ(ScanResultLine(Line(5, charge)).charge, 0);
    EXPECT_EQ(ScanResultLineWithFormat(Line(5, charge)).charge, 0);
  }
  EXPECT_EQ(ScanResultLine(Line(5, "20")).charge, kMaxPrecursorCharge);
}

}  // namespace
