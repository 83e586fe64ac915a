#include "spectrum/ScanFormat.h"

#include <charconv>
#include <cstdarg>
#include <cstdint>
#include <cstdio>

namespace {

constexpr int kUnusual = -1000;  // the fast path declines; sscanf decides

inline bool IsSpace(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
inline bool IsSeparator(char c) { return c == ' ' || c == ',' || c == '\t'; }
inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// After a plain decimal number, a character that no scanf conversion of a
// floating number could take in.
inline bool EndsNumber(const char* p, const char* e) {
  if (p == e) return true;
  const char c = *p;
  return c == '\0' || IsSpace(c) || c == ',' || c == ';';
}

inline void SkipSpace(const char*& p, const char* e) {
  while (p < e && IsSpace(*p)) ++p;
}

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// "%lf" at p: 1 assigned, 0 no number (a C string would fail here too), or kUnusual.
int FastDouble(const char*& p, const char* e, double& value) {
  SkipSpace(p, e);
  if (p == e || *p == '\0') return 0;
  const char* start = p;
  const char* q = p;
  const bool negative = *q == '-';
  if (negative) ++q;
  std::size_t digits = 0;
  uint64_t mantissa = 0;  // exact while digits <= 19
  int scale = 0;          // power of ten to apply to the mantissa
  while (q < e && IsDigit(*q)) {
    mantissa = mantissa * 10 + static_cast<uint64_t>(*q - '0');
    ++q, ++digits;
  }
  if (q < e && *q == '.') {
    ++q;
    while (q < e && IsDigit(*q)) {
      mantissa = mantissa * 10 + static_cast<uint64_t>(*q - '0');
      ++q, ++digits, --scale;
    }
  }
  if (digits == 0) {
    const char c = *start;
    if (c == '-' || c == '+' || c == '.' || c == 'i' || c == 'I' || c == 'n' || c == 'N') {
      return kUnusual;
    }
    return 0;
  }
  if (q < e && (*q == 'e' || *q == 'E')) {
    const char* x = q + 1;
    const bool negativeExponent = x < e && *x == '-';
    if (x < e && (*x == '+' || *x == '-')) ++x;
    if (x == e || !IsDigit(*x)) return kUnusual;  // scanf and strtod disagree on "1e"
    int exponent = 0;
    while (x < e && IsDigit(*x)) {
      if (exponent < 100000) exponent = exponent * 10 + (*x - '0');
      ++x;
    }
    scale += negativeExponent ? -exponent : exponent;
    q = x;
  }
  if (!EndsNumber(q, e)) return kUnusual;
  // Clinger's fast path: an exact mantissa below 2^53 and an exact power of
  // ten give the correctly rounded result in one IEEE operation, the value
  // strtod gives. Everything else goes through from_chars.
  if (digits <= 19 && mantissa <= (uint64_t{1} << 53) && scale >= -22 && scale <= 22) {
    double parsed = static_cast<double>(mantissa);
    parsed = scale < 0 ? parsed / kPowersOfTen[-scale] : parsed * kPowersOfTen[scale];
    value = negative ? -parsed : parsed;
    p = q;
    return 1;
  }
  double parsed = 0.0;
  const auto result = std::from_chars(start, q, parsed);
  if (result.ec != std::errc() || result.ptr != q) return kUnusual;  // overflow and the like
  value = parsed;
  p = q;
  return 1;
}

// "%d" at p: 1 assigned, 0 no number, or kUnusual (sign '+', more than 9 digits).
int FastInt(const char*& p, const char* e, int& value) {
  SkipSpace(p, e);
  if (p == e || *p == '\0') return 0;
  const char* q = p;
  const bool negative = *q == '-';
  if (negative) ++q;
  int parsed = 0;
  std::size_t digits = 0;
  while (q < e && IsDigit(*q)) {
    if (++digits > 9) return kUnusual;
    parsed = parsed * 10 + (*q - '0');
    ++q;
  }
  if (digits == 0) return (*p == '-' || *p == '+') ? kUnusual : 0;
  value = negative ? -parsed : parsed;
  p = q;
  return 1;
}

// "%*[ ,\t]": at least one separator.
inline bool SkipSeparators(const char*& p, const char* e) {
  const char* start = p;
  while (p < e && IsSeparator(*p)) ++p;
  return p != start;
}

int Fallback(std::string_view line, const char* format, ...) {
  // The copy ends at a NUL byte of the line, as the C string of a line buffer did.
  static thread_local std::string text;
  text.assign(line.data(), line.size());
  va_list args;
  va_start(args, format);
  const int n = std::vsscanf(text.c_str(), format, args);
  va_end(args);
  return n < 0 ? 0 : n;
}

// Matches `key` at the start of the line; p moves behind it.
inline bool MatchKey(std::string_view line, std::string_view key, const char*& p) {
  if (line.size() < key.size()) return false;
  for (std::size_t i = 0; i < key.size(); ++i) {
    if (line[i] != key[i] || line[i] == '\0') return false;
  }
  p = line.data() + key.size();
  return true;
}

}  // namespace

int ScanPeakLine(std::string_view line, double& mz, double& intensity) {
  static const char* const kFormat = "%lf%*[ ,\t]%lf";
  const char* p = line.data();
  const char* e = p + line.size();
  int r = FastDouble(p, e, mz);
  if (r == kUnusual) return Fallback(line, kFormat, &mz, &intensity);
  if (r == 0) return 0;
  if (!SkipSeparators(p, e)) return 1;
  r = FastDouble(p, e, intensity);
  if (r == kUnusual) return Fallback(line, kFormat, &mz, &intensity);
  return 1 + r;
}

int ScanMassCharge(std::string_view line, double& mass, int& charge) {
  static const char* const kFormat = "%lf%*[ ,\t]%d";
  const char* p = line.data();
  const char* e = p + line.size();
  int r = FastDouble(p, e, mass);
  if (r == kUnusual) return Fallback(line, kFormat, &mass, &charge);
  if (r == 0) return 0;
  if (!SkipSeparators(p, e)) return 1;
  r = FastInt(p, e, charge);
  if (r == kUnusual) return Fallback(line, kFormat, &mass, &charge);
  return 1 + r;
}

int ScanLibraryPeak(std::string_view line, double& mz, double& intensity, int& count, int& type,
                    int& position, int& charge) {
  static const char* const kFormat =
      "%lf%*[ ,\t]%lf%*[ ,\t]%d%*[ ,\t]%d%*[ ,\t]%d%*[ ,\t]%d";
  const char* p = line.data();
  const char* e = p + line.size();
  double* doubles[2] = {&mz, &intensity};
  int* ints[4] = {&count, &type, &position, &charge};
  int assigned = 0;
  for (int field = 0; field < 6; ++field) {
    if (field > 0 && !SkipSeparators(p, e)) return assigned;
    const int r = field < 2 ? FastDouble(p, e, *doubles[field]) : FastInt(p, e, *ints[field - 2]);
    if (r == kUnusual) {
      return Fallback(line, kFormat, &mz, &intensity, &count, &type, &position, &charge);
    }
    if (r == 0) return assigned;
    ++assigned;
  }
  return assigned;
}

bool ScanKeyWord(std::string_view line, std::string_view key, std::string& word) {
  const char* p = nullptr;
  if (!MatchKey(line, key, p)) return false;
  const char* e = line.data() + line.size();
  SkipSpace(p, e);
  const char* start = p;
  while (p < e && *p != '\0' && !IsSpace(*p)) ++p;
  if (p == start) return false;
  word.assign(start, static_cast<std::size_t>(p - start));
  return true;
}

bool ScanKeyInt(std::string_view line, std::string_view key, int& value) {
  const char* p = nullptr;
  if (!MatchKey(line, key, p)) return false;
  const char* e = line.data() + line.size();
  const int r = FastInt(p, e, value);
  if (r == kUnusual) {
    return Fallback(line.substr(key.size()), "%d", &value) == 1;
  }
  return r == 1;
}

bool ScanKeyDouble(std::string_view line, std::string_view key, double& value) {
  const char* p = nullptr;
  if (!MatchKey(line, key, p)) return false;
  const char* e = line.data() + line.size();
  const int r = FastDouble(p, e, value);
  if (r == kUnusual) {
    return Fallback(line.substr(key.size()), "%lf", &value) == 1;
  }
  return r == 1;
}
