#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>

#include "molecule/PeptideLocator.h"

// What the lookup of the residues behind the peptides found, counted once per
// distinct marked sequence.
struct CFollowingCounts {
  bool used = false;        // motifs_across_cleavage = yes
  uint64_t placed = 0;      // one pair of residues after, at every place
  uint64_t differing = 0;   // places with different residues after: kept as listed
  uint64_t missing = 0;     // in no protein: kept as listed
};

// motifs_across_cleavage: the residues behind each marked peptide, from the
// FASTA file of protein_database, for lists that don't give them. While an
// object is installed, every list reader's records pass through it.
class CFollowingResidues {
 public:
  // Loads the FASTA file and becomes the source of the list readers; a file
  // that can't be read ends the run (status 1) after the database's message.
  void Install(const std::string& fastaPath);
  ~CFollowingResidues();

  // The residues after `sequence` when all its places agree; false otherwise.
  bool Lookup(const std::string& sequence, std::string& after);

  CFollowingCounts counts;

 private:
  std::unique_ptr<CPeptideLocator> locator_;
  // One answer per sequence: a peptide is identified by many spectra.
  std::unordered_map<std::string, std::string> answers_;  // empty: kept as listed
};
