#pragma once
// What the fuzz targets share: the readers take paths, so each input is put
// in a file of its own process, and the program's messages are silenced.
#include <unistd.h>
#include <zlib.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>

namespace fuzz {

// A file of this process in memory-backed /dev/shm where there is one.
inline const std::string& ScratchPath(const char* extension) {
  static const std::string folder = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
  static const std::string path =
      folder + "/quorin_fuzz_" + std::to_string(::getpid()) + extension;
  return path;
}

inline void WriteFile(const std::string& path, std::string_view bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) std::abort();
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

// The bytes as one gzip member, as `gzip` writes them.
inline std::string Gzip(std::string_view bytes) {
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) std::abort();
  std::string out(deflateBound(&stream, bytes.size()) + 32, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  stream.avail_in = static_cast<uInt>(bytes.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) std::abort();
  out.resize(stream.total_out);
  deflateEnd(&stream);
  return out;
}

// The readers print warnings for every damaged input: keep the fuzzer's own
// output readable.
inline void SilenceOutput() { std::cout.rdbuf(nullptr); }

inline std::string_view Bytes(const uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

}  // namespace fuzz
