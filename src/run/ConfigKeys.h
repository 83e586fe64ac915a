#pragma once
#include <string>
#include <vector>

#include "run/ConfigFile.h"

// What a configuration key holds, for the checks of the command line.
enum class KeyKind { Switch, Text, Keyword, Path, Integer, Number };

// One key of the configuration file, with what the user is told about it.
struct CConfigKey {
  const char* section;
  const char* key;  // an indexed key ends in "_N": N is 1, 2, ...
  KeyKind kind;
  const char* example;  // the value the template shows
  const char* help;     // meaning, unit, accepted values; one line
};

// Every key the program reads, in reading order.
const std::vector<CConfigKey>& ConfigKeys();

// The key of a section, indexed keys matched by their stem; nullptr if unknown.
const CConfigKey* FindConfigKey(const std::string& section, const std::string& key);

// Keys of the sections "construction" and "search" that the program does not read.
std::vector<std::pair<std::string, std::string>> UnknownConfigKeys(const CConfigFile& config);

// A complete configuration with every key and one comment line each.
std::string ConfigTemplate();

// Whether the whole text is a number (integer: a whole number).
bool IsNumberText(const std::string& text, bool integer);
