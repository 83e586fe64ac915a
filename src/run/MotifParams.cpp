// The two list keys of the construction section: N-glycosylation sequons and the
// core Y ions added to library spectra.
#include <iostream>
#include <string>
#include <vector>

#include "run/Param.h"
#include "run/Process.h"
#include "run/StringUtil.h"

namespace {

struct CMotifKeyword {
  const char* keyword;
  char acceptor;  // the residue two behind the asparagine
};

// Indexed by motif code.
constexpr CMotifKeyword kMotifs[] = {{"NXS", 'S'}, {"NXT", 'T'}, {"NXC", 'C'}, {"NXV", 'V'}};
constexpr int32_t kMotifCount = static_cast<int32_t>(sizeof kMotifs / sizeof kMotifs[0]);

constexpr unsigned kHighestYIon = 5;

std::string AcceptorLetters(const std::vector<int32_t>& motifs) {
  std::string letters;
  letters.reserve(motifs.size());
  for (int32_t code : motifs)
    if (code >= 0 && code < kMotifCount) letters.push_back(kMotifs[code].acceptor);
  return letters;
}

}  // namespace

void CConstructionParam::ParseNGlycanMotifs(const std::string& value) {
  N_glycan_motifs.clear();
  std::vector<std::string> pieces;
  Split(value, ",", pieces);
  for (std::string& piece : pieces) {
    Trim(piece);
    int32_t code = 0;
    while (code < kMotifCount && piece != kMotifs[code].keyword) ++code;
    if (code == kMotifCount) {
      std::cout << "The input N-linked Glycan motif " << piece << "is not valid, please check!"
                << std::endl;
      ExitProgram(1);
    }
    N_glycan_motifs.push_back(code);
  }
}

void CConstructionParam::ParseAddedYIons(const std::string& value) {
  added_Y_ions.clear();
  std::vector<std::string> pieces;
  Split(value, ",", pieces);
  for (std::string& piece : pieces) {
    Trim(piece);
    // Only "Y" followed by a digit counts; anything else is dropped silently and
    // only the first digit is read.
    if (piece.size() < 2 || piece[0] != 'Y' || piece[1] < '0' || piece[1] > '9') continue;
    unsigned number = static_cast<unsigned>(piece[1] - '0');
    if (number > kHighestYIon) {
      std::cout << "The valid Y ions are Y0-Y5, but the input is " << piece << std::endl;
      ExitProgram(1);
    }
    added_Y_ions.push_back(number);
  }
}

std::string CConstructionParam::GetMotifRegex() const {
  // The "$" inside the bracket is a literal: the expression isn't anchored.
  std::string expression = "[NJ][^P][";
  expression += AcceptorLetters(N_glycan_motifs);
  expression += "$]";
  return expression;
}

std::string CConstructionParam::GetReverseMotifRegex() const {
  // Built piece by piece: g++ 12 warns falsely on "literal" + string here.
  std::string expression = "[";
  expression += AcceptorLetters(N_glycan_motifs);
  expression += "][^P][NJ]";
  return expression;
}
