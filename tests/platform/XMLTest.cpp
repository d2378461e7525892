// XML: what is read, where it stands, what is refused, how it is indented.
#include "platform/xml.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "support/raised.h"

namespace System {
namespace {

/// Elements as name(attributes)[children], texts in quotes, instructions between question marks.
std::string OutlineOf(const TRef<IXMLNode>& ANode) {
  if (ANode->GetKind() == TXMLNodeKind::Text) return fmt::format("'{}'", ANode->GetText());
  if (ANode->GetKind() == TXMLNodeKind::Instruction)
    return fmt::format("?{} {}?", ANode->GetNodeName(), ANode->GetText());
  std::string Attributes, Children;
  for (const TXMLAttribute& Attribute : ANode->GetAttributes())
    Attributes += fmt::format(" {}={}", Attribute.Name, Attribute.Value);
  std::size_t Count = 0;
  for (TRef<IXMLNode> Child = ANode->GetFirstChild(); Child; Child = Child->GetNextSibling()) {
    if (Count++ > 0) Children += ' ';
    Children += OutlineOf(Child);
  }
  EXPECT_EQ(ANode->GetChildCount(), Count);
  return fmt::format("{}{}{}",
                     ANode->GetNodeName(),
                     Attributes.empty() ? "" : fmt::format("({})", Attributes.substr(1)),
                     Children.empty() ? "" : fmt::format("[{}]", Children));
}

std::string OutlineOf(const std::string& AText) {
  return OutlineOf(ParseXML(AText)->GetNode());
}

std::string RefusalOf(const std::string& AText) {
  return Raised<EXMLError>([&] { ParseXML(AText); });
}

std::string Times(std::size_t ACount, std::string_view AText) {
  std::string Result;
  for (std::size_t I = 0; I < ACount; ++I) Result += AText;
  return Result;
}

TEST(XML, TextsBecomeTrees) {
  // The outlines are those of what is in the document.
  for (const auto& [Text, Outline] : {
           std::pair<const char*, const char*>{"<a/>", "a"},
           {"\xEF\xBB\xBF<a></a>", "a"},
           {"<?xml version='1.0' encoding='utf-8'?>\n<!-- c --><!DOCTYPE a SYSTEM \"a.dtd\">\n"
            "<?p q r?><a/><!-- c --><?s?>",
            "xml(version=1.0 encoding=utf-8) ?p q r? a ?s ?"},
           {"<a b = \"1\"  c='\"'\n d=\"&lt;&#65;&#x42;&#10;\n\"/>", "a(b=1 c=\" d=<AB\n )"},
           {"<a>&lt;&gt;&amp;&quot;&apos;&#x20AC;</a>", "a['<>&\"'\xE2\x82\xAC']"},
           {"<a>Tom & Jerry &co & &amp</a>", "a['Tom & Jerry &co & &amp']"},
           {"<a>\n <b> x </b>\r\n\t<c>y\r\nz</c> </a>", "a[b[' x '] c['y\nz']]"},
           {"<a> <!-- c --> </a>", "a"},
           {"<a><b> </b><c>\n</c></a>", "a[b[' '] c['\n']]"},
           {"<a>x<![CDATA[<y> & ]] ]]>z<b/></a>", "a['x' '<y> & ]] ' 'z' b]"},
           {"<\xC3\xA9t\xC3\xA9 n:\xE5\x90\x8D-.1='\xF0\x9F\x98\x80'/>",
            "\xC3\xA9t\xC3\xA9(n:\xE5\x90\x8D-.1=\xF0\x9F\x98\x80)"},
       })
    EXPECT_EQ(OutlineOf(Text), std::string("#document[") + Outline + "]") << Text;
}

TEST(XML, WhatIsNotWellFormedIsRefusedWhereItStands) {
  const std::string Declaration =
      "a declaration stands at the very start: <?xml version=\"1.0\" encoding=\"UTF-8\"?>";
  for (const auto& [Text, Refusal] : {
           // The whole
           std::pair<std::string, const char*>{"", "1:1: there is no root element"},
           {"<!-- -->\n", "2:1: there is no root element"},
           {"\n x<a/>", "2:2: text outside of the root element"},
           {"<a/>&#32;", "1:5: text outside of the root element"},
           {"<a/><![CDATA[]]>", "1:5: text outside of the root element"},
           {"<a/>\n<b/>", "2:1: <b> is a second root element"},
           {"<a>\n <b>", "2:2: <b> is not closed"},
           {"<a>\n <b></c></a>", "2:5: </c> stands where <b> of line 2 has to end"},
           {"<a></a></a>", "1:8: </a> ends nothing"},
           // Characters
           {"<a>\xC3\xA9\x01</a>", "1:5: the character U+0001 cannot stand in XML"},
           {std::string("<a>\0</a>", 8), "1:4: the character U+0000 cannot stand in XML"},
           {"<a>\xEF\xBF\xBF</a>", "1:4: the character U+FFFF cannot stand in XML"},
           {"<a>1234567\xE9!</a>", "1:11: the text is not UTF-8 from here on"},
           {"<a>\xC0\xAF</a>", "1:4: the text is not UTF-8 from here on"},
           {"<a>\xE0\x80\xAF</a>", "1:4: the text is not UTF-8 from here on"},
           {"<a>\xED\xA0\x80</a>", "1:4: the text is not UTF-8 from here on"},
           {"<a>\xF4\x90\x80\x80</a>", "1:4: the text is not UTF-8 from here on"},
           {"<a/>\xE2\x82", "1:5: the text is not UTF-8 from here on"},
           {std::string("\xFF\xFE<\0a\0", 6),
            "1:1: the text is UTF-16 or UTF-32; save it as UTF-8"},
           // Tags
           {"<", "1:2: a name should stand here"},
           {"<1a/>", "1:2: a name should stand here"},
           {"<a\xC3\x97/>", "1:3: white space should stand here"},
           {"<\xC2\xB7/>", "1:2: a name should stand here"},
           {"<!ELEMENT a>", "1:1: a name should stand here"},
           {"<a", "1:3: '>' should stand here"},
           {"<a/ >", "1:4: '>' should stand here"},
           {"<a></a b='1'>", "1:8: '>' should stand here"},
           {"<a b>", "1:5: '=' should stand here"},
           {"<a b=1/>", "1:6: a value in quotes should stand here"},
           {"<a\nb='1/>", "2:3: the value in quotes does not end"},
           {"<a b='1'c='2'/>", "1:9: white space should stand here"},
           {"<a b='1' c='2'\n b='1'/>", "2:2: the attribute b stands here twice"},
           {"<a b='1<2'/>", "1:8: '<' in a value; write &lt;"},
           // Texts and references
           {"<a>x]]></a>", "1:5: ']]>' in a text; write ]]&gt;"},
           {"<a>\n&nbsp;</a>", "2:1: the entity &nbsp; is not known"},
           {"<a b='&c;'/>", "1:7: the entity &c; is not known"},
           {"<a>&#0;</a>", "1:4: this reference names no character of XML"},
           {"<a>&#xD800;</a>", "1:4: this reference names no character of XML"},
           {"<a>&#99999999999;</a>", "1:4: this reference names no character of XML"},
           {"<a>&#X41;</a>", "1:4: this reference names no character of XML"},
           {"<a>&#65</a>", "1:4: this reference names no character of XML"},
           {"<a>&#-65;</a>", "1:4: this reference names no character of XML"},
           // Comments, sections, instructions, declarations
           {"<a>\n<!-- </a>", "2:1: the comment does not end"},
           {"<a><!-- - -- --></a>", "1:11: '--' within a comment"},
           {"<a><![CDATA[ ]]</a>", "1:4: the CDATA section does not end"},
           {"<a><?p </a>", "1:4: the instruction does not end"},
           {"<?p+?><a/>", "1:4: white space should stand here"},
           {"\n<?xml version='1.0'?><a/>", "2:1: {}"},
           {"<a><?XML v?></a>", "1:4: {}"},
           {"<?xml encoding='UTF-8'?><a/>", "1:1: {}"},
           {"<?xml version='1.?>'?><a/>", "1:7: {}"},
           {"<?xml version='1.0'><a/>", "1:20: '?>' should stand here"},
           {"<?xml version='1.0' encoding='Latin1'?><a/>",
            "1:31: the encoding Latin1 cannot be read; save the text as UTF-8"},
           // Document types
           {"<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>",
            "1:13: a document type with declarations of its own is not read"},
           {"<!DOCTYPE a PUBLIC 'b'><a/>", "1:23: white space should stand here"},
           {"<!DOCTYPE a b><a/>", "1:13: '>' should stand here"},
           {"<a/><!DOCTYPE a>", "1:5: a document type stands once, before the root element"},
           {"<!DOCTYPE a><!DOCTYPE a><a/>",
            "1:13: a document type stands once, before the root element"},
       })
    EXPECT_EQ(RefusalOf(Text), fmt::format(fmt::runtime(Refusal), Declaration)) << Text;
}

TEST(XML, SizeNodesDepthAndNamesInMessagesAreBounded) {
  const auto Nested = [](std::size_t ADepth) {
    return Times(ADepth, "<a>") + Times(ADepth, "</a>");
  };
  EXPECT_EQ(RefusalOf(Nested(MaxXMLDepth)), "nothing was raised");
  EXPECT_EQ(RefusalOf(Nested(MaxXMLDepth + 1)), "1:769: elements are nested deeper than 256");
  EXPECT_EQ(RefusalOf("<a>" + Times(MaxXMLNodes, "<b/>")),
            "1:48000000: more than 12000000 elements, texts and attributes");
  const std::string Long(MaxXMLSize + 1, ' ');
  EXPECT_EQ(Raised<EXMLError>([&] { IndentXML(Long); }),
            "1:1: the text is longer than 268435456 bytes");
  EXPECT_EQ(RefusalOf("</x" + Times(1000, "\xC3\xA9") + ">"),
            "1:1: </x" + Times(29, "\xC3\xA9") + "> ends nothing");
}

TEST(XML, AttributesByTheThousandAreReadAndToldApart) {
  std::string Tag = "<a";
  for (int I = 0; I < 100'000; ++I) Tag += fmt::format(" b{}=''", I);
  EXPECT_EQ(ParseXML(Tag + "/>")->GetDocumentElement()->GetAttributes().size(), 100'000U);
  EXPECT_EQ(RefusalOf(Tag + " b77=''/>"),
            fmt::format("1:{}: the attribute b77 stands here twice", Tag.size() + 2));
}

TEST(XML, NodesKnowTheirPlaceAndKeepTheirDocument) {
  const std::string Text =
      "\xEF\xBB\xBF<?xml version='1.0'?>\r\n"
      "<?p?>\n"
      "<\xC3\xA9 b='&lt;'>\r\n"
      "  <c/>&amp;&amp; \xC3\xA9 <![CDATA[d]]><e/></\xC3\xA9>";
  std::string Places;
  const auto Visit = [&Places](TRef<IXMLNode> ANode) {
    for (; ANode; ANode = ANode->GetNextSibling()) Places += ANode->GetPlace() + " ";
  };
  TRef<IXMLNode> Root;
  {
    const TRef<IXMLDocument> Document = ParseXML(Text, "f.xml");
    Root = Document->GetDocumentElement();
    Visit(Document->GetNode());
    Visit(Document->GetNode()->GetFirstChild());
  }
  Visit(Root->GetFirstChild());
  EXPECT_EQ(Places,
            "f.xml:1:1 f.xml:1:1 f.xml:2:1 f.xml:3:1 "
            "f.xml:4:3 f.xml:4:7 f.xml:4:20 f.xml:4:33 ");
  EXPECT_EQ(Root->GetText(), "&& \xC3\xA9 d");
  EXPECT_EQ(Root->GetAttribute("b"), "<");
  EXPECT_EQ(Root->GetAttribute("B"), std::nullopt);
}

TEST(XML, IndentingPutsOneElementOnALineAndKeepsTexts) {
  for (const auto& [Text, Indented] : {
           std::pair<const char*, const char*>{"<a/>", "<a/>\n"},
           {"\xEF\xBB\xBF<?xml version = '1.0'?><!DOCTYPE a><a></a><!-- c -->",
            "<?xml version = '1.0'?>\n<!DOCTYPE a>\n<a></a>\n<!-- c -->\n"},
           {"<a><b c = \"1\"><d>&lt; x</d><d></d></b>\n\n<b/> <?p q?></a>",
            "<a>\n  <b c = \"1\">\n    <d>&lt; x</d>\n    <d></d>\n  </b>\n  <b/>\n  <?p "
            "q?>\n</a>\n"},
           {"<a><p><b><i/></b> <i/>  x\n<b> <i/> </b></p><q/></a>",
            "<a>\n  <p><b><i/></b> <i/>  x\n<b> <i/> </b></p>\n  <q/>\n</a>\n"},
           {"<a><b> </b><c><![CDATA[]]><d/></c><e><!-- c --></e></a>",
            "<a>\n  <b> </b>\n  <c><![CDATA[]]><d/></c>\n  <e>\n    <!-- c -->\n  </e>\n</a>\n"},
       }) {
    EXPECT_EQ(IndentXML(Text), Indented);
    EXPECT_EQ(IndentXML(Indented), Indented);
    EXPECT_EQ(OutlineOf(Indented), OutlineOf(Text));
  }
  EXPECT_EQ(Raised<EXMLError>([] { IndentXML("<a><b></a>"); }),
            "1:7: </a> stands where <b> of line 1 has to end");
}

TEST(XML, IndentingDoesNotBlowATextUp) {
  const std::string Deep = Times(255, "<a>") + Times(600'000, "<b/>") + Times(255, "</a>");
  EXPECT_EQ(Raised<EXMLError>([&] { IndentXML(Deep); }),
            "the indented text would be longer than 268435456 bytes");
}

}  // namespace
}  // namespace System
