// Array decoding through ProteoWizard's encoder, which knows base64, zlib,
// both byte orders and the three numpress codecs. The text is checked first:
// the decoder takes any bytes and would turn garbage into numbers.
#include "spectrum/BinaryArray.h"

#include <array>
#include <cstdint>
#include <exception>

#include "pwiz/data/msdata/BinaryDataEncoder.hpp"

namespace {
using pwiz::msdata::BinaryDataEncoder;

// 1 for the base64 alphabet, 2 for white space, 0 for anything else.
constexpr auto kClasses = [] {
  std::array<uint8_t, 256> classes{};
  for (int c = 'A'; c <= 'Z'; ++c) classes[c] = 1;
  for (int c = 'a'; c <= 'z'; ++c) classes[c] = 1;
  for (int c = '0'; c <= '9'; ++c) classes[c] = 1;
  classes['+'] = classes['/'] = 1;
  classes[' '] = classes['\n'] = classes['\r'] = classes['\t'] = 2;
  return classes;
}();

// Drops white space; false unless what is left is base64 with its padding.
bool CleanBase64(std::string& text) {
  std::size_t size = text.size();
  while (size > 0 && kClasses[static_cast<unsigned char>(text[size - 1])] == 2) --size;
  std::size_t padding = 0;
  while (padding < 2 && size > 0 && text[size - 1] == '=') --size, ++padding;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const uint8_t kind = kClasses[static_cast<unsigned char>(text[i])];
    if (kind == 0) return false;
    if (kind == 1) text[kept++] = text[i];
  }
  text.resize(kept);
  text.append(padding, '=');
  return text.size() % 4 == 0;
}

BinaryDataEncoder::Config ConfigOf(const CArrayEncoding& encoding) {
  BinaryDataEncoder::Config config;
  config.precision = encoding.bits == 32 ? BinaryDataEncoder::Precision_32 : BinaryDataEncoder::Precision_64;
  config.byteOrder = encoding.bigEndian ? BinaryDataEncoder::ByteOrder_BigEndian
                                        : BinaryDataEncoder::ByteOrder_LittleEndian;
  config.compression = encoding.zlib ? BinaryDataEncoder::Compression_Zlib : BinaryDataEncoder::Compression_None;
  constexpr BinaryDataEncoder::Numpress kCodecs[] = {
      BinaryDataEncoder::Numpress_None, BinaryDataEncoder::Numpress_Linear, BinaryDataEncoder::Numpress_Pic,
      BinaryDataEncoder::Numpress_Slof};
  config.numpress = kCodecs[encoding.numpress];
  return config;
}
}  // namespace

bool DecodeArray(std::string& text, const CArrayEncoding& encoding, int64_t expectedLength,
                 std::vector<double>& values, std::string& problem) {
  values.clear();
  // -1 stands for "not stated"; anything below is a count the file got wrong.
  if (expectedLength < -1) {
    problem = "the file announces a negative count of values";
    return false;
  }
  if (!CleanBase64(text)) {
    problem = "array text is not base64";
    return false;
  }
  if (!text.empty()) {
    try {
      const BinaryDataEncoder decoder(ConfigOf(encoding));
      pwiz::util::BinaryData<double> decoded;
      decoder.decode(text, decoded);
      values.assign(decoded.begin(), decoded.end());
    } catch (const std::exception& error) {
      problem = std::string("array can't be decoded (") + error.what() + ")";
      return false;
    }
  }
  if (expectedLength >= 0 && values.size() != static_cast<std::size_t>(expectedLength)) {
    problem = "array holds " + std::to_string(values.size()) + " values where " +
              std::to_string(expectedLength) + " are announced";
    return false;
  }
  return true;
}
