#include "run/FileFingerprint.h"

#include <zlib.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <algorithm>
#include <memory>
#include <vector>
#include <random>

#include "run/Process.h"

namespace {

constexpr std::size_t kChunk = 1 << 20;

}  // namespace

bool IdentifyFile(const std::string& path, CFileIdentity& identity, bool sampled) {
  if (GetPathKind(path) != PathKind::File) return false;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) return false;
  std::unique_ptr<unsigned char[]> chunk(new unsigned char[kChunk]);
  identity = {};
  if (std::fseek(file.get(), 0, SEEK_END) != 0) return false;
  const long size = std::ftell(file.get());
  if (size < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0) return false;
  identity.size = static_cast<uint64_t>(size);
  // A sample reads the first, the middle and the last chunk (overlapping in
  // a small file), a whole identity every chunk.
  std::vector<long> starts;
  if (sampled) starts = {0, std::max(0L, size / 2 - static_cast<long>(kChunk) / 2),
                         std::max(0L, size - static_cast<long>(kChunk))};
  else
    for (long at = 0; at < size; at += static_cast<long>(kChunk)) starts.push_back(at);
  uLong crc = crc32(0L, Z_NULL, 0);
  for (long start : starts) {
    if (std::fseek(file.get(), start, SEEK_SET) != 0) return false;
    const std::size_t count = std::fread(chunk.get(), 1, kChunk, file.get());
    crc = crc32(crc, chunk.get(), static_cast<uInt>(count));
  }
  identity.crc = static_cast<uint32_t>(crc);
  return std::ferror(file.get()) == 0;
}

std::string FileFingerprint(const std::string& path) {
  CFileIdentity identity;
  if (!IdentifyFile(path, identity, false)) return std::string();
  char text[48];
  std::snprintf(text, sizeof text, "%llu:%08lx", static_cast<unsigned long long>(identity.size),
                static_cast<unsigned long>(identity.crc));
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
