#pragma once
#include <cstdint>
#include <string>
#include <string_view>

// The one place that knows the XML parser (expat): a document fed in pieces,
// turned into start, end and text events with byte offsets. Element and
// attribute names lose any namespace prefix.
class CXmlEventStream {
 public:
  class Handler {
   public:
    virtual ~Handler() = default;
    // `attributes` alternates names and values and ends with a null pointer.
    virtual void Start(std::string_view name, const char** attributes) = 0;
    virtual void End(std::string_view name) = 0;
    virtual void Text(std::string_view text) = 0;
  };

  explicit CXmlEventStream(Handler& handler);
  CXmlEventStream(const CXmlEventStream&) = delete;
  CXmlEventStream& operator=(const CXmlEventStream&) = delete;
  ~CXmlEventStream();

  // False once the document is found malformed; Problem() then says where and why.
  bool Feed(const char* data, std::size_t size, bool last);
  const std::string& Problem() const { return problem_; }

  // During an event: offset of its first byte, and of the byte after it.
  uint64_t EventBegin() const;
  uint64_t EventEnd() const;

  // Value of an attribute (prefix ignored); null when absent.
  static const char* Attribute(const char** attributes, std::string_view name);
  static std::string_view LocalName(const char* name);

  Handler& handler;

 private:
  void* parser_;
  std::string problem_;
};
