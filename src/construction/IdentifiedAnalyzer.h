#pragma once
#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "idlist/PeptideIdentity.h"
#include "run/Param.h"
#include "run/RunPaths.h"
#include "run/SafeOutputFile.h"
#include "spectrum/DatasetIOPool.h"
#include "spectrum/Spectrum.h"

// From identification lists to the non-redundant peptide list of the library,
// and from a peptide's spectra to its consensus spectrum.
class CIdentifiedAnalyzer {
 public:
  // Copies the settings, creates the dataset pool and opens every dataset.
  void Init(const CConstructionParam& settings);
  // Reads every list, assigns datasets and builds `peptides`, with its console lines.
  void LoadIdentified();
  // Empties `peptides` and folds the records into it, in order (steps 7 of LoadIdentified).
  void BuildPeptideList(const std::vector<CIdentifiedSpectrum>& identified);
  // Adds the record's spectrum to the peptide of equal sequence, charge and
  // modifications, or appends a new peptide.
  void AddPeptide(const CIdentifiedSpectrum& record);
  // Replaces each peptide of two or more sites by one peptide per site, at the end.
  void SplitMultiSite();
  // Writes the companion file: one block per peptide, for the first n peptides.
  // It appears under its name only with CommitComposition, so that it never
  // describes a library that was not written. A file that can't be written
  // ends the run with status 1.
  void WriteComposition(std::size_t n);
  void CommitComposition();
  // Drops the companion file written; an earlier one stays as it was.
  void DiscardComposition() { companion.Discard(); }
  // Reads, cleans and merges the peptide's spectra into spectra[0]; false if
  // none could be read.
  bool BuildConsensus(const CIdentifiedPeptide& peptide);
  // Deletes every IO object of the pool, then the pool.
  void ClosePool();

  std::unique_ptr<CDatasetIOPool> pool;
  CConstructionParam param;
  std::vector<CIdentifiedPeptide> peptides;
  CIdentifiedPeptide current;
  std::vector<CSpectrum> spectra;
  uint64_t spectraNotFound = 0;  // spectra of the peptides that could not be read

 private:
  CSafeOutputFile companion;
  // Index of `peptides` by peptide key, so that AddPeptide stays near constant
  // time; valid for the first `indexedPeptides` entries.
  std::unordered_map<std::string, std::size_t> peptideIndex;
  std::size_t indexedPeptides = 0;
  std::string keyBuffer;

  void RebuildIndex();
};

// Cleans the spectra of one peptide and merges them into spectra[0], the
// consensus (spectra must not be empty).
void MergeIntoConsensus(std::vector<CSpectrum>& spectra, const CConstructionParam& param);

// Exact key of a library peptide: sequence, charge and the modification list,
// each part length-prefixed so that two different peptides never share a key.
void MakePeptideKey(const CPeptideIdentity& peptide, std::string& key);

