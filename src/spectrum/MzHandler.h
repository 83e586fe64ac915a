#pragma once
#include <functional>
#include <memory>

#include "spectrum/MzRecord.h"
#include "spectrum/XmlEventStream.h"

// Turns the XML events of one spectrum file format into spectrum records,
// handed to the sink as each spectrum element closes. The array texts are
// not copied, only located.
class CMzHandler : public CXmlEventStream::Handler {
 public:
  using Sink = std::function<void(const CMzRecord&)>;
  void Attach(const CXmlEventStream& stream, Sink sink) {
    stream_ = &stream;
    sink_ = std::move(sink);
  }

 protected:
  const CXmlEventStream* stream_ = nullptr;
  Sink sink_;
};

std::unique_ptr<CMzHandler> MakeMzmlHandler();
std::unique_ptr<CMzHandler> MakeMzxmlHandler();
