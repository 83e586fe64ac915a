// mzML: spectra with their cvParams, referenceable parameter groups, the first
// selected ion of the first precursor, and the m/z and intensity arrays.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "spectrum/MzHandler.h"

namespace {

using CParams = std::vector<std::pair<std::string, std::string>>;  // accession, value

constexpr std::size_t kLargestGroup = 1000;  // parameters kept of one group

int64_t ToInteger(const char* text, int64_t absent) { return text ? std::atoll(text) : absent; }

class CMzmlHandler : public CMzHandler {
 public:
  void Start(std::string_view name, const char** attributes) override {
    if (name == "cvParam") {
      const char* accession = CXmlEventStream::Attribute(attributes, "accession");
      const char* value = CXmlEventStream::Attribute(attributes, "value");
      if (accession) Apply(accession, value ? value : "");
    } else if (name == "referenceableParamGroupRef") {
      const char* ref = CXmlEventStream::Attribute(attributes, "ref");
      const auto found = ref ? groups_.find(ref) : groups_.end();
      // A copy: a group that names itself inside its own definition grows
      // while its parameters are applied.
      if (found != groups_.end()) {
        const CParams params = found->second;
        for (const auto& [accession, value] : params) Apply(accession, value);
      }
    } else if (name == "referenceableParamGroup") {
      const char* id = CXmlEventStream::Attribute(attributes, "id");
      group_ = &groups_[id ? id : ""];
      group_->clear();  // an id defined again: the last definition holds
    } else if (name == "spectrum") {
      StartSpectrum(attributes);
    } else if (!inSpectrum_) {
      return;
    } else if (name == "precursor") {
      ++precursors_;
    } else if (name == "selectedIon") {
      inSelectedIon_ = precursors_ == 1 && ++selectedIons_ == 1;
    } else if (name == "binaryDataArray") {
      inArray_ = true;
      array_ = CArrayText();
      arrayKind_ = 0;
      array_.expectedLength = ToInteger(CXmlEventStream::Attribute(attributes, "arrayLength"), defaultLength_);
    } else if (name == "binary" && inArray_) {
      array_.begin = stream_->EventEnd();
      array_.present = true;
    }
  }

  void End(std::string_view name) override {
    if (name == "referenceableParamGroup") {
      group_ = nullptr;
    } else if (!inSpectrum_) {
      return;
    } else if (name == "selectedIon") {
      inSelectedIon_ = false;
    } else if (name == "binary" && inArray_) {
      // An empty element <binary/> ends where it begins.
      array_.end = std::max(array_.begin, stream_->EventBegin());
    } else if (name == "binaryDataArray") {
      inArray_ = false;
      if (arrayKind_ == 1) record_.mz = array_;
      if (arrayKind_ == 2) record_.intensity = array_;
    } else if (name == "spectrum") {
      inSpectrum_ = false;
      sink_(record_);
    }
  }

  void Text(std::string_view) override {}

 private:
  void StartSpectrum(const char** attributes) {
    inSpectrum_ = true;
    inArray_ = inSelectedIon_ = false;
    precursors_ = selectedIons_ = 0;
    record_ = CMzRecord();
    const char* id = CXmlEventStream::Attribute(attributes, "id");
    record_.nativeId = id ? id : "";
    record_.position = ToInteger(CXmlEventStream::Attribute(attributes, "index"), spectra_);
    defaultLength_ = ToInteger(CXmlEventStream::Attribute(attributes, "defaultArrayLength"), -1);
    ++spectra_;
  }

  // One parameter, given in place or through a group, in the current context.
  void Apply(const std::string& accession, const std::string& value) {
    if (group_ != nullptr) {
      // Groups that each name the one before twice would double to billions
      // of parameters; no real group holds more than a few dozen.
      if (group_->size() < kLargestGroup) group_->emplace_back(accession, value);
    } else if (!inSpectrum_) {
    } else if (inArray_) {
      ApplyToArray(accession);
    } else if (inSelectedIon_) {
      // MS:1000040 is the selected ion m/z of files written before MS:1000744.
      if (accession == "MS:1000744" || (accession == "MS:1000040" && record_.precursorMz == 0.0))
        record_.precursorMz = std::atof(value.c_str());
      else if (accession == "MS:1000041")
        record_.charge = std::strtoll(value.c_str(), nullptr, 10);
    } else if (precursors_ == 0) {
      if (accession == "MS:1000511") record_.msLevel = std::atoi(value.c_str());
      else if (accession == "MS:1000128") record_.profile = true;
      else if (accession == "MS:1000796") record_.title = value;
    }
  }

  void ApplyToArray(const std::string& accession) {
    static const std::map<std::string, std::pair<CArrayEncoding::Numpress, bool>> kNumpress = {
        {"MS:1002312", {CArrayEncoding::kLinear, false}}, {"MS:1002313", {CArrayEncoding::kPic, false}},
        {"MS:1002314", {CArrayEncoding::kSlof, false}},   {"MS:1002746", {CArrayEncoding::kLinear, true}},
        {"MS:1002747", {CArrayEncoding::kPic, true}},     {"MS:1002748", {CArrayEncoding::kSlof, true}}};
    CArrayEncoding& encoding = array_.encoding;
    if (accession == "MS:1000514") arrayKind_ = 1;
    else if (accession == "MS:1000515") arrayKind_ = 2;
    else if (accession == "MS:1000521") encoding.bits = 32;
    else if (accession == "MS:1000523") encoding.bits = 64;
    else if (accession == "MS:1000574") encoding.zlib = true;
    else if (const auto found = kNumpress.find(accession); found != kNumpress.end()) {
      encoding.numpress = found->second.first;
      encoding.zlib = encoding.zlib || found->second.second;
    }
  }

  std::map<std::string, CParams> groups_;
  CParams* group_ = nullptr;  // the group being defined
  CMzRecord record_;
  CArrayText array_;
  int arrayKind_ = 0;  // 1 m/z, 2 intensity, 0 any other
  int64_t defaultLength_ = -1;
  int64_t spectra_ = 0;
  int precursors_ = 0, selectedIons_ = 0;
  bool inSpectrum_ = false, inArray_ = false, inSelectedIon_ = false;
};

}  // namespace

std::unique_ptr<CMzHandler> MakeMzmlHandler() { return std::make_unique<CMzmlHandler>(); }
