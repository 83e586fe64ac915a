#include "run/StringUtil.h"

#include <cctype>

namespace {
bool IsTrimmed(char c) { return c == ' ' || c == '\t' || c == '\r'; }
}  // namespace

void Trim(std::string& text) {
  std::size_t end = text.size();
  while (end > 0 && IsTrimmed(text[end - 1])) --end;
  std::size_t begin = 0;
  while (begin < end && IsTrimmed(text[begin])) ++begin;
  text.erase(end);
  text.erase(0, begin);
}

void SplitFirst(const std::string& text, const std::string& separator, std::string& left,
                std::string& right) {
  std::size_t at = text.find(separator);
  if (at == std::string::npos) {
    std::string whole = text;  // text may alias left or right
    right.clear();
    left = std::move(whole);
    return;
  }
  std::string l = text.substr(0, at);
  std::string r = text.substr(at + separator.size());
  left = std::move(l);
  right = std::move(r);
}

void Split(const std::string& text, const std::string& separator, std::vector<std::string>& pieces) {
  if (separator.empty()) {
    if (!text.empty()) pieces.push_back(text);
    return;
  }
  std::size_t start = 0;
  for (std::size_t at; (at = text.find(separator, start)) != std::string::npos;
       start = at + separator.size()) {
    pieces.push_back(text.substr(start, at - start));
  }
  if (start < text.size()) pieces.push_back(text.substr(start));
}

void ToLower(std::string& text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool HasAffix(bool suffix, bool caseSensitive, const std::string& text, const std::string& affix) {
  if (affix.size() >= text.size()) return false;
  std::string part = suffix ? text.substr(text.size() - affix.size()) : text.substr(0, affix.size());
  std::string wanted = affix;
  if (!caseSensitive) {
    ToLower(part);
    ToLower(wanted);
  }
  return part == wanted;
}
