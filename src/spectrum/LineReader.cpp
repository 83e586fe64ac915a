#include "spectrum/LineReader.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "run/Process.h"

namespace {
// A read after a seek fetches little (one spectrum is a few kilobytes); the
// amount doubles while reading goes on in order, up to the buffer's size.
constexpr std::size_t kFirstChunk = 8 * 1024;
constexpr std::size_t kBufferSize = 1024 * 1024;

// First LF or CR in [s, e), or e. Eight bytes at a time: a byte equal to LF or
// CR becomes a zero byte after the XOR, and the lowest flagged zero is exact.
inline const char* FindLineEnd(const char* s, const char* e) {
  constexpr uint64_t kOnes = 0x0101010101010101ull;
  constexpr uint64_t kHighs = 0x8080808080808080ull;
  while (std::endian::native == std::endian::little && e - s >= 8) {
    uint64_t word;
    std::memcpy(&word, s, 8);
    const uint64_t lf = word ^ (kOnes * '\n');
    const uint64_t cr = word ^ (kOnes * '\r');
    const uint64_t found = ((lf - kOnes) & ~lf & kHighs) | ((cr - kOnes) & ~cr & kHighs);
    if (found != 0) return s + (std::countr_zero(found) >> 3);
    s += 8;
  }
  while (s < e) {
    const char c = *s;
    if (c == '\n' || c == '\r') break;
    ++s;
  }
  return s;
}
}  // namespace

CLineReader::CLineReader() = default;

CLineReader::~CLineReader() { Close(); }

bool CLineReader::Open(const std::string& path) {
  Close();
  // Only a regular file: a directory can't be read, a FIFO or device may never end.
  if (GetPathKind(path) != PathKind::File) return false;
  file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  // Our own buffer does the buffering; fread then reads straight into it.
  std::setvbuf(file, nullptr, _IONBF, 0);
  if (buffer.size() != kBufferSize) buffer.resize(kBufferSize);
  return true;
}

void CLineReader::Close() {
  if (file) std::fclose(file);
  file = nullptr;
  pos = end = 0;
  bufferStart = 0;
  chunk = kFirstChunk;
  atEof = false;
  carry.clear();
}

bool CLineReader::Fill() {
  bufferStart += static_cast<int64_t>(end);
  pos = end = 0;
  if (!file || atEof) return false;
  const std::size_t n = std::fread(buffer.data(), 1, chunk, file);
  chunk = std::min(chunk * 2, buffer.size());
  if (n == 0) {
    atEof = true;
    return false;
  }
  end = n;
  return true;
}

void CLineReader::AppendCapped(const char* begin, std::size_t length, bool& cut) {
  const std::size_t room = kMaxLineLength - std::min(carry.size(), kMaxLineLength);
  if (length > room) {
    cut = true;
    length = room;
  }
  carry.append(begin, length);
}

// Called with pos at a CR that is the last byte of the buffer, already passed:
// consumes the rest of the run of CRs and one LF behind it across fills.
bool CLineReader::SkipLineEndRun() {
  while (Fill()) {
    while (pos < end && buffer[pos] == '\r') ++pos;
    if (pos < end) {
      if (buffer[pos] == '\n') ++pos;
      return true;
    }
  }
  return false;
}

bool CLineReader::Next(std::string_view& line, bool* tooLong) {
  bool cut = false;
  bool any = false;
  carry.clear();
  for (;;) {
    if (pos == end && !Fill()) {
      if (!any) {
        if (tooLong) *tooLong = false;
        return false;
      }
      line = carry;  // the last line of a file without a final line end
      break;
    }
    const char* b = buffer.data();
    const char* s = b + pos;
    const char* e = b + end;
    const char* q = FindLineEnd(s, e);
    any = true;
    if (q == e) {  // the line goes on in the next fill
      AppendCapped(s, static_cast<std::size_t>(e - s), cut);
      pos = end;
      continue;
    }
    const std::size_t length = static_cast<std::size_t>(q - s);
    std::size_t p = static_cast<std::size_t>(q - b);
    if (*q == '\n') {
      pos = p + 1;
    } else {
      while (p < end && b[p] == '\r') ++p;
      if (p == end) {
        // The run of CRs reaches the end of the buffer: keep the line before
        // the next fill overwrites it.
        AppendCapped(s, length, cut);
        pos = end;
        SkipLineEndRun();
        line = carry;
        break;
      }
      if (b[p] == '\n') ++p;
      pos = p;
    }
    if (carry.empty()) {
      const std::size_t kept = std::min(length, kMaxLineLength);
      if (kept < length) cut = true;
      line = std::string_view(s, kept);
    } else {
      AppendCapped(s, length, cut);
      line = carry;
    }
    break;
  }
  if (tooLong) *tooLong = cut;
  return true;
}

void CLineReader::Seek(int64_t offset) {
  if (offset < 0) offset = 0;
  carry.clear();
  if (file && offset >= bufferStart && offset <= bufferStart + static_cast<int64_t>(end)) {
    pos = static_cast<std::size_t>(offset - bufferStart);
    return;
  }
  if (file) {
    std::clearerr(file);
    std::fseek(file, static_cast<long>(offset), SEEK_SET);
  }
  bufferStart = offset;
  pos = end = 0;
  atEof = false;
  chunk = kFirstChunk;
}
