#include "exchange/MspReader.h"

#include <cstdlib>
#include <fstream>
#include <iostream>

#include "run/StringUtil.h"

namespace {

// The key of a "Key: value" line, lower case without blanks ("numpeaks").
std::string LineKey(const std::string& line, std::string& value) {
  const std::size_t colon = line.find(':');
  if (colon == std::string::npos) return "";
  std::string key;
  for (char c : line.substr(0, colon))
    if (c != ' ') key += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  value = line.substr(colon + 1);
  Trim(value);
  return key;
}

bool ParsePeak(const std::string& line, CMspPeak& peak) {
  const char* text = line.c_str();
  char* end = nullptr;
  peak.mz = std::strtod(text, &end);
  if (end == text) return false;
  const char* rest = end;
  peak.intensity = std::strtod(rest, &end);
  if (end == rest) return false;
  peak.annotation.clear();
  const std::size_t open = line.find('"', static_cast<std::size_t>(end - text));
  if (open != std::string::npos) {
    const std::size_t close = line.find('"', open + 1);
    peak.annotation = line.substr(open + 1, close == std::string::npos ? std::string::npos : close - open - 1);
  }
  return true;
}

// The record being read and what is wrong with it so far.
struct CRecordState {
  CMspRecord record;
  bool open = false;
  long expectedPeaks = -1;  // -1: no Num peaks line yet
  std::string fault;
};

}  // namespace

std::string CMspRecord::Label() const {
  return "record " + std::to_string(number) + " (" + (name.empty() ? "no name" : name) + ")";
}

std::map<std::string, std::string> ParseMspComment(const std::string& text) {
  std::map<std::string, std::string> items;
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && text[i] == ' ') ++i;
    const std::size_t keyStart = i;
    while (i < text.size() && text[i] != '=' && text[i] != ' ') ++i;
    const std::string key = text.substr(keyStart, i - keyStart);
    std::string value;
    if (i < text.size() && text[i] == '=') {
      ++i;
      if (i < text.size() && text[i] == '"') {
        const std::size_t close = text.find('"', i + 1);
        value = text.substr(i + 1, close == std::string::npos ? std::string::npos : close - i - 1);
        i = close == std::string::npos ? text.size() : close + 1;
      } else {
        const std::size_t start = i;
        while (i < text.size() && text[i] != ' ') ++i;
        value = text.substr(start, i - start);
      }
    }
    if (!key.empty()) items[key] = value;
  }
  return items;
}

std::size_t ReadMspFile(const std::string& path,
                        const std::function<void(const CMspRecord&)>& onRecord, bool& opened) {
  std::ifstream in(path, std::ios::binary);
  opened = static_cast<bool>(in);
  if (!opened) return 0;
  std::size_t faulty = 0;
  std::size_t records = 0;
  CRecordState state;
  auto close = [&]() {
    if (!state.open) return;
    const CMspRecord& record = state.record;
    if (state.fault.empty() && state.expectedPeaks < 0)
      state.fault = "has no Num peaks line";
    if (state.fault.empty() && static_cast<long>(record.peaks.size()) < state.expectedPeaks)
      state.fault = "ends after " + std::to_string(record.peaks.size()) + " of its " +
                    std::to_string(state.expectedPeaks) + " peaks: the record is cut";
    if (state.fault.empty()) {
      onRecord(record);
    } else {
      ++faulty;
      std::cout << "[Warning]: " << path << ": " << record.Label() << " " << state.fault
                << "; skipped" << std::endl;
    }
    state = CRecordState();
  };
  std::string line;
  for (std::size_t lineNumber = 1; std::getline(in, line); ++lineNumber) {
    if (line.find('\0') != std::string::npos) {
      std::cout << "[Warning]: " << path << ": line " << lineNumber << (state.open ? " in " + state.record.Label() : "")
                << " holds binary data: not an MSP text file; reading stops there" << std::endl;
      state = CRecordState();
      ++faulty;
      break;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::string value;
    const std::string key = LineKey(line, value);
    const bool peaksDue = state.expectedPeaks >= 0 &&
                          static_cast<long>(state.record.peaks.size()) < state.expectedPeaks;
    if (key == "name") {
      close();
      state.open = true;
      state.record.number = ++records;
      state.record.name = value;
      continue;
    }
    if (line.find_first_not_of(" \t") == std::string::npos) {
      close();  // a blank line ends a record
      continue;
    }
    if (!state.open) continue;  // text before the first Name: line
    if (peaksDue || (state.expectedPeaks >= 0 && key.empty())) {
      CMspPeak peak;
      if (state.fault.empty() && !ParsePeak(line, peak)) {
        state.fault = "has a peak line that is not m/z and intensity (line " + std::to_string(lineNumber) + ")";
      } else if (state.fault.empty() && !state.record.peaks.empty() && peak.mz < state.record.peaks.back().mz) {
        state.fault = "has peaks out of m/z order (line " + std::to_string(lineNumber) + ")";
      } else if (state.fault.empty()) {
        if (!peaksDue) {
          state.fault = "has more peak lines than its Num peaks (line " + std::to_string(lineNumber) + ")";
          continue;
        }
        state.record.peaks.push_back(peak);
      }
      continue;
    }
    if (key == "numpeaks") {
      char* end = nullptr;
      state.expectedPeaks = std::strtol(value.c_str(), &end, 10);
      if (end == value.c_str() || state.expectedPeaks < 0) {
        state.fault = "has a Num peaks line without a count";
        state.expectedPeaks = 0;
      }
    } else if (key == "comment") {
      state.record.comment = ParseMspComment(value);
    } else if (!key.empty()) {
      state.record.fields[key] = value;
    } else if (state.fault.empty()) {
      state.fault = "has peak lines but no Num peaks line before them (line " +
                    std::to_string(lineNumber) + ")";
    }
  }
  close();
  return faulty;
}
