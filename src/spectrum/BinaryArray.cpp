// Array decoding through ProteoWizard's encoder, which knows base64, zlib,
// both byte orders and the three numpress codecs. The text is checked first:
// the decoder takes any bytes and would turn garbage into numbers.
#include "spectrum/BinaryArray.h"

#include <algorithm>
#include <exception>

#include "pwiz/data/msdata/BinaryDataEncoder.hpp"

namespace {
using pwiz::msdata::BinaryDataEncoder;

bool IsBase64(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/';
}

// Drops white space; false unless what is left is base64 with its padding.
bool CleanBase64(std::string& text) {
  text.erase(std::remove_if(text.begin(), text.end(),
                            [](char c) { return c == ' ' || c == '\n' || c == '\r' || c == '\t'; }),
             text.end());
  if (text.size() % 4 != 0) return false;
  std::size_t end = text.size();
  for (int pad = 0; pad < 2 && end > 0 && text[end - 1] == '='; ++pad) --end;
  return std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), IsBase64);
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
