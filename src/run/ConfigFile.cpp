#include "run/ConfigFile.h"

#include <fstream>
#include <iostream>

#include "run/Process.h"
#include "run/SafeOutputFile.h"
#include "run/StringUtil.h"
#include "run/TextLine.h"

namespace {
// Longer lines are cut: no key or value of the system comes near this size,
// and a binary file without line ends must not be read into one string.
constexpr std::size_t kConfigLineLimit = 1 << 16;
}  // namespace

void CConfigFile::Read(const std::string& filename) {
  sections.clear();
  sections.reserve(8);
  // Only a regular file is read: a directory opens like a file on Linux but
  // can't be read, a FIFO blocks on opening and a device never ends.
  std::ifstream in;
  if (GetPathKind(filename) == PathKind::File) in.open(filename, std::ios::binary);
  if (!in.is_open()) {
    std::cout << "Error when reading \"" << filename << "\"." << std::endl;
    ExitProgram(-1);
  }
  std::string line, key, value;
  while (ReadLine(in, line, nullptr, kConfigLineLimit)) {
    std::size_t comment = line.find_first_of("#;");
    if (comment != std::string::npos) line.erase(comment);
    if (line.empty()) continue;
    Trim(line);
    // A line of blanks alone would become an empty key; in the mass table's
    // Glyco section that would be a nameless glycan of mass 0, so it is skipped.
    if (line.empty()) continue;
    if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
      sections.push_back(CConfigSection{line.substr(1, line.size() - 2), {}});
      continue;
    }
    // A key line before the first section header has no section to go to: dropped.
    if (sections.empty()) continue;
    SplitFirst(line, "=", key, value);
    Trim(key);
    Trim(value);
    sections.back().entries[key] = value;
  }
}

void CConfigFile::Write(const std::string& filename) const {
  // Written beside the old file and moved into place when complete, so that a
  // failed write never leaves a cut table behind.
  CSafeOutputFile file;
  bool ok = file.Open(filename, std::ios::binary);
  if (ok) {
    std::ofstream& out = file.Stream();
    for (const CConfigSection& section : sections) {
      out << '[' << section.name << "]\n";
      for (const auto& [key, value] : section.entries) out << key << " = " << value << '\n';
    }
    ok = file.Commit();
  }
  if (!ok) {
    std::cout << "Error when writing \"" << filename << "\"." << std::endl;
    ExitProgram(-1);
  }
}

std::string CConfigFile::Get(const std::string& section, const std::string& key) {
  CConfigSection* found = FindSection(section);
  if (!found) return std::string();
  return found->entries[key];
}

void CConfigFile::Set(const std::string& section, const std::string& key, const std::string& value) {
  CConfigSection* found = FindSection(section);
  if (found) found->entries[key] = value;
}

CConfigSection* CConfigFile::FindSection(const std::string& name) {
  for (CConfigSection& section : sections)
    if (section.name == name) return &section;
  return nullptr;
}

const CConfigSection* CConfigFile::FindSection(const std::string& name) const {
  for (const CConfigSection& section : sections)
    if (section.name == name) return &section;
  return nullptr;
}
