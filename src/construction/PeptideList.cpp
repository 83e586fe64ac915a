// The non-redundant peptide list: folding identified spectra into peptides and
// splitting multi-site peptides.
#include <algorithm>
#include <cstdint>

#include "construction/IdentifiedAnalyzer.h"

namespace {

void AppendNumber(std::string& key, uint64_t value) {
  key.append(std::to_string(value));
  key.push_back(':');
}

void AppendText(std::string& key, const std::string& text) {
  AppendNumber(key, text.size());
  key.append(text);
}

}  // namespace

void MakePeptideKey(const CPeptideIdentity& peptide, std::string& key) {
  key.clear();
  AppendText(key, peptide.sequence);
  key.append(std::to_string(peptide.charge));
  key.push_back(':');
  AppendNumber(key, peptide.modifications.size());
  for (const CModification& mod : peptide.modifications) {
    key.append(std::to_string(mod.position));
    key.push_back(':');
    AppendText(key, mod.name);
  }
}

void CIdentifiedAnalyzer::RebuildIndex() {
  peptideIndex.clear();
  peptideIndex.reserve(peptides.size());
  for (std::size_t i = 0; i < peptides.size(); ++i) {
    MakePeptideKey(peptides[i], keyBuffer);
    peptideIndex.emplace(keyBuffer, i);  // the first of equal peptides answers
  }
  indexedPeptides = peptides.size();
}

void CIdentifiedAnalyzer::BuildPeptideList(const std::vector<CIdentifiedSpectrum>& identified) {
  peptides.clear();
  peptideIndex.clear();
  indexedPeptides = 0;
  peptideIndex.reserve(identified.size());
  for (const CIdentifiedSpectrum& record : identified) AddPeptide(record);
}

void CIdentifiedAnalyzer::AddPeptide(const CIdentifiedSpectrum& record) {
  // A hash of the exact key replaces the walk over all peptides; the first
  // peptide with an equal key is the one the walk would have found.
  if (indexedPeptides != peptides.size()) RebuildIndex();
  MakePeptideKey(record, keyBuffer);
  auto found = peptideIndex.find(keyBuffer);
  if (found != peptideIndex.end()) {
    peptides[found->second].spectra.push_back({record.spectrumName, record.datasetIndex});
    return;
  }
  static_cast<CPeptideIdentity&>(current) = record;
  current.spectra.clear();
  current.spectra.push_back({record.spectrumName, record.datasetIndex});
  peptides.push_back(current);
  peptideIndex.emplace(keyBuffer, peptides.size() - 1);
  indexedPeptides = peptides.size();
}

void CIdentifiedAnalyzer::SplitMultiSite() {
  // One pass that keeps the single-site peptides in order and collects the
  // split ones behind them: the same list as removing each multi-site peptide
  // in place and appending its copies at the end, without the quadratic erase.
  std::vector<CIdentifiedPeptide> kept;
  std::vector<CIdentifiedPeptide> split;
  kept.reserve(peptides.size());
  std::vector<std::size_t> offsets;
  for (CIdentifiedPeptide& peptide : peptides) {
    if (std::count(peptide.sequence.begin(), peptide.sequence.end(), 'J') < 2) {
      kept.push_back(std::move(peptide));
      continue;
    }
    std::string work = peptide.sequence;
    offsets.clear();
    for (std::size_t i = 0; i < work.size(); ++i) {
      if (work[i] == 'J') {
        offsets.push_back(i);
        work[i] = 'N';
      }
    }
    for (std::size_t offset : offsets) {
      split.push_back(peptide);
      work[offset] = 'J';
      split.back().sequence = work;
      work[offset] = 'N';
    }
  }
  for (CIdentifiedPeptide& peptide : split) kept.push_back(std::move(peptide));
  peptides = std::move(kept);
  peptideIndex.clear();
  indexedPeptides = 0;
}
