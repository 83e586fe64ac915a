#pragma once
#include <string>
#include <string_view>

// The scanf patterns of the spectrum formats, applied to one line. Each gives
// the result that std::sscanf gives on the line's text (up to a NUL byte, as a
// C string ends): the count of fields assigned, fields after the first failing
// one left untouched. Plain decimal numbers take a fast path (std::from_chars
// gives the same correctly rounded value as strtod); anything unusual (signs
// with '+', inf, nan, hex, exponents without digits, very long integers) is
// handed to std::sscanf itself.

// "%lf%*[ ,\t]%lf": a peak line, m/z then intensity.
int ScanPeakLine(std::string_view line, double& mz, double& intensity);

// "%lf%*[ ,\t]%d": the first line of a DTA body, [M+H]+ then charge.
int ScanMassCharge(std::string_view line, double& mass, int& charge);

// "%lf%*[ ,\t]%lf%*[ ,\t]%d%*[ ,\t]%d%*[ ,\t]%d%*[ ,\t]%d": a library peak line.
int ScanLibraryPeak(std::string_view line, double& mz, double& intensity, int& count, int& type,
                    int& position, int& charge);

// "<key>%s": the key must stand at the start of the line exactly; the word is
// what follows up to the first white space, leading white space skipped.
// False (and `word` untouched) when the key differs or no word follows.
bool ScanKeyWord(std::string_view line, std::string_view key, std::string& word);

// "<key>%d" and "<key>%lf" (any text behind the number is ignored).
bool ScanKeyInt(std::string_view line, std::string_view key, int& value);
bool ScanKeyDouble(std::string_view line, std::string_view key, double& value);
