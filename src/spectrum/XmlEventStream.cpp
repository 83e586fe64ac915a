// Adapter from expat's callbacks to CXmlEventStream::Handler.
#include "spectrum/XmlEventStream.h"

#include <expat.h>

namespace {
void OnStart(void* data, const XML_Char* name, const XML_Char** attributes) {
  auto* stream = static_cast<CXmlEventStream*>(data);
  stream->handler.Start(CXmlEventStream::LocalName(name), attributes);
}
void OnEnd(void* data, const XML_Char* name) {
  auto* stream = static_cast<CXmlEventStream*>(data);
  stream->handler.End(CXmlEventStream::LocalName(name));
}
void OnText(void* data, const XML_Char* text, int length) {
  auto* stream = static_cast<CXmlEventStream*>(data);
  stream->handler.Text(std::string_view(text, static_cast<std::size_t>(length)));
}
}  // namespace

CXmlEventStream::CXmlEventStream(Handler& h) : handler(h), parser_(XML_ParserCreate(nullptr)) {
  XML_Parser parser = static_cast<XML_Parser>(parser_);
  XML_SetUserData(parser, this);
  XML_SetElementHandler(parser, OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser, OnText);
}

CXmlEventStream::~CXmlEventStream() { XML_ParserFree(static_cast<XML_Parser>(parser_)); }

bool CXmlEventStream::Feed(const char* data, std::size_t size, bool last) {
  if (!problem_.empty()) return false;
  XML_Parser parser = static_cast<XML_Parser>(parser_);
  if (XML_Parse(parser, data, static_cast<int>(size), last ? 1 : 0) != XML_STATUS_ERROR) return true;
  problem_ = "XML error at line " + std::to_string(XML_GetCurrentLineNumber(parser)) + ", column " +
             std::to_string(XML_GetCurrentColumnNumber(parser)) + ": " +
             XML_ErrorString(XML_GetErrorCode(parser));
  return false;
}

uint64_t CXmlEventStream::EventBegin() const {
  return static_cast<uint64_t>(XML_GetCurrentByteIndex(static_cast<XML_Parser>(parser_)));
}

uint64_t CXmlEventStream::EventEnd() const {
  return EventBegin() + static_cast<uint64_t>(XML_GetCurrentByteCount(static_cast<XML_Parser>(parser_)));
}

const char* CXmlEventStream::Attribute(const char** attributes, std::string_view name) {
  for (const char** a = attributes; a[0] != nullptr; a += 2)
    if (LocalName(a[0]) == name) return a[1];
  return nullptr;
}

std::string_view CXmlEventStream::LocalName(const char* name) {
  std::string_view view(name);
  const std::size_t colon = view.rfind(':');
  return colon == std::string_view::npos ? view : view.substr(colon + 1);
}
