#pragma once
#include <cstdint>
#include <string>
#include <vector>

// How one base64 array of an mzML or mzXML file is encoded.
struct CArrayEncoding {
  enum Numpress : uint8_t { kNone, kLinear, kPic, kSlof };
  uint8_t bits = 64;          // 32 or 64; numpress arrays ignore it
  bool bigEndian = false;     // mzXML "network" order
  bool zlib = false;          // inflated before numpress decoding
  Numpress numpress = kNone;
};

// Where an array's text lies in the file, and the length it must decode to.
struct CArrayText {
  uint64_t begin = 0, end = 0;  // byte range of the base64 text
  int64_t expectedLength = -1;  // values; -1 when the file does not say
  CArrayEncoding encoding;
  bool present = false;
};

// Decodes base64 text (white space allowed) into values. False, with
// `problem` set, for text that is not base64, data that can't be inflated or
// numpress-decoded, and a length that is not `expectedLength`.
bool DecodeArray(std::string& text, const CArrayEncoding& encoding, int64_t expectedLength,
                 std::vector<double>& values, std::string& problem);
