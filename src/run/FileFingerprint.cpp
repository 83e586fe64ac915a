#include "run/FileFingerprint.h"

#include <zlib.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <random>

#include "run/Process.h"

std::string FileFingerprint(const std::string& path) {
  if (GetPathKind(path) != PathKind::File) return std::string();
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) return std::string();
  constexpr std::size_t kChunk = 1 << 20;
  std::unique_ptr<unsigned char[]> chunk(new unsigned char[kChunk]);
  uLong crc = ::crc32(0L, Z_NULL, 0);
  unsigned long long size = 0;
  std::size_t count;
  while ((count = std::fread(chunk.get(), 1, kChunk, file.get())) > 0) {
    crc = ::crc32(crc, chunk.get(), static_cast<uInt>(count));
    size += count;
  }
  if (std::ferror(file.get())) return std::string();
  char text[48];
  std::snprintf(text, sizeof text, "%llu:%08lx", size, static_cast<unsigned long>(crc));
  return text;
}

std::string NewRunStamp() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  std::tm utc{};
  ::gmtime_r(&now, &utc);
  char text[64];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &utc);
  std::random_device random;
  char suffix[16];
  std::snprintf(suffix, sizeof suffix, "-%08x", static_cast<unsigned>(random()));
  return std::string(text) + suffix;
}
