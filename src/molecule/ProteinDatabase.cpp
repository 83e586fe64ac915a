#include "molecule/ProteinDatabase.h"

#include <filesystem>
#include <iostream>

#include "run/InputFailures.h"
#include "run/Process.h"
#include "run/TextLine.h"

namespace {

// FASTA lines are not limited: a whole protein may stand on one line.
constexpr std::size_t kUnlimited = std::string::npos;

// A UTF-8 byte-order mark in front of the first header is no part of it.
void SkipByteOrderMark(std::istream& in) {
  static const char kMark[3] = {'\xEF', '\xBB', '\xBF'};
  for (char expected : kMark) {
    if (in.peek() != static_cast<unsigned char>(expected)) return;
    in.get();
  }
}

// Counts the lines that begin with '>' from the current position to the end.
std::size_t CountHeaders(std::istream& in) {
  std::size_t count = 0;
  bool lineStart = true;
  char buffer[1 << 16];
  while (in) {
    in.read(buffer, sizeof buffer);
    std::streamsize got = in.gcount();
    for (std::streamsize i = 0; i < got; ++i) {
      char c = buffer[i];
      if (lineStart && c == '>') ++count;
      lineStart = (c == '\n');
    }
    if (got == 0) break;
  }
  return count;
}

void AppendResidues(const std::string& line, std::string& sequence) {
  for (char c : line)
    if (c >= 'A' && c <= 'Z') sequence.push_back(c);
}

}  // namespace

bool CProteinDatabase::Load() {
  if (path.empty()) {
    std::cout << "DBPath empty!\n";
    std::cout << "Can not open Fasta file!\n";
    return false;
  }
  // Only a regular file: a directory can't be read, a FIFO or device may never end.
  if (GetPathKind(path) == PathKind::File) stream.open(path, std::ios::binary);
  if (!stream.is_open()) {
    std::cout << "Can't find fasta file!\n";
    NoteInputFailure();
    std::cout << "Can not open Fasta file!\n";
    return false;
  }
  SkipByteOrderMark(stream);
  std::size_t entries = CountHeaders(stream);
  stream.clear();
  stream.seekg(0);
  SkipByteOrderMark(stream);

  // The second pass reads as many entries as the first counted headers: a file
  // without any header loads as an empty database, and each later lookup in
  // it reports its accession as missing.
  CProteinEntry entry;
  for (std::size_t i = 0; i < entries; ++i) {
    if (!ReadEntry(entry)) {
      std::cout << "Error: Fasta file format is wrong!\n";
      stream.close();
      return false;
    }
    proteins[entry.accession] = std::move(entry.sequence);
  }
  stream.close();
  return true;
}

bool CProteinDatabase::ReadEntry(CProteinEntry& entry) {
  std::string line;
  if (!ReadLine(stream, line, nullptr, kUnlimited)) return false;
  while (!line.empty() && line.back() == '\r') line.pop_back();
  if (line.empty() || line[0] != '>') {
    std::cout << "FASTA Format error!One Protein Entry must start with char '>'!\n";
    return false;
  }
  std::size_t blank = line.find(' ');
  if (blank == std::string::npos) {
    entry.accession = line.substr(1);
    entry.description = line;
  } else {
    entry.accession = line.substr(1, blank - 1);
    entry.description = line.substr(blank + 1);
  }
  for (char& c : entry.description)
    if (c == '\x01' || c == '<' || c == '&') c = ' ';

  entry.sequence.clear();
  while (stream.peek() != std::char_traits<char>::eof() && stream.peek() != '>') {
    if (!ReadLine(stream, line, nullptr, kUnlimited)) break;
    AppendResidues(line, entry.sequence);
  }
  return true;
}

bool CProteinDatabase::FindPeptide(const std::string& accession, const std::string& peptide,
                                   int32_t& position, std::string& prevAA,
                                   std::string& lastAA) const {
  if (peptide.empty()) return false;
  auto found = proteins.find(accession);
  if (found == proteins.end()) {
    std::cout << "There is no protein in database owing the AC of " << accession << "\n";
    return false;
  }
  const std::string& protein = found->second;
  std::size_t offset = protein.find(peptide);
  if (offset == std::string::npos) {
    std::cout << "The protein of " << accession << " does not have the peptide " << peptide
              << "\n";
    return false;
  }
  prevAA = offset == 0 ? std::string("-") : protein.substr(offset - 1, 1);
  lastAA = protein.substr(offset + peptide.size(), 2);
  lastAA.append(2 - lastAA.size(), '-');
  position = static_cast<int32_t>(offset + 1);
  return true;
}
