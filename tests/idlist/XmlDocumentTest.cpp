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

// The message of the CXmlException that loading `text` raises (or that
// ParseContent raises on it, with `range`), "" if none.
std::string Error(const std::string& text, bool range = false) {
  CXmlDocument document;
  try {
    if (range) document.ParseContent(text.data(), text.data() + text.size());
    else Load(document, text);
  } catch (const CXmlException& error) {
    return error.message;
  }
  return "";
}

}  // namespace

TEST(XmlDocument, ElementsAttributesAndChildren) {
  CXmlDocument document;
  Load(document, "<?xml version=\"1.0\"?>\n<root a=\"1\" b = \"two\" a=\"3\">\n <item x=\"1\"/>\n"
                 " <item x=\"2\"></item>\n <other/>\n <item/>\n</root>\n");
  ASSERT_EQ(document.children.size(), 2u);
  EXPECT_EQ(document.children[0]->text, "<?xml version=\"1.0\"?>");
  EXPECT_EQ(document.CountChildren("<?xml version=\"1.0\"?>"), 0);  // unknown nodes don't count
  CXmlElement* root = document.GetChild("root", 0);
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->AttributeValue("a"), "3");  // a repeated name keeps the last value
  EXPECT_EQ(root->CountChildren("item"), 3);
  EXPECT_EQ(root->GetChild("item", 1)->GetAttribute("x"), "2");
  EXPECT_EQ(root->GetChild("item", 3), nullptr);
  // The read-only look-up enters nothing; GetAttribute enters an absent name empty.
  EXPECT_EQ(root->AttributeValue("zzz"), "");
  EXPECT_EQ(root->Attributes().size(), 2u);
  EXPECT_EQ(root->GetAttribute("zzz"), "");
  EXPECT_EQ(root->Attributes().size(), 3u);
  EXPECT_EQ(root->GetAttribute("b"), "two");

  // ToText: attributes in key order, no children gives the self-closing form.
  Load(document, "<?xml v?><r z=\"1\" a=\"2\"><e k=\"v\"></e><!--c--><f/></r>");
  EXPECT_EQ(document.ToText(), "<?xml v?>\n<r a=\"2\" z=\"1\">\n<e k=\"v\"/><!--c-->\n<f/>\n</r>");
}

TEST(XmlDocument, ParserQuirks) {
  CXmlDocument document;
  // The closing text is a prefix: </abc closes <ab. '>' in a value ends the tag,
  // the rest is text and dropped; a comment ends at its first '>'; entities stay.
  Load(document, "<r>lead<ab><x/></abc><a v=\"1>2\" w=\"3\"></a>mid<!-- c > d -->"
                 "<b e=\"&lt;&amp;\"/>tail</r>");
  CXmlElement* r = document.GetChild("r", 0);
  ASSERT_NE(r, nullptr);
  ASSERT_EQ(r->children.size(), 4u);  // ab, a, the comment, b: no text nodes
  EXPECT_EQ(r->GetChild("ab", 0)->CountChildren("x"), 1);
  EXPECT_TRUE(r->GetChild("a", 0)->Attributes().empty());
  EXPECT_EQ(r->children[2]->text, "<!-- c >");
  EXPECT_EQ(r->GetChild("b", 0)->GetAttribute("e"), "&lt;&amp;");

  // Attributes count only on the tag's first line: line feeds aren't trimmed.
  // Single quotes don't delimit: z takes the next double-quoted value.
  Load(document, "<a x=\"1\"\r\n   y=\"2\" z='3'\tw=\"4\"/><b\nk=\"v\"/><c\tk=\"v\"></c>");
  CXmlElement* a = document.GetChild("a", 0);
  EXPECT_EQ(a->AttributeValue("x") + a->AttributeValue("y") + a->AttributeValue("z"), "14");
  EXPECT_EQ(a->AttributeValue("\n   y"), "2");
  EXPECT_EQ(a->Attributes().count("w"), 0u);
  EXPECT_EQ(document.CountChildren("b") + document.CountChildren("c"), 2);  // names end at \n, \t

  // CDATA and document types may hold '>' and end at "]]>" / "]>".
  Load(document, "<!DOCTYPE r [<!ELEMENT r ANY>]><r><![CDATA[a>b]]><c/></r>");
  ASSERT_EQ(document.children.size(), 2u);
  EXPECT_EQ(document.children[0]->text, "<!DOCTYPE r [<!ELEMENT r ANY>]>");
  EXPECT_EQ(document.GetChild("r", 0)->children[0]->text, "<![CDATA[a>b]]>");
  Load(document, "");  // an empty file: an empty document, and the old tree is gone
  EXPECT_TRUE(document.children.empty());

  // The tree stays as far as it was built when the parse fails.
  EXPECT_THROW(Load(document, "<r/><a><b></b>"), CXmlException);
  EXPECT_EQ(document.CountChildren("r") + document.CountChildren("a"), 2);
}

TEST(XmlDocument, ExceptionMessages) {
  EXPECT_EQ(Error("<r/>\n<a b=\"1\""), "<a b=\"1\"Can not find '>'");
  EXPECT_EQ(Error("<r><a x=\"1\"></r>"), "<a x=\"1\">Can not find </element>");
  // Nested elements of one name: the inner closing tag closes the outer one.
  EXPECT_EQ(Error("<a><a></a></a>"), "<a>Can not find </element>");
  EXPECT_EQ(Error("<a><b/></a"), "<a><b/></aCan not find '>'");
  EXPECT_EQ(Error("<![CDATA[ x > y"), "Can not find \"]]>\"");
  EXPECT_EQ(Error("<!DOCTYPE html><html></html>"), "DOCTYPE can not find \"]>\"");
  // A DOCTYPE without internal subset passes when "]>" stands later anyway,
  // and swallows everything up to there: "</r>" is then a start tag.
  EXPECT_EQ(Error("<!DOCTYPE html><r><![CDATA[x]]></r>"), "</r>Can not find </element>");
  EXPECT_EQ(Error("<a", true), "<aCan not find '>'");
  CXmlDocument document;
  try {
    document.LoadFile("/nonexistent/file.xml");
    ADD_FAILURE() << "no exception";
  } catch (const CXmlException& error) {
    EXPECT_STREQ(error.what(), "Can not open file!");
  }
}

TEST(XmlDocument, DeepNestingWithoutRecursion) {
  // Distinct names nest as deep as the file goes, without recursion.
  std::string text;
  for (int i = 0; i < 3000; ++i) text += "<n" + std::to_string(i) + "x>";
  for (int i = 2999; i >= 0; --i) text += "</n" + std::to_string(i) + "x>";
  CXmlDocument document;
  Load(document, text);
  int levels = 0;
  for (const CXmlElement* e = &document; !e->children.empty(); ++levels)
    e = static_cast<const CXmlElement*>(e->children[0]);
  EXPECT_EQ(levels, 3000);
}
