#pragma once
#include <cstdint>
#include <exception>
#include <string>

// The one exception of the XML model: a syntax fault of a document, or a
// document that lacks what the pepXML reader needs.
class CXmlException : public std::exception {
 public:
  explicit CXmlException(std::string text) : message(std::move(text)) {}
  const char* what() const noexcept override { return message.c_str(); }

  std::string message;
};

// Node types of the XML model.
constexpr int32_t kXmlUnknown = 0;
constexpr int32_t kXmlElement = 1;
constexpr int32_t kXmlDocument = 6;

// A node of the tree: its type, the enclosing node and its text (an element's
// name, or the whole markup of an unknown node).
class CXmlNode {
 public:
  CXmlNode(int32_t nodeType, CXmlNode* parentNode) : type(nodeType), parent(parentNode) {}
  virtual ~CXmlNode() = default;
  CXmlNode(const CXmlNode&) = delete;
  CXmlNode& operator=(const CXmlNode&) = delete;

  virtual std::string ToText() const { return text; }

  int32_t type;
  CXmlNode* parent;
  std::string text;
};

// Declarations, comments, CDATA sections, document types: kept as written.
class CXmlUnknown : public CXmlNode {
 public:
  explicit CXmlUnknown(CXmlNode* parentNode) : CXmlNode(kXmlUnknown, parentNode) {}
};
