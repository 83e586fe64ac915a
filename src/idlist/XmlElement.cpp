#include "idlist/XmlElement.h"

#include <cstring>
#include <string_view>

namespace {

bool IsTrimmed(char c) { return c == ' ' || c == '\t' || c == '\r'; }

bool EndsName(char c) {
  return c == '\n' || c == '\r' || c == '\t' || c == ' ' || c == '/' || c == '>';
}

// First occurrence of `c` in [first, last), or nullptr.
const char* FindChar(const char* first, const char* last, char c) {
  if (first >= last) return nullptr;
  return static_cast<const char*>(std::memchr(first, c, static_cast<std::size_t>(last - first)));
}

// First occurrence of `pattern` lying wholly in [first, last), or nullptr.
const char* FindText(const char* first, const char* last, std::string_view pattern) {
  if (first >= last) return nullptr;
  std::string_view range(first, static_cast<std::size_t>(last - first));
  std::size_t at = range.find(pattern);
  return at == std::string_view::npos ? nullptr : first + at;
}

bool Contains(const char* first, const char* last, std::string_view pattern) {
  return FindText(first, last, pattern) != nullptr;
}

// Calls visit(name, value) for each attribute of a start tag's attribute text,
// in order. Names and the whole range are trimmed of blanks, tabs and carriage
// returns, not of line feeds; only double quotes delimit values.
template <typename Visit>
void ScanAttributes(const char* first, const char* last, Visit visit) {
  while (first < last && IsTrimmed(*first)) ++first;
  while (last > first && IsTrimmed(last[-1])) --last;
  while (first < last) {
    const char* equals = FindChar(first, last, '=');
    if (!equals) return;
    const char* nameFirst = first;
    const char* nameLast = equals;
    while (nameFirst < nameLast && IsTrimmed(*nameFirst)) ++nameFirst;
    while (nameLast > nameFirst && IsTrimmed(nameLast[-1])) --nameLast;
    // The value's opening quote is searched one character behind the name's end.
    const char* open = FindChar(nameLast + 1, last, '"');
    if (!open) return;
    const char* close = FindChar(open + 1, last, '"');
    if (!close) return;
    visit(std::string_view(nameFirst, static_cast<std::size_t>(nameLast - nameFirst)),
          std::string_view(open + 1, static_cast<std::size_t>(close - open - 1)));
    first = close + 1;
  }
}

// One element whose content is being parsed, with what its parent needs to
// go on behind the closing tag.
struct OpenElement {
  CXmlElement* parent;
  const char* parentLast;  // end of the parent's content range
  const char* startTag;    // the element's "<"
  const char* closeText;   // the "</name" that closes it
};

}  // namespace

CXmlElement::~CXmlElement() { Clear(); }

void CXmlElement::Clear() {
  // Deletes the subtree without recursion: a deeply nested tree must not cost
  // one stack frame per level.
  std::vector<CXmlNode*> pending;
  pending.swap(children);
  while (!pending.empty()) {
    CXmlNode* node = pending.back();
    pending.pop_back();
    if (node->type != kXmlUnknown) {
      auto* element = static_cast<CXmlElement*>(node);
      pending.insert(pending.end(), element->children.begin(), element->children.end());
      element->children.clear();
    }
    delete node;
  }
  attributes.reset();
  pendingFirst = pendingLast = nullptr;
}

void CXmlElement::ResolveAttributes() const {
  if (!attributes) attributes = std::make_unique<CXmlAttributes>();
  if (pendingFirst) {
    const char* first = pendingFirst;
    const char* last = pendingLast;
    pendingFirst = pendingLast = nullptr;
    const_cast<CXmlElement*>(this)->ParseAttributes(first, last);
  }
}

CXmlAttributes& CXmlElement::Attributes() {
  ResolveAttributes();
  return *attributes;
}

const CXmlAttributes& CXmlElement::Attributes() const {
  ResolveAttributes();
  return *attributes;
}

std::string& CXmlElement::GetAttribute(const std::string& name) { return Attributes()[name]; }

int CXmlElement::CountChildren(const std::string& name) const {
  int count = 0;
  for (const CXmlNode* child : children) {
    if (child->type == kXmlElement && child->text == name) ++count;
  }
  return count;
}

CXmlElement* CXmlElement::GetChild(const std::string& name, int index) const {
  if (index < 0) return nullptr;
  for (CXmlNode* child : children) {
    if (child->type == kXmlElement && child->text == name) {
      if (index == 0) return static_cast<CXmlElement*>(child);
      --index;
    }
  }
  return nullptr;
}

std::string CXmlElement::ToText() const {
  std::string out;
  AppendText(out);
  return out;
}

void CXmlElement::AppendText(std::string& out) const {
  // One buffer for the whole subtree instead of a string per level.
  auto appendChildren = [this, &out] {
    for (const CXmlNode* child : children) {
      if (child->type == kXmlUnknown) out += child->text;
      else static_cast<const CXmlElement*>(child)->AppendText(out);
    }
  };
  if (type != kXmlElement) {
    appendChildren();
    return;
  }
  out += "\n<";
  out += text;
  for (const auto& [name, value] : Attributes()) {
    out += ' ';
    out += name;
    out += "=\"";
    out += value;
    out += '"';
  }
  if (children.empty()) {
    out += "/>";
    return;
  }
  out += '>';
  appendChildren();
  out += "\n</";
  out += text;
  out += '>';
}

void CXmlElement::ParseAttributes(const char* first, const char* last) {
  ResolveAttributes();  // the start tag's own attributes come first
  ScanAttributes(first, last, [this](std::string_view name, std::string_view value) {
    (*attributes)[std::string(name)].assign(value);
  });
}

std::string CXmlElement::AttributeValue(const std::string& name) const {
  if (attributes) {
    auto found = attributes->find(name);
    return found == attributes->end() ? std::string() : found->second;
  }
  std::string_view value;
  if (pendingFirst) {
    ScanAttributes(pendingFirst, pendingLast, [&name, &value](std::string_view n, std::string_view v) {
      if (n == name) value = v;  // a repeated name keeps its last value
    });
  }
  return std::string(value);
}

void CXmlElement::ParseContent(const char* first, const char* last) {
  ParseRange(first, last, false);
}

void CXmlElement::ParseRange(const char* first, const char* last, bool deferAttributes) {
  // The content of nested elements is parsed on an explicit stack of open
  // elements instead of by recursion.
  std::vector<OpenElement> open;
  std::string closePattern;
  CXmlElement* current = this;
  const char* cur = first;
  const char* end = last;
  for (;;) {
    if (cur >= end) {
      if (open.empty()) return;
      OpenElement done = open.back();
      open.pop_back();
      if (current->children.capacity() > current->children.size()) {
        current->children.shrink_to_fit();
      }
      const char* closeEnd = FindChar(done.closeText, done.parentLast, '>');
      if (!closeEnd) {
        throw CXmlException(std::string(done.startTag, done.parentLast) + "Can not find '>'");
      }
      current = done.parent;
      cur = closeEnd + 1;
      end = done.parentLast;
      continue;
    }

    const char* lt = FindChar(cur, end, '<');
    if (!lt) {  // only text is left, and text is dropped
      cur = end;
      continue;
    }
    const char* gt = FindChar(lt + 1, end, '>');
    if (!gt) throw CXmlException(std::string(lt, end) + "Can not find '>'");

    if (lt[1] == '!' || lt[1] == '?') {
      const char* nodeEnd = gt;  // the node's closing '>'
      if (lt[1] == '!') {
        if (lt[2] == '-' && lt[3] == '-') {
          // A comment ends at its first '>', whatever its dashes say.
        } else if (Contains(lt, gt + 1, "CDAT")) {
          const char* close = FindText(lt, end, "]]>");
          if (!close) throw CXmlException("Can not find \"]]>\"");
          nodeEnd = close + 2;
        } else if (Contains(lt, gt + 1, "DOCTYPE")) {
          const char* close = FindText(lt, end, "]>");
          if (!close) throw CXmlException("DOCTYPE can not find \"]>\"");
          nodeEnd = close + 1;
        }
      }
      auto* unknown = new CXmlUnknown(current);
      current->children.push_back(unknown);
      unknown->text.assign(lt, nodeEnd + 1);
      cur = nodeEnd + 1;
      continue;
    }

    auto* element = new CXmlElement(current);
    current->children.push_back(element);
    const char* nameEnd = lt + 1;
    while (!EndsName(*nameEnd)) ++nameEnd;  // stops at gt at the latest
    element->text.assign(lt + 1, nameEnd);
    const bool empty = gt[-1] == '/';
    const char* attributesEnd = empty ? gt - 1 : gt;
    if (deferAttributes) {
      element->pendingFirst = nameEnd;
      element->pendingLast = attributesEnd;
    } else {
      element->ParseAttributes(nameEnd, attributesEnd);
    }
    if (empty) {
      cur = gt + 1;
      continue;
    }

    closePattern.assign("</");
    closePattern += element->text;
    const char* closeText = FindText(gt + 1, end, closePattern);
    if (!closeText) {
      throw CXmlException(std::string(lt, gt + 1) + "Can not find </element>");
    }
    if (open.size() >= kMaxXmlDepth) {
      throw CXmlException(std::string(lt, gt + 1) + "Elements nested deeper than " +
                          std::to_string(kMaxXmlDepth) + " levels");
    }
    open.push_back({current, end, lt, closeText});
    current = element;
    cur = gt + 1;
    end = closeText;
  }
}
