#pragma once
#include <charconv>
#include <cstdint>
#include <string>

// Number text of the output files, appended without streams or locales.

inline void AppendUnsigned(std::string& out, uint64_t value) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, result.ptr);
}

inline void AppendSigned(std::string& out, int64_t value) {
  char digits[24];
  const auto result = std::to_chars(digits, digits + sizeof digits, value);
  out.append(digits, result.ptr);
}

// Fixed notation with `precision` digits after the point: the same text as
// printf's "%.*f", and so as a stream in fixed mode.
inline void AppendFixed(std::string& out, double value, int precision) {
  char digits[400];  // room for the largest double in fixed notation
  const auto result =
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, precision);
  if (result.ec == std::errc()) out.append(digits, result.ptr);
  else out += std::to_string(value);  // not reached: 400 characters hold any double
}
