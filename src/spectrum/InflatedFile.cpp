// Sequential first pass and offset reads over a plain or gzip-compressed file.
#include "spectrum/InflatedFile.h"

#include <zlib.h>

#include "run/Process.h"

namespace {
bool StartsWithGzipMagic(std::FILE* file) {
  unsigned char magic[2] = {0, 0};
  const std::size_t got = std::fread(magic, 1, 2, file);
  std::rewind(file);
  return got == 2 && magic[0] == 0x1f && magic[1] == 0x8b;
}
}  // namespace

bool CInflatedFile::Open(const std::string& path) {
  Close();
  // Only a regular file: a directory can't be read, a FIFO or device may never end.
  if (GetPathKind(path) != PathKind::File) return false;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return false;
  if (!StartsWithGzipMagic(file)) {
    plain_ = file;
    return true;
  }
  std::fclose(file);
  gzip_ = gzopen(path.c_str(), "rb");
  plain_ = std::tmpfile();
  if (gzip_ == nullptr || plain_ == nullptr) {
    Close();
    return false;
  }
  gzbuffer(static_cast<gzFile>(gzip_), 1 << 17);
  return true;
}

void CInflatedFile::Close() {
  if (gzip_ != nullptr) gzclose(static_cast<gzFile>(gzip_));
  if (plain_ != nullptr) std::fclose(plain_);
  gzip_ = nullptr;
  plain_ = nullptr;
  problem_.clear();
}

std::size_t CInflatedFile::ReadNext(char* buffer, std::size_t capacity) {
  if (plain_ == nullptr) return 0;
  if (gzip_ == nullptr) {
    const std::size_t got = std::fread(buffer, 1, capacity, plain_);
    if (got == 0 && std::ferror(plain_)) problem_ = "read error";
    return got;
  }
  gzFile gz = static_cast<gzFile>(gzip_);
  const int got = gzread(gz, buffer, static_cast<unsigned>(capacity));
  if (got < 0 || (got == 0 && !gzeof(gz))) {
    int code = 0;
    problem_ = std::string("gzip stream damaged: ") + gzerror(gz, &code);
    return 0;
  }
  if (got == 0) {
    // zlib reports a stream cut short only as an error state at the end.
    int code = Z_OK;
    const char* message = gzerror(gz, &code);
    if (code != Z_OK) problem_ = std::string("gzip stream damaged: ") + message;
    return 0;
  }
  if (std::fwrite(buffer, 1, static_cast<std::size_t>(got), plain_) != static_cast<std::size_t>(got)) {
    problem_ = "no room for the inflated copy in the temporary folder";
    return 0;
  }
  return static_cast<std::size_t>(got);
}

bool CInflatedFile::ReadAt(uint64_t begin, uint64_t end, std::string& out) {
  out.clear();
  if (plain_ == nullptr || end < begin) return false;
  if (gzip_ != nullptr) std::fflush(plain_);
  if (fseeko(plain_, static_cast<off_t>(begin), SEEK_SET) != 0) return false;
  out.resize(end - begin);
  return std::fread(out.data(), 1, out.size(), plain_) == out.size();
}
