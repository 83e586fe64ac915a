#pragma once
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "run/TextLine.h"

// Buffered line reader with byte offsets, for the spectrum files: one pass to
// index gigabyte files, then a seek and a short read per spectrum.
//
// Line ends: LF, CRLF and a lone CR (old Mac files) all end a line. A run of
// CRs, closed or not by one LF, is one line end, so files whose lines end in
// "\r\r\n" or "\r\r\r" (a converter's double conversion) read without phantom
// empty lines. Files with LF or CRLF ends read exactly as the plain line reader
// reads them.
//
// A line longer than kMaxLineLength is cut to that length and the rest of it is
// skipped, as the fixed line buffers of the formats always implied; the reader
// goes on with the next line and never stalls.
class CLineReader {
 public:
  CLineReader();
  ~CLineReader();
  CLineReader(const CLineReader&) = delete;
  CLineReader& operator=(const CLineReader&) = delete;

  // Opens in binary mode; false when the file can't be opened.
  bool Open(const std::string& path);
  void Close();
  bool IsOpen() const { return file != nullptr; }

  // The next line without its end. False at the end of the file (or when no
  // file is open). The view stays valid until the next call of any member.
  bool Next(std::string_view& line, bool* tooLong = nullptr);

  // Offset of the first byte not yet delivered: after Next, the start of the
  // following line.
  int64_t Tell() const { return bufferStart + static_cast<int64_t>(pos); }
  void Seek(int64_t offset);

 private:
  bool Fill();
  void AppendCapped(const char* begin, std::size_t length, bool& cut);
  bool SkipLineEndRun();

  std::FILE* file = nullptr;
  std::vector<char> buffer;
  std::size_t pos = 0;          // next byte of buffer to deliver
  std::size_t end = 0;          // bytes of buffer filled
  int64_t bufferStart = 0;      // file offset of buffer[0]
  std::size_t chunk = 0;        // bytes asked for by the next fill
  bool atEof = false;
  std::string carry;            // a line that crosses a fill
};
