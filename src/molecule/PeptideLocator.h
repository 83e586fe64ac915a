#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Finds every place of a peptide in a set of proteins and tells the residues
// that follow it there. Built once per run, so that each identification of a
// large list can be looked up in a whole proteome: the proteins' four-residue
// words are indexed, and a peptide is compared only where its first word stands.
class CPeptideLocator {
 public:
  // What follows a peptide: the same two residues at every place, places that
  // disagree, or no place at all.
  enum class Outcome { Unique, Differing, Missing };

  // Indexes the proteins (accession to sequence, as CProteinDatabase holds them).
  explicit CPeptideLocator(const std::map<std::string, std::string>& proteins);

  // The two residues after `peptide` at all its places, "-" for each place past
  // the protein's end, as CProteinDatabase::FindPeptide gives them; `after` is
  // set only when the outcome is Unique.
  Outcome ResiduesAfter(const std::string& peptide, std::string& after) const;

 private:
  static constexpr std::size_t kWord = 4;
  // The word at `at` as a number, or -1 when a character isn't a letter A to Z.
  static int64_t WordCode(const char* at);
  // Start offsets in `text_` of every place of `peptide`.
  void Places(const std::string& peptide, std::vector<std::size_t>& places) const;

  std::string text_;                // the proteins, each followed by a line end
  std::vector<uint32_t> wordStart_;  // per word code, where its places begin in wordPlaces_
  std::vector<uint32_t> wordPlaces_;
};

// The plain rule that the locator answers faster: every place of `peptide` in
// every protein, with std::string::find.
CPeptideLocator::Outcome ResiduesAfterByScan(const std::map<std::string, std::string>& proteins,
                                            const std::string& peptide, std::string& after);
