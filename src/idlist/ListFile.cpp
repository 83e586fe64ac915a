#include "idlist/ListFile.h"

#include <cctype>
#include <climits>
#include <iostream>

#include "run/InputFailures.h"
#include "run/Process.h"

bool OpenListFile(const std::string& path, std::ifstream& in) {
  // Only regular files are lists: a FIFO would block and a device never end.
  if (GetPathKind(path) == PathKind::File) in.open(path, std::ios::binary);
  if (!in.is_open()) {
    std::cout << "Error when opening \"" << path << "\"." << std::endl;
    NoteInputFailure();
    return false;
  }
  static const char kMark[3] = {'\xEF', '\xBB', '\xBF'};
  for (char expected : kMark) {
    if (in.peek() != static_cast<unsigned char>(expected)) break;
    in.get();
  }
  return true;
}

namespace {
bool IsSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
}  // namespace

std::size_t ScanTokens(std::string_view line, std::size_t maxTokens,
                       std::vector<std::string_view>& tokens) {
  tokens.clear();
  std::size_t i = 0;
  const std::size_t n = line.size();
  while (tokens.size() < maxTokens) {
    while (i < n && IsSpace(line[i])) ++i;
    if (i == n) break;
    std::size_t start = i;
    while (i < n && !IsSpace(line[i])) ++i;
    tokens.push_back(line.substr(start, i - start));
  }
  return tokens.size();
}

int ParseInt(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && IsSpace(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  long long value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = value * 10 + (text[i] - '0');
    if (value > INT_MAX) value = static_cast<long long>(INT_MAX) + 1;  // saturate, no overflow
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

#include "idlist/PeptideIdentity.h"

bool ParseRecordModifications(const std::string& text, CIdentifiedSpectrum& record) {
  if (ParseModifications(text, record.modifications)) return true;
  std::cout << "[Warning]: The modifications \"" << text << "\" of the spectrum "
            << record.spectrumName << " are malformed! This result will be discarded!\n";
  record.modifications.clear();
  return false;
}
