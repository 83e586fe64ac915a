#include "idlist/SpecListIO.h"

#include <regex>

#include "idlist/ListCounts.h"
#include "run/Motif.h"

void NormalizeParenMods(std::string& text) {
  if (text == "null") {
    text = "-";
    return;
  }
  // One pass that builds the result: a comma drops everything up to and
  // including the next "(" (or the rest of the text without one); a ")" is
  // dropped and the character behind it is kept without a look.
  std::string out;
  out.reserve(text.size());
  const std::size_t n = text.size();
  std::size_t i = 0;
  while (i < n) {
    char c = text[i];
    if (c == ',') {
      out.push_back(',');
      std::size_t open = text.find('(', i + 1);
      if (open == std::string::npos) break;
      i = open + 1;
    } else if (c == ')') {
      if (i + 1 < n) out.push_back(text[i + 1]);
      i += 2;
    } else {
      out.push_back(c);
      ++i;
    }
  }
  text.swap(out);
}

namespace {

bool IsAsparagine(char c) { return c == 'N' || c == 'J'; }

// Motif candidates of `sequence`. The expressions made from the motif list have
// the fixed shape "[NJ][^P][<letters>$]"; those are matched by hand, which is
// far faster than std::regex and finds the same overlapping occurrences. Any
// other expression goes through the regular expression engine.
void FindMotifCandidates(const std::string& motifRegex, const std::string& letters,
                         const std::string& sequence, std::vector<int>& candidates) {
  static const std::string kHead = "[NJ][^P][";
  bool plainShape = motifRegex.size() == kHead.size() + letters.size() + 2 &&
                    motifRegex.compare(0, kHead.size(), kHead) == 0 &&
                    motifRegex.compare(motifRegex.size() - 2, 2, "$]") == 0;
  for (char c : letters) plainShape = plainShape && c >= 'A' && c <= 'Z';
  if (plainShape) {
    for (std::size_t i = 0; i + 2 < sequence.size(); ++i) {
      char third = sequence[i + 2];
      if (IsAsparagine(sequence[i]) && sequence[i + 1] != 'P' &&
          (third == '$' || letters.find(third) != std::string::npos))
        candidates.push_back(static_cast<int>(i));
    }
    return;
  }
  static std::string compiledText;
  static std::regex compiled;
  if (compiledText != motifRegex) {
    compiled = std::regex(motifRegex);
    compiledText = motifRegex;
  }
  FindMotifOccurrences(compiled, sequence, candidates);
}

}  // namespace

bool CarriesSiteMark(const CIdentifiedSpectrum& record, const std::string& removed) {
  const int n = static_cast<int>(record.sequence.size());
  for (const CModification& mod : record.modifications)
    if (mod.position >= 1 && mod.position <= n && mod.name == removed) return true;
  return false;
}

CListCounts& ListCounts() {
  static CListCounts counts;
  return counts;
}

bool MarkGlycosites(CIdentifiedSpectrum& record, const std::string& residuesAfter) {
  record.motifs.clear();
  const CConstructionParam& param = CParam::GetInstance().construction;
  const std::string& removed = param.modification_remove;
  std::string& sequence = record.sequence;
  const int n = static_cast<int>(sequence.size());
  // Both end rules read the last two residues; a shorter peptide can't hold a
  // sequon and is dropped.
  if (n < 2) return false;

  // Only a residue carrying the removed modification can become a site: most
  // records have none, and need no motif search.
  if (!CarriesSiteMark(record, removed)) return false;

  const std::string motifRegex = param.GetMotifRegex();
  const std::string letters = MotifAcceptorLetters(motifRegex);
  std::vector<int> candidates;
  FindMotifCandidates(motifRegex, letters, sequence, candidates);

  // Sequons that reach past the peptide's end.
  const char last = sequence[n - 1];
  const char lastButOne = sequence[n - 2];
  if (residuesAfter == "00") {
    if (IsAsparagine(last)) candidates.push_back(n - 1);
    if (last != 'P' && IsAsparagine(lastButOne)) candidates.push_back(n - 2);
  } else {
    const char after1 = residuesAfter.size() > 0 ? residuesAfter[0] : '-';
    const char after2 = residuesAfter.size() > 1 ? residuesAfter[1] : '-';
    auto acceptor = [&letters](char c) { return letters.find(c) != std::string::npos; };
    if (last == 'J' || (last == 'N' && after1 != 'P' && acceptor(after2)))
      candidates.push_back(n - 1);
    if (IsAsparagine(lastButOne) && last != 'P' && acceptor(after1)) candidates.push_back(n - 2);
  }

  bool marked = false;
  for (int c : candidates) {
    const int q = c + 1;
    for (const CModification& mod : record.modifications) {
      if (mod.position != q || mod.name != removed) continue;
      sequence[c] = 'J';
      std::string sequon = "NX";
      if (q <= n - 2) {
        sequon.push_back(sequence[q + 1]);
      } else if (q == n - 1) {
        if (!record.lastAA.empty()) sequon.push_back(record.lastAA[0]);
      } else if (record.lastAA.size() >= 2) {
        sequon.push_back(record.lastAA[1]);
      }
      // A site in the last place of a list that doesn't know the residues behind
      // the peptide gets "NX" alone, as one in the last-but-one place does.
      record.motifs.push_back({q, std::move(sequon)});
      marked = true;
    }
  }
  return marked;
}

ResiduesAfterLookup& ResiduesAfterSource() {
  static ResiduesAfterLookup source;
  return source;
}

void AddIdentified(std::vector<CIdentifiedSpectrum>& list, CIdentifiedSpectrum& record,
                   const std::string& residuesAfter) {
  CListCounts& counts = ListCounts();
  ++counts.read;
  const std::string* after = &residuesAfter;
  std::string looked;
  if (residuesAfter == "00" && ResiduesAfterSource()) {
    // The reader's record is reused for its next line: what an earlier lookup
    // stored must not stay.
    record.lastAA.clear();
    // Records without the mark are dropped anyway; they need no lookup.
    if (CarriesSiteMark(record, CParam::GetInstance().construction.modification_remove) &&
        ResiduesAfterSource()(record.sequence, looked)) {
      record.lastAA = looked;
      after = &looked;
    }
  }
  if (MarkGlycosites(record, *after)) {
    list.push_back(record);
    ++counts.kept;
  } else if (CarriesSiteMark(record, CParam::GetInstance().construction.modification_remove)) {
    ++counts.notOnSequon;
  } else {
    ++counts.noMark;
  }
}
