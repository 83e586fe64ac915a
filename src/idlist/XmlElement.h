#pragma once
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "idlist/XmlNode.h"

using CXmlAttributes = std::map<std::string, std::string>;

// Deepest nesting of elements with content that ParseContent accepts. The parse
// runs on an explicit stack, so the limit guards time (each level searches its
// own closing tag), not the call stack; pepXML nests about ten levels.
constexpr std::size_t kMaxXmlDepth = 10000;

// An element: its name (in `text`), its children and its attributes.
//
// The parser is deliberately simple: the first "</name" behind a start tag
// closes the element (no level counting, prefix match), text between tags is
// dropped, entities stay as written, and attribute names are trimmed of blanks,
// tabs and carriage returns only, so attributes on a later line of a tag get a
// name that begins with the line feed.
class CXmlElement : public CXmlNode {
 public:
  explicit CXmlElement(CXmlNode* parentNode = nullptr) : CXmlNode(kXmlElement, parentNode) {}
  ~CXmlElement() override;

  std::string ToText() const override;

  // The value of the attribute; an absent one is created empty.
  std::string& GetAttribute(const std::string& name);
  // Number of child elements of that name (unknown nodes never count).
  int CountChildren(const std::string& name) const;
  // The index-th child element of that name, from 0, or nullptr.
  CXmlElement* GetChild(const std::string& name, int index) const;
  // Parses [first, last) into children of this element; throws CXmlException.
  void ParseContent(const char* first, const char* last);
  // The value of the attribute, "" if absent, without entering it in the map:
  // a read-only look-up that leaves unasked attributes unparsed.
  std::string AttributeValue(const std::string& name) const;
  // Parses the attribute text of a start tag into the attribute map.
  void ParseAttributes(const char* first, const char* last);

  // The attribute map, after the attribute text of the start tag was parsed.
  CXmlAttributes& Attributes();
  const CXmlAttributes& Attributes() const;
  // Destroys the children and empties the attributes.
  void Clear();

  std::vector<CXmlNode*> children;  // owned

 protected:
  CXmlElement(int32_t nodeType, CXmlNode* parentNode) : CXmlNode(nodeType, parentNode) {}
  // With `deferAttributes` the attribute text of each start tag is kept as a
  // range of [first, last) and parsed on first access; the caller guarantees
  // that the characters outlive the tree (the document owns them).
  void ParseRange(const char* first, const char* last, bool deferAttributes);

 private:
  void ResolveAttributes() const;
  void AppendText(std::string& out) const;

  // Most elements of a large document are never asked for an attribute: their
  // map stays unallocated and their attribute text is parsed only on demand.
  mutable std::unique_ptr<CXmlAttributes> attributes;
  mutable const char* pendingFirst = nullptr;
  mutable const char* pendingLast = nullptr;
};
