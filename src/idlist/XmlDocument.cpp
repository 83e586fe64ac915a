#include "idlist/XmlDocument.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "run/Process.h"

CXmlDocument::~CXmlDocument() { Clear(); }

void CXmlDocument::LoadFile(const std::string& path) {
  // Only a regular file: a directory can't be read, a FIFO or device may never end.
  std::ifstream in;
  if (GetPathKind(path) == PathKind::File) in.open(path, std::ios::binary);
  if (!in.is_open()) throw CXmlException("Can not open file!");

  Clear();
  source.clear();
  source.shrink_to_fit();
  // One allocation of the file's size where the size is known; streams that
  // can't tell it are read in pieces.
  in.seekg(0, std::ios::end);
  std::streamoff size = in.tellg();
  in.seekg(0, std::ios::beg);
  if (size > 0 && in) {
    source.resize(static_cast<std::size_t>(size));
    in.read(source.data(), size);
    source.resize(static_cast<std::size_t>(in.gcount()));
  } else {
    in.clear();
    source.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  ParseRange(source.data(), source.data() + source.size(), true);
}
