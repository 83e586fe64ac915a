#pragma once
#include <cstddef>
#include <istream>
#include <string>

// Line buffers of the file formats hold 8191 characters and a terminator.
constexpr std::size_t kMaxLineLength = 8191;

// Reads the next line without its line end. LF and CRLF end a line alike: one
// carriage return before the newline (or at the end of the file) is removed.
// Returns false when the input is exhausted and no character was read.
// A line longer than `maxLength` is cut to that length, the rest of it is
// consumed, and `tooLong` (when given) is set; callers decide what that means.
bool ReadLine(std::istream& in, std::string& line, bool* tooLong = nullptr,
              std::size_t maxLength = kMaxLineLength);
