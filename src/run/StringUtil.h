#pragma once
#include <string>
#include <vector>

// String helpers used across the whole program.

// Removes leading and trailing blanks, tabs and carriage returns (not newlines).
void Trim(std::string& text);
// Splits at the first occurrence of `separator`; without one, left = text, right = "".
void SplitFirst(const std::string& text, const std::string& separator, std::string& left,
                std::string& right);
// Appends the pieces between occurrences of `separator`. Empty inner pieces count,
// an empty piece after a trailing separator does not, an empty text gives nothing.
void Split(const std::string& text, const std::string& separator, std::vector<std::string>& pieces);
// Lower-cases in place, character by character.
void ToLower(std::string& text);
// False unless the affix is strictly shorter than the text; then compares the end
// (suffix) or the start (prefix), lower-casing both when not case-sensitive.
bool HasAffix(bool suffix, bool caseSensitive, const std::string& text, const std::string& affix);
