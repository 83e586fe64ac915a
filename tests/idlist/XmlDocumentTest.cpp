#include <gtest/gtest.h>

#include <string>

#include "common/TestUtil.h"
#include "idlist/XmlDocument.h"

namespace {

// Loads `text` through a file, as the pepXML reader does (attributes parsed on demand).
void Load(CXmlDocument& document, const std::string& text) {
  testutil::TempDir dir;
  testutil::WriteFile(dir / "doc.xml", text);
  document.LoadFile(dir / "doc.xml");
}

// The message of the CXmlException that parsing `text` raises, or "" if none.
std::string LoadError(const std::string& text) {
  CXmlDocument document;
  try {
    Load(document, text);
  } catch (const CXmlException& error) {
    return error.message;
  }
  return "";
}

std::string ParseError(const std::string& text) {
  CXmlElement element;
  try {
    element.ParseContent(text.data(), text.data() + text.size());
  } catch (const CXmlException& error) {
    return error.message;
  }
  return "";
}

}  // namespace

TEST(XmlDocument, ElementsAttributesAndChildren) {
  CXmlDocument document;
  Load(document,
       "<?xml version=\"1.0\"?>\n<root a=\"1\" b = \"two\" a=\"3\">\n"
       "  <item x=\"1\"/>\n  <item x=\"2\"></item>\n  <other/>\n  <item/>\n</root>\n");
  ASSERT_EQ(document.children.size(), 2u);
  EXPECT_EQ(document.children[0]->type, kXmlUnknown);
  EXPECT_EQ(document.children[0]->text, "<?xml version=\"1.0\"?>");
  CXmlElement* root = document.GetChild("root", 0);
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->parent, &document);
  EXPECT_EQ(root->GetAttribute("a"), "3");  // a repeated name keeps the last value
  EXPECT_EQ(root->GetAttribute("b"), "two");
  EXPECT_EQ(root->CountChildren("item"), 3);
  EXPECT_EQ(root->GetChild("item", 1)->GetAttribute("x"), "2");
  EXPECT_EQ(root->GetChild("item", 3), nullptr);
  EXPECT_EQ(root->GetChild("item", -1), nullptr);
  EXPECT_EQ(root->GetChild("missing", 0), nullptr);
  // Asking for an absent attribute enters it with an empty value.
  EXPECT_EQ(root->GetAttribute("zzz"), "");
  EXPECT_EQ(root->Attributes().count("zzz"), 1u);
  // Unknown nodes never count as children of a name.
  EXPECT_EQ(document.CountChildren("<?xml version=\"1.0\"?>"), 0);
}

TEST(XmlDocument, ClosingTagQuirks) {
  // Nested elements of one name: the inner closing tag closes the outer one.
  EXPECT_EQ(LoadError("<a><a></a></a>"), "<a>Can not find </element>");
  // The closing text is a prefix: </ab closes <a... named "ab" and "a" alike.
  CXmlDocument document;
  Load(document, "<r><ab><x/></abc><y/></r>");
  CXmlElement* r = document.GetChild("r", 0);
  ASSERT_NE(r, nullptr);
  ASSERT_NE(r->GetChild("ab", 0), nullptr);
  EXPECT_EQ(r->GetChild("ab", 0)->CountChildren("x"), 1);
  EXPECT_EQ(r->CountChildren("y"), 1);
  // The tree stays as far as it was built when the parse fails.
  CXmlDocument broken;
  EXPECT_THROW(Load(broken, "<r/><a><b></b>"), CXmlException);
  EXPECT_EQ(broken.CountChildren("r"), 1);
  EXPECT_EQ(broken.CountChildren("a"), 1);
}

TEST(XmlDocument, TagAndTextQuirks) {
  CXmlDocument document;
  // '>' in a value ends the tag; the rest of the value is text and dropped.
  Load(document, "<r>lead<a v=\"1>2\" w=\"3\"></a>mid<!-- c > d --><b e=\"&lt;&amp;\"/>tail</r>");
  CXmlElement* r = document.GetChild("r", 0);
  ASSERT_NE(r, nullptr);
  ASSERT_EQ(r->children.size(), 3u);  // a, the comment, b: no text nodes
  CXmlElement* a = r->GetChild("a", 0);
  EXPECT_TRUE(a->Attributes().empty());
  EXPECT_TRUE(a->children.empty());
  EXPECT_EQ(r->children[1]->type, kXmlUnknown);
  EXPECT_EQ(r->children[1]->text, "<!-- c >");  // a comment ends at its first '>'
  EXPECT_EQ(r->GetChild("b", 0)->GetAttribute("e"), "&lt;&amp;");  // entities stay

  // Attributes count only on the tag's first line: line feeds aren't trimmed.
  CXmlDocument lines;
  Load(lines, "<a x=\"1\"\r\n   y=\"2\" z='3'\tw=\"4\"/>");
  CXmlElement* e = lines.GetChild("a", 0);
  ASSERT_NE(e, nullptr);
  EXPECT_EQ(e->GetAttribute("x"), "1");
  EXPECT_EQ(e->Attributes().count("\n   y"), 1u);
  EXPECT_EQ(e->GetAttribute("y"), "");
  // Single quotes don't delimit: z takes the next double-quoted value.
  EXPECT_EQ(e->GetAttribute("z"), "4");
  EXPECT_EQ(e->Attributes().count("w"), 0u);

  // The name ends at a line feed, tab or '/'.
  CXmlDocument names;
  Load(names, "<first\nk=\"v\"/><second\tk=\"v\"></second><third/>");
  EXPECT_EQ(names.CountChildren("first"), 1);
  EXPECT_EQ(names.CountChildren("second"), 1);
  EXPECT_EQ(names.GetChild("third", 0)->children.size(), 0u);

  // CDATA and document types may hold '>' and end at "]]>" / "]>".
  CXmlDocument markup;
  Load(markup, "<!DOCTYPE r [<!ELEMENT r ANY>]><r><![CDATA[a>b]]><c/></r>");
  ASSERT_EQ(markup.children.size(), 2u);
  EXPECT_EQ(markup.children[0]->text, "<!DOCTYPE r [<!ELEMENT r ANY>]>");
  CXmlElement* root = markup.GetChild("r", 0);
  ASSERT_EQ(root->children.size(), 2u);
  EXPECT_EQ(root->children[0]->text, "<![CDATA[a>b]]>");

  // An empty file gives an empty document.
  CXmlDocument empty;
  EXPECT_NO_THROW(Load(empty, ""));
  EXPECT_TRUE(empty.children.empty());
}

TEST(XmlDocument, ExceptionMessages) {
  CXmlDocument document;
  try {
    document.LoadFile("/nonexistent/dir/file.xml");
    ADD_FAILURE() << "no exception";
  } catch (const CXmlException& error) {
    EXPECT_EQ(error.message, "Can not open file!");
    EXPECT_STREQ(error.what(), "Can not open file!");
  }
  EXPECT_EQ(LoadError("<r/>\n<a b=\"1\""), "<a b=\"1\"Can not find '>'");
  EXPECT_EQ(LoadError("<r><a x=\"1\"></r>"), "<a x=\"1\">Can not find </element>");
  EXPECT_EQ(LoadError("<a><b/></a"), "<a><b/></aCan not find '>'");
  EXPECT_EQ(LoadError("<![CDATA[ x > y"), "Can not find \"]]>\"");
  EXPECT_EQ(LoadError("<!DOCTYPE html><html></html>"), "DOCTYPE can not find \"]>\"");
  // A DOCTYPE without internal subset passes when "]>" stands later anyway,
  // and swallows everything up to there: "</r>" is then a start tag.
  EXPECT_EQ(LoadError("<!DOCTYPE html><r><![CDATA[x]]></r>"), "</r>Can not find </element>");
  // The same messages come from ParseContent on a range.
  EXPECT_EQ(ParseError("<a><a></a></a>"), "<a>Can not find </element>");
  EXPECT_EQ(ParseError("<a"), "<aCan not find '>'");
}

TEST(XmlDocument, ToTextForms) {
  CXmlDocument document;
  Load(document, "<?xml v?><r z=\"1\" a=\"2\"><e k=\"v\"></e><!--c--><f/></r>");
  EXPECT_EQ(document.GetChild("r", 0)->GetChild("e", 0)->ToText(), "\n<e k=\"v\"/>");
  EXPECT_EQ(document.ToText(),
            "<?xml v?>\n<r a=\"2\" z=\"1\">\n<e k=\"v\"/><!--c-->\n<f/>\n</r>");
  EXPECT_EQ(document.children[0]->ToText(), "<?xml v?>");

  // ParseContent on a plain element adds to its children.
  CXmlElement element;
  element.text = "top";
  const std::string text = "<p q=\"1\"/>";
  element.ParseContent(text.data(), text.data() + text.size());
  EXPECT_EQ(element.ToText(), "\n<top>\n<p q=\"1\"/>\n</top>");
}

TEST(XmlDocument, DeepNestingAndReload) {
  // Distinct names nest as deep as the file goes, without recursion.
  const int depth = 3000;
  std::string text;
  for (int i = 0; i < depth; ++i) text += "<n" + std::to_string(i) + "x>";
  for (int i = depth - 1; i >= 0; --i) text += "</n" + std::to_string(i) + "x>";
  CXmlDocument document;
  Load(document, text);
  const CXmlElement* element = &document;
  int levels = 0;
  while (!static_cast<const CXmlElement*>(element)->children.empty()) {
    element = static_cast<const CXmlElement*>(element->children[0]);
    ++levels;
  }
  EXPECT_EQ(levels, depth);
  // A second load replaces the tree.
  Load(document, "<x/>");
  ASSERT_EQ(document.children.size(), 1u);
  EXPECT_EQ(document.children[0]->text, "x");
}

TEST(XmlDocument, AttributeValueReadsWithoutEntering) {
  CXmlDocument document;
  Load(document, "<a x=\"1\" y=\"2\" x=\"3\"\n z=\"4\"/>");
  CXmlElement* a = document.GetChild("a", 0);
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->AttributeValue("x"), "3");
  EXPECT_EQ(a->AttributeValue("z"), "");
  EXPECT_EQ(a->AttributeValue("\n z"), "4");
  EXPECT_EQ(a->AttributeValue("w"), "");
  EXPECT_EQ(a->Attributes().size(), 3u);  // nothing entered by the look-ups
  EXPECT_EQ(a->GetAttribute("w"), "");
  EXPECT_EQ(a->Attributes().size(), 4u);
  EXPECT_EQ(a->AttributeValue("y"), "2");
}

TEST(XmlDocument, GarbageAndTruncationNeverCrash) {
  const std::string valid =
      "<?xml v?>\n<!DOCTYPE r [<!ENTITY e \"x\">]>\n<r a=\"1\">\n <!-- c -->\n <![CDATA[<x>]]>\n"
      " <s k=\"v\"\n  j=\"w\"><t/><u x=\"&lt;\"></u></s>\n <s/>\n</r>\n";
  // Every prefix parses or raises CXmlException.
  for (std::size_t n = 0; n <= valid.size(); ++n) {
    CXmlElement element;
    try {
      element.ParseContent(valid.data(), valid.data() + n);
      (void)element.ToText();
    } catch (const CXmlException&) {
    }
  }
  // Random markup-heavy bytes, from a fixed seed.
  const char alphabet[] = "<>/!?-[]\"'= \n\rabCDATOYPE";
  unsigned state = 12345;
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    const int length = 1 + round % 97;
    for (int i = 0; i < length; ++i) {
      state = state * 1103515245u + 12345u;
      text += alphabet[(state >> 16) % (sizeof alphabet - 1)];
    }
    CXmlElement element;
    try {
      element.ParseContent(text.data(), text.data() + text.size());
      (void)element.ToText();
      for (const CXmlNode* child : element.children) {
        if (child->type == kXmlElement) (void)static_cast<const CXmlElement*>(child)->AttributeValue("a");
      }
    } catch (const CXmlException&) {
    }
  }
}
