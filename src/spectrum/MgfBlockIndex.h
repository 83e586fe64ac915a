#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "spectrum/LineReader.h"

// The index of an MGF file: one entry per block from "BEGIN IONS" to
// "END IONS", named by the TITLE inside it (the text up to the first blank).
// Lines outside blocks (BASE PEAK M/Z=, TOTAL ION CURRENT=, ...) open nothing.
// A block whose title repeats another's or that has none would lose a
// spectrum or pair it with the wrong name; such a block is named
// <stem>.<scan>.<scan>.<charge> instead, as the mzML reader names untitled
// spectra, where the scan is its SCANS= value, the scan number in its title
// (scan=, scans: "N", index=, spectrum=, scanId=) or its block number.
class CMgfBlockIndex {
 public:
  struct Block {
    int64_t position = 0;   // after the opening line
    int64_t line = 0;       // of the opening line, from 1
    uint32_t number = 0;    // from 1, in file order
    std::string title;      // empty without a usable TITLE line
    std::string scans;      // SCANS= value
    int64_t charge = 0;     // CHARGE= as read; 0 without one
    bool titleSeen = false, hasCharge = false, hasPrecursor = false;
  };

  // Reads the whole file once and names its blocks; `stem` is the file name up
  // to its last point.
  void Build(CLineReader& input, const std::string& stem);
  const std::map<std::string, int64_t>& Positions() const { return positions_; }
  // One line on what was renamed or lacks a charge or precursor (counts and
  // the first few blocks); empty for a file without any of that.
  std::string Report() const;

 private:
  void NameBlocks(CLineReader& input, const std::string& stem);

  std::vector<Block> blocks_;
  std::map<std::string, int64_t> positions_;
  uint32_t renamed_ = 0, untitled_ = 0, repeated_ = 0, noCharge_ = 0, badCharge_ = 0, noPrecursor_ = 0;
  std::vector<std::string> examples_;  // the first few blocks reported
};
