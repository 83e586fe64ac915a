#include "fdr/ResultLineScan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace {

// Columns 1 to 27 of a result line, ready to be damaged one by one.
std::vector<std::string> Columns() {
  return {"q.1.1.2",  "PEPJTK/2",   "2001.12345", "1000.50000", "2",       "PEPJTK", "-",
          "1000.62345", "1000.62345", "HexNAc(2)Hex(5)", "4",   "NXT",     "12",     "3",
          "0.50000",  "5",          "0.40000",    "0.30000",    "0.20000", "0.12345", "T",
          "0.1",      "0.2",        "P12345",     "K",          "AB",      "17"};
}

std::string Join(const std::vector<std::string>& columns) {
  std::string line;
  for (std::size_t i = 0; i < columns.size(); ++i) line += (i ? "\t" : "") + columns[i];
  return line;
}

std::string WithColumn(int column, const std::string& value) {
  std::vector<std::string> columns = Columns();
  columns[static_cast<std::size_t>(column - 1)] = value;
  return Join(columns);
}

void ExpectSameAsFormat(const std::string& line) {
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

TEST(ResultLineScan, TakesChargeMassShiftScoreAndHitKind) {
  CResultLineFields fields = ScanResultLine(Join(Columns()));
  EXPECT_EQ(fields.charge, 2);
  EXPECT_DOUBLE_EQ(fields.massShift, 1000.62345);
  EXPECT_DOUBLE_EQ(fields.score, 0.12345);
  EXPECT_EQ(fields.hitKind, 'T');
  EXPECT_EQ(ScanResultLine(WithColumn(21, "D")).hitKind, 'D');

  // An empty column moves all later ones: the mass shift comes from column 9,
  // and the glycan name then fails as a number.
  std::vector<std::string> columns = Columns();
  columns[8] = "1111.5";
  columns[6] = "";
  CResultLineFields shifted = ScanResultLine(Join(columns));
  EXPECT_DOUBLE_EQ(shifted.massShift, 1111.5);
  EXPECT_EQ(shifted.score, 0.0);
  EXPECT_EQ(shifted.hitKind, '\0');

  // A conversion that fails leaves everything behind it unset.
  CResultLineFields stopped = ScanResultLine(WithColumn(13, "many"));
  EXPECT_EQ(stopped.charge, 2);
  EXPECT_EQ(stopped.score, 0.0);
  EXPECT_EQ(stopped.hitKind, '\0');
}

TEST(ResultLineScan, AgreesWithTheScanFormatOnOddLines) {
  std::vector<std::string> lines = {
      Join(Columns()),
      WithColumn(7, ""),
      WithColumn(10, "Hex 5 HexNAc 2"),
      WithColumn(20, "1e-3"),
      WithColumn(20, "+0.5"),
      WithColumn(20, "-.5"),
      WithColumn(20, "5."),
      WithColumn(20, "nan"),
      WithColumn(20, "inf"),
      WithColumn(20, "0x1p-2"),
      WithColumn(20, "1e"),
      WithColumn(20, "0.5abc"),
      WithColumn(20, "."),
      WithColumn(20, "123456789012345678901234567890.5"),
      WithColumn(8, "-12.5e+2"),
      WithColumn(5, "+3"),
      WithColumn(5, "-3"),
      WithColumn(5, "3.5"),
      WithColumn(5, "123456789"),
      WithColumn(5, "1234567890"),
      WithColumn(5, "abc"),
      WithColumn(13, "12abc"),
      WithColumn(16, "7.0"),
      WithColumn(21, "Decoy"),
      WithColumn(21, "d"),
      WithColumn(3, "-"),
      "  \t " + Join(Columns()) + " \r",
      Join(Columns()).substr(0, 40),
      std::string("q\0x", 3) + Join(Columns()),
      WithColumn(2, std::string("a\0b", 3)),
      "",
      "only words here and there",
  };
  std::vector<std::string> columns = Columns();
  columns.resize(21);
  lines.push_back(Join(columns));
  columns.resize(20);
  lines.push_back(Join(columns));
  for (const std::string& line : lines) ExpectSameAsFormat(line);
}

}  // namespace
