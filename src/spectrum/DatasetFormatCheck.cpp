#include "spectrum/DatasetFormatCheck.h"

#include <zlib.h>

#include <cstdio>
#include <cstring>
#include <iostream>
#include <string_view>

#include "run/Process.h"

namespace {
constexpr std::size_t kHead = 1 << 16;  // bytes looked at: every format tells itself early

// The first bytes of a file as they are (`inflate` false) or as a gzip file
// holds them (zlib reads a plain file unchanged).
std::string Head(const std::string& path, bool inflate) {
  std::string head(kHead, '\0');
  int got = -1;
  if (inflate) {
    gzFile file = gzopen(path.c_str(), "rb");
    if (file == nullptr) return "";
    got = gzread(file, head.data(), static_cast<unsigned>(head.size()));
    gzclose(file);
  } else {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return "";
    got = static_cast<int>(std::fread(head.data(), 1, head.size(), file));
    std::fclose(file);
  }
  head.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
  return head;
}

// The text after a byte-order mark and white space.
std::string_view Content(std::string_view head) {
  if (head.substr(0, 3) == "\xEF\xBB\xBF") head.remove_prefix(3);
  const std::size_t first = head.find_first_not_of(" \t\r\n");
  return first == std::string_view::npos ? std::string_view() : head.substr(first);
}

// What a head shows, in words for a message; empty when it shows nothing plain.
// Only what comes before a first NUL byte is taken as text, so that a text file
// with damage further on still shows as what it is.
std::string Kind(std::string_view head) {
  if (head.substr(0, 8) == "\x89PNG\r\n\x1a\n") return "a PNG image";
  if (head.substr(0, 2) == "\x1f\x8b") return "gzip-compressed";
  const std::size_t nul = head.find('\0');
  const std::string_view text = Content(head.substr(0, nul));
  if (text.empty()) return nul == std::string_view::npos ? "" : "binary data";
  if (text.front() == '<') {
    if (text.find("<mzXML") != std::string_view::npos) return "an mzXML file";
    if (text.find("<mzML") != std::string_view::npos || text.find("<indexedmzML") != std::string_view::npos)
      return "an mzML file";
    return "an XML file";
  }
  if (text.find("BEGIN IONS") != std::string_view::npos) return "an MGF file";
  if (nul != std::string_view::npos) return "binary data";
  return "a text file that does not begin with XML";
}

const char* FormatName(int32_t format) {
  switch (format) {
    case 2: return "an MGF file";
    case 3: return "a DTAS file";
    case 4: return "an mzML file";
    case 5: return "an mzXML file";
    default: return "";
  }
}
}  // namespace

std::string FormatMismatch(const std::string& path, int32_t format) {
  if (format == 2 || format == 3) {
    // Text formats: binary data or XML is plainly something else.
    const std::string kind = Kind(Head(path, false));
    if (kind.empty() || kind == "an MGF file" || kind.find("text") != std::string::npos) return "";
    return "it is " + kind;
  }
  if (format == 4 || format == 5) {
    const std::string kind = Kind(Head(path, true));
    if (kind.empty() || kind == FormatName(format)) return "";
    // A damaged gzip stream or XML of another kind is left to the reader's messages.
    if (kind == "gzip-compressed" || kind == "an XML file") return "";
    return "it is " + kind;
  }
  return "";
}

void CheckDatasetFormats(const CRunPaths& paths) {
  for (const CNamedPath& input : paths.inputs) {
    if (input.format < 0 || input.path.empty()) continue;
    const std::string mismatch = FormatMismatch(input.path, input.format);
    if (mismatch.empty()) continue;
    std::cout << "[Error]: " << input.what << " names " << input.path << ", which is not "
              << FormatName(input.format) << " as " << input.formatWhat << " says: " << mismatch
              << ". Nothing was read." << std::endl;
    ExitProgram(1);
  }
}
