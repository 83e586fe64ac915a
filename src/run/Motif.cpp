#include "run/Motif.h"

void FindMotifOccurrences(const std::regex& expression, const std::string& text,
                          std::vector<int>& positions) {
  std::size_t start = 0;
  std::smatch match;
  while (start <= text.size() &&
         std::regex_search(text.cbegin() + static_cast<std::ptrdiff_t>(start), text.cend(), match,
                           expression)) {
    std::size_t found = start + static_cast<std::size_t>(match.position(0));
    positions.push_back(static_cast<int>(found));
    start = found + 1;  // one behind the start: overlapping sequons count
  }
}

std::string MotifAcceptorLetters(const std::string& motifRegex) {
  std::size_t open = motifRegex.rfind('[');
  if (open == std::string::npos) return std::string();
  std::size_t dollar = motifRegex.find('$', open + 1);
  return motifRegex.substr(open + 1, dollar == std::string::npos ? std::string::npos
                                                                  : dollar - open - 1);
}
