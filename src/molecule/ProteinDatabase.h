#pragma once
#include <cstdint>
#include <fstream>
#include <map>
#include <string>

// One FASTA entry while it is read.
struct CProteinEntry {
  std::string accession;    // header text up to the first blank, without the ">"
  std::string description;  // header text behind the first blank
  std::string sequence;     // upper-case residues only
};

// The proteins of a FASTA file by accession; answers where a peptide lies in a
// protein and which residues flank it. Used by the Lanvek list reader.
class CProteinDatabase {
 public:
  // Reads the whole file at `path`. False (with a message) when the file can't
  // be opened or is malformed; `proteins` then holds the entries read so far.
  bool Load();
  // Finds the first occurrence of `peptide` in the protein of `accession`:
  // 1-based `position`, the residue before ("-" at the N-terminus) and the two
  // residues after ("-" for each place past the C-terminus). False, with a
  // message, when the accession or the peptide is missing; an empty peptide
  // gives false without one.
  bool FindPeptide(const std::string& accession, const std::string& peptide, int32_t& position,
                   std::string& prevAA, std::string& lastAA) const;

  std::string path;
  std::map<std::string, std::string> proteins;

 private:
  // Reads the next entry from `stream`; false when it can't.
  bool ReadEntry(CProteinEntry& entry);

  std::ifstream stream;
};
