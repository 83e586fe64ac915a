// mzXML: scans (an MS2 scan may sit inside its MS1 scan, as in version 2),
// the first precursorMz of each, and the interleaved m/z-intensity peaks.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "spectrum/MzHandler.h"

namespace {

class CMzxmlHandler : public CMzHandler {
 public:
  void Start(std::string_view name, const char** attributes) override {
    if (name == "scan") {
      open_.emplace_back();
      CMzRecord& scan = open_.back();
      const char* num = CXmlEventStream::Attribute(attributes, "num");
      const char* level = CXmlEventStream::Attribute(attributes, "msLevel");
      const char* centroided = CXmlEventStream::Attribute(attributes, "centroided");
      const char* count = CXmlEventStream::Attribute(attributes, "peaksCount");
      scan.position = scans_++;
      scan.scanNumber = num ? std::atoll(num) : scan.position + 1;
      scan.msLevel = level ? std::atoi(level) : 0;
      scan.profile = centroided && std::strcmp(centroided, "0") == 0;
      scan.interleaved = true;
      // Two values a peak; an absurd count can only fail the length check, not
      // overflow, and a negative one fails it too (it is not "not stated").
      scan.mz.expectedLength = count ? 2 * std::clamp<int64_t>(std::strtoll(count, nullptr, 10), -1, int64_t{1} << 40) : -1;
      precursors_.push_back(0);
    } else if (open_.empty()) {
      return;
    } else if (name == "precursorMz" && ++precursors_.back() == 1) {
      const char* charge = CXmlEventStream::Attribute(attributes, "precursorCharge");
      open_.back().charge = charge ? std::strtoll(charge, nullptr, 10) : 0;
      precursorText_.clear();
      inPrecursor_ = true;
    } else if (name == "peaks") {
      CArrayText& peaks = open_.back().mz;
      const char* precision = CXmlEventStream::Attribute(attributes, "precision");
      const char* order = CXmlEventStream::Attribute(attributes, "byteOrder");
      const char* compression = CXmlEventStream::Attribute(attributes, "compressionType");
      peaks.encoding.bits = precision && std::strcmp(precision, "64") == 0 ? 64 : 32;
      peaks.encoding.bigEndian = !order || std::strcmp(order, "network") == 0;
      peaks.encoding.zlib = compression && std::strcmp(compression, "zlib") == 0;
      peaks.begin = stream_->EventEnd();
      peaks.present = true;
    }
  }

  void End(std::string_view name) override {
    if (open_.empty()) return;
    if (name == "precursorMz" && inPrecursor_) {
      inPrecursor_ = false;
      open_.back().precursorMz = std::atof(precursorText_.c_str());
    } else if (name == "peaks") {
      CArrayText& peaks = open_.back().mz;
      peaks.end = std::max(peaks.begin, stream_->EventBegin());
    } else if (name == "scan") {
      sink_(open_.back());
      open_.pop_back();
      precursors_.pop_back();
    }
  }

  void Text(std::string_view text) override {
    if (inPrecursor_ && precursorText_.size() < 64) precursorText_.append(text);
  }

 private:
  std::vector<CMzRecord> open_;  // scans begun and not yet ended, innermost last
  std::vector<int> precursors_;  // precursorMz elements seen in each open scan
  std::string precursorText_;
  int64_t scans_ = 0;
  bool inPrecursor_ = false;
};

}  // namespace

std::unique_ptr<CMzHandler> MakeMzxmlHandler() { return std::make_unique<CMzxmlHandler>(); }
