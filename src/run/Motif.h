#pragma once
#include <regex>
#include <string>
#include <vector>

// Appends the start offsets (0-based) of all matches of `expression` in `text`,
// overlapping ones included: each search restarts one character behind the
// start of the previous match.
void FindMotifOccurrences(const std::regex& expression, const std::string& text,
                          std::vector<int>& positions);

// The acceptor letters of a motif expression: the characters after its last "["
// up to the "$".
std::string MotifAcceptorLetters(const std::string& motifRegex);
