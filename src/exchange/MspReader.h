#pragma once
#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

// One peak line of an MSP record: m/z, intensity and the quoted annotation.
struct CMspPeak {
  double mz = 0.0;
  double intensity = 0.0;
  std::string annotation;  // without its quotes; empty when the line has none
};

// One record of a NIST MSP library.
struct CMspRecord {
  std::size_t number = 0;  // 1-based place in the file
  std::string name;        // the Name: value
  std::map<std::string, std::string> fields;   // other "Key: value" lines (MW, ...)
  std::map<std::string, std::string> comment;  // key=value items of the Comment: line
  std::vector<CMspPeak> peaks;

  // "record 3 (PEPTIDE/2)": how messages name it.
  std::string Label() const;
};

// Reads an MSP file record by record and hands each sound record to
// `onRecord`. A faulty record (no Num peaks line, peaks out of m/z order, a
// peak line that is no pair of numbers, a record cut before its last peak) is
// reported with a message naming it and passed over; the records after it
// are read. Binary data ends the reading with a message. Returns the number
// of faulty records; false in `opened` when the file can't be read.
std::size_t ReadMspFile(const std::string& path,
                        const std::function<void(const CMspRecord&)>& onRecord, bool& opened);

// Splits a Comment: value into key=value items; a value may be quoted.
std::map<std::string, std::string> ParseMspComment(const std::string& text);
