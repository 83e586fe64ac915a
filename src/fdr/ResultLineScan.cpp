#include "fdr/ResultLineScan.h"

#include <charconv>
#include <cstdio>
#include <cstring>

namespace {

// The result line's scan format. A skipped "%*lf" is written "%*f": the length
// modifier means nothing when nothing is stored, and the compiler flags it.
const char* const kResultLineFormat =
    "%*s\t%*s\t%*f\t%*f\t%d\t%*s\t%*s\t%lf\t%*f\t%*s\t%*s\t%*s\t%*d\t%*d\t%*f\t%*d\t%*f\t%*f\t"
    "%*f\t%lf\t%c\t%*s\t%*s\t%*s\t%*s\t%*s\t%*d";

// What the scan format does with each of the first 21 words. Nothing behind
// column 21 is stored, so later columns can't change the result.
enum class FieldKind : char { Word, Real, Integer, Letter };
constexpr FieldKind W = FieldKind::Word, R = FieldKind::Real, I = FieldKind::Integer,
                    L = FieldKind::Letter;
constexpr FieldKind kFieldKinds[] = {W, W, R, R, I, W, W, R, R, W, W,
                                     W, I, I, R, I, R, R, R, R, L};
constexpr int kScannedFields = static_cast<int>(sizeof kFieldKinds / sizeof kFieldKinds[0]);
constexpr int kChargeField = 4, kMassShiftField = 7, kScoreField = 19, kHitKindField = 20;

// The white space of scanf in the C locale.
bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

const char* SkipDigits(const char* p, const char* end) {
  while (p < end && IsDigit(*p)) ++p;
  return p;
}

// A plain decimal number that %lf reads to the end of the word: optional sign,
// digits with an optional point, an optional exponent.
bool IsPlainReal(const char* begin, const char* end) {
  const char* p = begin;
  if (p < end && (*p == '+' || *p == '-')) ++p;
  const char* integer = p;
  p = SkipDigits(p, end);
  bool hasDigits = p > integer;
  if (p < end && *p == '.') {
    const char* fraction = ++p;
    p = SkipDigits(p, end);
    hasDigits = hasDigits || p > fraction;
  }
  if (!hasDigits) return false;
  if (p < end && (*p == 'e' || *p == 'E')) {
    ++p;
    if (p < end && (*p == '+' || *p == '-')) ++p;
    const char* exponent = p;
    p = SkipDigits(p, end);
    if (p == exponent) return false;
  }
  return p == end;
}

// An integer that %d reads to the end of the word and that fits an int.
bool IsPlainInteger(const char* begin, const char* end) {
  const char* p = begin;
  if (p < end && (*p == '+' || *p == '-')) ++p;
  const char* digits = p;
  p = SkipDigits(p, end);
  return p > digits && p - digits <= 9 && p == end;
}

// False when the value is out of range (1e400): from_chars then stores nothing,
// while %lf gives infinity, so such a word is left to the scan format.
bool ReadReal(const char* begin, const char* end, double& value) {
  if (*begin == '+') ++begin;  // from_chars takes no plus sign
  return std::from_chars(begin, end, value).ec == std::errc();
}

int32_t ReadInteger(const char* begin, const char* end) {
  bool negative = *begin == '-';
  if (*begin == '+' || *begin == '-') ++begin;
  int32_t value = 0;
  for (; begin < end; ++begin) value = value * 10 + (*begin - '0');
  return negative ? -value : value;
}

struct CWord {
  const char* begin;
  const char* end;
};

// The common case: at least 21 words, each numeric word a plain number that its
// conversion consumes whole. Then every conversion of the format takes exactly
// one word and the stored values can be read from the words directly.
bool ScanPlainLine(const char* text, std::size_t length, CResultLineFields& fields) {
  CWord words[kScannedFields];
  const char* p = text;
  const char* end = text + length;
  for (int i = 0; i < kScannedFields; ++i) {
    while (p < end && IsSpace(*p)) ++p;
    if (p == end) return false;
    const char* begin = p;
    while (p < end && !IsSpace(*p)) ++p;
    words[i] = CWord{begin, p};
    if (kFieldKinds[i] == FieldKind::Real && !IsPlainReal(begin, p)) return false;
    if (kFieldKinds[i] == FieldKind::Integer && !IsPlainInteger(begin, p)) return false;
  }
  fields.charge = ReadInteger(words[kChargeField].begin, words[kChargeField].end);
  fields.hitKind = *words[kHitKindField].begin;
  return ReadReal(words[kMassShiftField].begin, words[kMassShiftField].end, fields.massShift) &&
         ReadReal(words[kScoreField].begin, words[kScoreField].end, fields.score);
}

CResultLineFields& BoundCharge(CResultLineFields& fields) {
  if (fields.charge < 0 || fields.charge > kMaxPrecursorCharge) fields.charge = 0;
  return fields;
}

}  // namespace

CResultLineFields ScanResultLineWithFormat(const std::string& line) {
  CResultLineFields fields;
  std::sscanf(line.c_str(), kResultLineFormat, &fields.charge, &fields.massShift, &fields.score,
              &fields.hitKind);
  return BoundCharge(fields);
}

CResultLineFields ScanResultLine(const std::string& line) {
  CResultLineFields fields;
  if (ScanPlainLine(line.c_str(), std::strlen(line.c_str()), fields)) return BoundCharge(fields);
  return ScanResultLineWithFormat(line);
}
