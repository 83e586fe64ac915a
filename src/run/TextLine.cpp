#include "run/TextLine.h"

#include <cstdio>

bool ReadLine(std::istream& in, std::string& line, bool* tooLong, std::size_t maxLength) {
  line.clear();
  if (tooLong) *tooLong = false;
  std::istream::sentry ok(in, true);
  if (!ok) return false;
  std::streambuf* buffer = in.rdbuf();
  bool readAny = false;
  bool cut = false;
  // One character more than the limit is kept so that a CR right behind a line
  // of exactly maxLength characters is still recognised as part of the line end.
  // A read error (a directory opened as a file, an I/O fault) ends the line
  // like the end of the input: libstdc++ reports it by throwing from underflow.
  try {
    for (;;) {
      int c = buffer->sbumpc();
      if (c == std::char_traits<char>::eof()) {
        in.setstate(std::ios::eofbit);
        break;
      }
      readAny = true;
      if (c == '\n') break;
      if (line.size() <= maxLength) line.push_back(static_cast<char>(c));
      else cut = true;
    }
  } catch (const std::ios_base::failure&) {
    in.setstate(std::ios::eofbit);
  }
  if (!readAny) {
    in.setstate(std::ios::failbit);
    return false;
  }
  if (!cut && !line.empty() && line.back() == '\r') line.pop_back();
  if (line.size() > maxLength) {
    line.resize(maxLength);
    cut = true;
  }
  if (tooLong) *tooLong = cut;
  return true;
}
