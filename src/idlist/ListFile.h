#pragma once
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

// Helpers shared by the line-based list readers.

// Opens a list for reading and steps over a UTF-8 byte-order mark. On failure
// prints "Error when opening "<path>"." and returns false.
bool OpenListFile(const std::string& path, std::ifstream& in);

// Splits `line` into runs of non-white-space characters, as a chain of "%s"
// conversions of scanf sees them; stops after `maxTokens`. Returns the count.
std::size_t ScanTokens(std::string_view line, std::size_t maxTokens,
                       std::vector<std::string_view>& tokens);

// atoi of a piece of text: leading white space, an optional sign, digits.
int ParseInt(std::string_view text);

struct CIdentifiedSpectrum;

// Hands a modification text to ParseModifications for the record. A text that
// breaks the form (an entry without its comma or semicolon) can't be trusted:
// the record is reported with a warning and the caller skips it (false).
bool ParseRecordModifications(const std::string& text, CIdentifiedSpectrum& record);
