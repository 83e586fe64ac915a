#pragma once
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "molecule/Modification.h"
#include "run/Param.h"

// One line of a finished run's result file, as the exchange formats need it.
struct CExportedHit {
  std::vector<std::string> fields;  // the line's columns, as written
  std::string query;
  std::string sequence;             // J at the site, as in the result file
  std::vector<CModification> modifications;
  uint32_t charge = 0;
  double queryMH = 0.0, libraryMH = 0.0, glycanMass = 0.0;
  std::string glycanName;           // Hex-HexNAc-NeuAc-NeuGc-dHex counts
  int32_t site = 0;                 // 1-based; 0 when the line gives none
  bool decoy = false;
  std::string protein, prevAA, lastAA;
  int32_t start = 0;
  std::map<std::string, std::string> qvalues;  // column -> value, from the q-value file
  // The query spectrum: which of the run's query files and its ID there.
  std::size_t spectraFile = 0;
  std::string spectrumId;
  int64_t spectrumIndex = -1;       // 0-based place in its file, -1 where unknown

  // The peptide as other tools spell it: N in place of the site mark J.
  std::string PlainSequence() const;
};

// The identifications of a finished run: every line of its result file, with
// the q-values where the run wrote them.
struct CExportedRun {
  std::string resultPath;
  std::string qvaluePath;          // empty when the run wrote none
  std::vector<std::string> header; // the result file's column names
  std::vector<std::string> qvalueColumns;
  std::vector<CExportedHit> hits;
};

// Reads the result file of the run `settings` describe, and its q-value file
// when glycopeptide_fdr = yes wrote one. False, with `error`, when the result
// file is missing (the run has not finished), can't be read or holds a line
// without the 27 columns of a result line.
bool ReadExportedRun(const CSearchParam& settings, CExportedRun& run, std::string& error);

// "HexNAc(4)Hex(5)NeuAc(1)" from the counts "5-4-1-0-0": the order and names
// other glycoproteomics tools print, zero counts left out.
std::string GlycanCompositionText(const std::string& countsName);
