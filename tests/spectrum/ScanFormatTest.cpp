#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "spectrum/ScanFormat.h"

namespace {
// The fast scanners must give what sscanf gives, field by field.
void ExpectPeakLikeSscanf(const std::string& line) {
  double a = -7.0, b = -7.0, x = -7.0, y = -7.0;
  int n = std::sscanf(line.c_str(), "%lf%*[ ,\t]%lf", &a, &b);
  if (n < 0) n = 0;
  const int m = ScanPeakLine(line, x, y);
  EXPECT_EQ(n, m) << "line: " << line;
  if (std::isnan(a)) EXPECT_TRUE(std::isnan(x)) << line;
  else EXPECT_EQ(std::memcmp(&a, &x, sizeof a), 0) << line << " " << a << " vs " << x;
  if (std::isnan(b)) EXPECT_TRUE(std::isnan(y)) << line;
  else EXPECT_EQ(std::memcmp(&b, &y, sizeof b), 0) << line << " " << b << " vs " << y;
}
}  // namespace

TEST(ScanFormatTest, PeakLinesReadExactlyAsSscanf) {
  const char* lines[] = {
      "100.5 200",        "100.5\t200",          "100.5,200",        "100.5   \t,200",
      "  100.5 200 3",    "100.5 200\r",         "101.0703067 NaN",  "NaN 5",
      "1e5 2E-3",         "1e 5",                "1.5e+ 7",          "+3 4",
      "-3 -4.25",         ".5 .25",              "5. 6.",            "0x1p3 2",
      "inf 1",            "100.5",               "100.5 ",           "100.5 abc",
      "",                 "   ",                 "abc",              "12.5.3 4",
      "1;2",              "3 4;5",               "123456789012345678901234567890 1",
      "1e400 1",          "1e-400 2",            "0.1 0.2",          "-.5 -",
      "7 \v8",            "9,\t,10",             "100.5x 3",         "100.5 3x",
      "2.2250738585072011e-308 4.9406564584124654e-324",
  };
  for (const char* line : lines) ExpectPeakLikeSscanf(line);
  // A NUL byte ends the text, as in a C string buffer.
  ExpectPeakLikeSscanf(std::string("12\0 34", 6).c_str());
  double x = -1, y = -1;
  EXPECT_EQ(ScanPeakLine(std::string_view("12\0 34", 6), x, y), 1);
  EXPECT_EQ(x, 12.0);
  EXPECT_EQ(y, -1.0);
}

TEST(ScanFormatTest, RandomDecimalsReadBitForBitAsSscanf) {
  // Mantissas of 1 to 22 digits, points anywhere, exponents near the limits of
  // the fast path and beyond: every value must equal strtod's.
  uint64_t state = 0x9E3779B97F4A7C15ull;
  auto next = [&state] {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
  };
  for (int i = 0; i < 20000; ++i) {
    std::string number;
    if (next() % 4 == 0) number += '-';
    const int digits = 1 + static_cast<int>(next() % 22);
    const int point = static_cast<int>(next() % (digits + 2));
    for (int d = 0; d < digits; ++d) {
      if (d == point) number += '.';
      number += static_cast<char>('0' + next() % 10);
    }
    if (next() % 3 == 0) {
      number += (next() % 2) ? 'e' : 'E';
      if (next() % 2) number += '-';
      number += std::to_string(next() % 40);
    }
    ExpectPeakLikeSscanf(number + " " + number);
    if (HasFailure()) break;
  }
}

TEST(ScanFormatTest, LibraryPeakMassChargeAndKeyedFields) {
  double mz = 0, in = 0, mass = 0;
  int c = -1, t = -1, p = -1, z = -1, charge = 0;
  EXPECT_EQ(ScanLibraryPeak("204.0867 0.5000 3 0 2 1", mz, in, c, t, p, z), 6);
  EXPECT_EQ(std::vector<double>({mz, in, 1.0 * c, 1.0 * t, 1.0 * p, 1.0 * z}),
            std::vector<double>({204.0867, 0.5, 3, 0, 2, 1}));
  EXPECT_EQ(ScanLibraryPeak("1,2\t3  4 ,5,6\r", mz, in, c, t, p, z), 6);
  EXPECT_EQ(z, 6);
  z = -1;
  EXPECT_EQ(ScanLibraryPeak("1 2 +3 4", mz, in, c, t, p, z), 4);  // sscanf takes "+3"
  EXPECT_EQ(c * 10 + z, 29);
  EXPECT_EQ(ScanLibraryPeak("9 8 x", mz, in, c, t, p, z), 2);
  EXPECT_EQ(ScanMassCharge("1234.5678\t2", mass, charge), 2);
  EXPECT_TRUE(mass == 1234.5678 && charge == 2);
  EXPECT_EQ(ScanMassCharge("999.5", mass, charge), 1);
  EXPECT_EQ(charge, 2);

  std::string word = "old";
  EXPECT_TRUE(ScanKeyWord("TITLE=a.1.1.2 File:x", "TITLE=", word));
  EXPECT_EQ(word, "a.1.1.2");
  EXPECT_TRUE(ScanKeyWord("TITLE=  spaced\r", "TITLE=", word));
  for (const char* line : {"TITLE=", "TITLE:x", "TITL", " TITLE=x"})
    EXPECT_FALSE(ScanKeyWord(line, "TITLE=", word)) << line;
  EXPECT_EQ(word, "spaced");
  int value = 0;
  for (auto [line, expected] : {std::pair{"CHARGE=2+", 2}, {"CHARGE=3+,4+", 3}, {"CHARGE=+4", 4}})
    EXPECT_TRUE(ScanKeyInt(line, "CHARGE=", value) && value == expected) << line;
  EXPECT_FALSE(ScanKeyInt("COM=x", "CHARGE=", value) || ScanKeyInt("CHARGE=x", "CHARGE=", value));
  EXPECT_EQ(value, 4);
  EXPECT_TRUE(ScanKeyDouble("PEPMASS=800 123", "PEPMASS=", mass) && mass == 800.0);
  EXPECT_TRUE(ScanKeyDouble("PEPMASS=433.739656098381\t424273.46875", "PEPMASS=", mass));
  EXPECT_EQ(mass, 433.739656098381);
}
