#include "molecule/PeptideLocator.h"

#include <cstring>

namespace {

constexpr char kEnd = '\n';  // stands between proteins; never part of a peptide

// The two residues from `at` on, "-" for each place past the protein's end.
std::string TwoAfter(const std::string& text, std::size_t at) {
  std::string after = "--";
  for (std::size_t k = 0; k < 2 && at + k < text.size() && text[at + k] != kEnd; ++k) after[k] = text[at + k];
  return after;
}

// Folds the residues after one more place into the outcome so far.
void Fold(const std::string& next, CPeptideLocator::Outcome& outcome, std::string& after) {
  using Outcome = CPeptideLocator::Outcome;
  if (outcome == Outcome::Missing) {
    outcome = Outcome::Unique;
    after = next;
  } else if (outcome == Outcome::Unique && after != next) {
    outcome = Outcome::Differing;
  }
}

}  // namespace

CPeptideLocator::CPeptideLocator(const std::map<std::string, std::string>& proteins) {
  std::size_t total = 0;
  for (const auto& entry : proteins) total += entry.second.size() + 1;
  text_.reserve(total);
  for (const auto& entry : proteins) {
    text_ += entry.second;
    text_ += kEnd;
  }
  // Counting sort of the places by word: one pass counts, one pass places.
  const std::size_t codes = std::size_t{1} << (5 * kWord);
  wordStart_.assign(codes + 1, 0);
  const std::size_t last = text_.size() < kWord ? 0 : text_.size() - kWord + 1;
  for (std::size_t i = 0; i < last; ++i) {
    const int64_t code = WordCode(text_.data() + i);
    if (code >= 0) ++wordStart_[static_cast<std::size_t>(code) + 1];
  }
  for (std::size_t c = 0; c < codes; ++c) wordStart_[c + 1] += wordStart_[c];
  wordPlaces_.resize(wordStart_[codes]);
  std::vector<uint32_t> next(wordStart_.begin(), wordStart_.end() - 1);
  for (std::size_t i = 0; i < last; ++i) {
    const int64_t code = WordCode(text_.data() + i);
    if (code >= 0) wordPlaces_[next[static_cast<std::size_t>(code)]++] = static_cast<uint32_t>(i);
  }
}

int64_t CPeptideLocator::WordCode(const char* at) {
  int64_t code = 0;
  for (std::size_t i = 0; i < kWord; ++i) {
    const char c = at[i];
    if (c < 'A' || c > 'Z') return -1;
    code = (code << 5) | (c - 'A');
  }
  return code;
}

void CPeptideLocator::Places(const std::string& peptide, std::vector<std::size_t>& places) const {
  places.clear();
  if (peptide.empty() || peptide.find(kEnd) != std::string::npos) return;
  if (peptide.size() < kWord) {  // too short for the index: the plain search
    for (std::size_t at = text_.find(peptide); at != std::string::npos; at = text_.find(peptide, at + 1))
      places.push_back(at);
    return;
  }
  const int64_t code = WordCode(peptide.data());
  if (code < 0) return;  // the proteins hold letters only
  for (uint32_t k = wordStart_[static_cast<std::size_t>(code)]; k < wordStart_[static_cast<std::size_t>(code) + 1];
       ++k) {
    const std::size_t at = wordPlaces_[k];
    if (at + peptide.size() <= text_.size() &&
        std::memcmp(text_.data() + at + kWord, peptide.data() + kWord, peptide.size() - kWord) == 0)
      places.push_back(at);
  }
}

CPeptideLocator::Outcome CPeptideLocator::ResiduesAfter(const std::string& peptide,
                                                        std::string& after) const {
  std::vector<std::size_t> places;
  Places(peptide, places);
  Outcome outcome = Outcome::Missing;
  std::string found;
  for (std::size_t at : places) Fold(TwoAfter(text_, at + peptide.size()), outcome, found);
  if (outcome == Outcome::Unique) after = found;
  return outcome;
}

CPeptideLocator::Outcome ResiduesAfterByScan(const std::map<std::string, std::string>& proteins,
                                            const std::string& peptide, std::string& after) {
  using Outcome = CPeptideLocator::Outcome;
  Outcome outcome = Outcome::Missing;
  std::string found;
  if (!peptide.empty()) {
    for (const auto& [accession, protein] : proteins) {
      for (std::size_t at = protein.find(peptide); at != std::string::npos; at = protein.find(peptide, at + 1)) {
        std::string next = protein.substr(at + peptide.size(), 2);
        next.append(2 - next.size(), '-');
        Fold(next, outcome, found);
      }
    }
  }
  if (outcome == Outcome::Unique) after = found;
  return outcome;
}
