#pragma once
#include <string>

#include "idlist/XmlElement.h"

// The whole document, the root of the tree. It owns the file's characters,
// which the elements' unparsed attribute texts point into.
class CXmlDocument : public CXmlElement {
 public:
  CXmlDocument() : CXmlElement(kXmlDocument, nullptr) {}
  ~CXmlDocument() override;

  // Reads the file, replaces attributes and children, and parses it.
  // Throws CXmlException ("Can not open file!" or a syntax message).
  void LoadFile(const std::string& path);

 private:
  std::string source;
};
