#pragma once
#include <cstdint>
#include <cstdio>
#include <string>

// The bytes of a spectrum file, read once from the start and afterwards at any
// offset. A gzip file (told by its magic bytes, not its name) is inflated on
// the first pass into an anonymous temporary file, so that later reads at an
// offset cost one seek instead of inflating from the start again.
class CInflatedFile {
 public:
  CInflatedFile() = default;
  CInflatedFile(const CInflatedFile&) = delete;
  CInflatedFile& operator=(const CInflatedFile&) = delete;
  ~CInflatedFile() { Close(); }

  // False when the file can't be opened (or no temporary file can be made).
  bool Open(const std::string& path);
  void Close();
  bool Compressed() const { return gzip_ != nullptr; }

  // The next bytes of the first pass; 0 at the end. `problem` is set when the
  // pass ends early (a damaged or truncated gzip stream, a read error).
  std::size_t ReadNext(char* buffer, std::size_t capacity);
  const std::string& Problem() const { return problem_; }

  // Bytes [begin, end) of the (inflated) content; false if they aren't all there.
  bool ReadAt(uint64_t begin, uint64_t end, std::string& out);

 private:
  std::FILE* plain_ = nullptr;  // the file itself, or the inflated copy
  void* gzip_ = nullptr;        // gzFile of the first pass
  std::string problem_;
};
