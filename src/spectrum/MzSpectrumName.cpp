// Naming rule of the spectra of mzML and mzXML files.
#include "spectrum/MzSpectrumName.h"

#include <sstream>

#include "run/Process.h"
#include "run/StringUtil.h"
#include "spectrum/ChargeLimit.h"

namespace {
bool AllDigits(const std::string& text) {
  if (text.empty() || text.size() > 18) return false;
  for (char c : text)
    if (c < '0' || c > '9') return false;
  return true;
}

// First word of a text, as "%s" reads it: white space skipped before, ended by it after.
std::string FirstWord(const std::string& text) {
  std::istringstream in(text);
  std::string word;
  in >> word;
  return word;
}
}  // namespace

std::string ScanOfNativeId(const std::string& nativeId) {
  // scanId= is the style of Agilent files and of ms_deisotope.
  std::string byKey[4];
  static const char* const kKeys[] = {"scan=", "scanId=", "index=", "spectrum="};
  std::istringstream in(nativeId);
  std::string token;
  while (in >> token)
    for (int k = 0; k < 4; ++k)
      if (token.rfind(kKeys[k], 0) == 0 && byKey[k].empty()) byKey[k] = token.substr(std::char_traits<char>::length(kKeys[k]));
  if (AllDigits(byKey[0])) return byKey[0];
  if (AllDigits(byKey[1])) return byKey[1];
  if (AllDigits(byKey[2])) return std::to_string(std::stoll(byKey[2]) + 1);
  if (AllDigits(byKey[3])) return byKey[3];
  return "";
}

std::string FileStem(const std::string& path) {
  return CompressedFileBase(path).substr(0, CompressedFileBase(path).rfind('.'));
}

std::string CompressedFileBase(const std::string& path) {
  const std::size_t separator = LastSeparator(path);
  std::string base = separator == std::string::npos ? path : path.substr(separator + 1);
  if (HasAffix(true, false, base, ".gz")) base.erase(base.size() - 3);
  return base;
}

std::string MzSpectrumName(const CMzRecord& record, const std::string& stem) {
  std::string name = FirstWord(record.title);
  if (!name.empty()) return name;
  std::string scan;
  if (record.scanNumber >= 0) scan = std::to_string(record.scanNumber);
  else scan = ScanOfNativeId(record.nativeId);
  // An ID of another style falls back to the order in the file.
  if (scan.empty()) scan = std::to_string(record.position + 1);
  const int64_t charge = ChargeInRange(record.charge) ? record.charge : 0;
  return stem + "." + scan + "." + scan + "." + std::to_string(charge);
}
