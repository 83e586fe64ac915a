#pragma once
#include <map>
#include <string>
#include <vector>

// One [section] of an ini-like file: keys kept in ascending byte order.
struct CConfigSection {
  std::string name;
  std::map<std::string, std::string> entries;
};

// The ini-like text format of the configuration file and of MassTable.ini.
class CConfigFile {
 public:
  // Empties the object and parses the file; a file that can't be opened prints
  // "Error when reading "<name>"." and ends the program with status -1.
  void Read(const std::string& filename);
  // Replaces the file; "Error when writing "<name>"." and status -1 on failure.
  void Write(const std::string& filename) const;
  // Value of the key, "" if section or key are missing. A missing key of an
  // existing section is entered with an empty value.
  std::string Get(const std::string& section, const std::string& key);
  // Stores the value; does nothing if the section doesn't exist.
  void Set(const std::string& section, const std::string& key, const std::string& value);
  // First section of that name, or nullptr.
  CConfigSection* FindSection(const std::string& name);
  const CConfigSection* FindSection(const std::string& name) const;

  std::vector<CConfigSection> sections;
};
