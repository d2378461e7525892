// XML in one call.
#include <gtest/gtest.h>

#include <filesystem>

#include "persistence/System.Beacon.Fencing.XML.h"
#include "platform/files.h"
#include "support/raised.h"

namespace System::Beacon::Fencing {
namespace {

TEST(XMLHelpers, AValueIsTakenFromTheFirstTopLevelNodeOfTheName) {
  struct TCase {
    const char* Text;
    const char* Name;
    const char* Value;
  };
  for (const TCase& Case : {
           TCase{"<Version>3</Version>", "version", "3"},
           {"<?xml version='1.0'?><!-- 2 -->\n<VERSION> 3 &amp; 4 </VERSION>",
            "Version",
            " 3 & 4 "},
           {"<a><Version>3</Version></a>", "Version", ""},
           {"<a><b>3</b>4</a>", "a", "3"},
           {"<a>3<b/>4</a>", "a", "3"},
           {"<a></a>", "a", ""},
           {"<?a 3?><a>4</a>", "a", ""},
       })
    EXPECT_EQ(GetValueFromXMLRootChildNode(Case.Text, Case.Name), Case.Value) << Case.Text;
}

class XMLFile : public testing::Test {
 protected:
  const std::string FPath = testing::TempDir() + "XMLHelpersTest.xml";
  void TearDown() override { std::filesystem::remove(FPath); }
};

TEST_F(XMLFile, FilesAndTextsOpenAtTheDocumentNode) {
  const std::string Text = "<?p?><a>é</a>";
  ReplaceFile(FPath, Text);
  TRef<IXMLDocument> OfFile, OfString;
  for (const TRef<IXMLNode>& Node :
       {OpenXMLFromFile(FPath, OfFile), OpenXMLFromString(Text, OfString)}) {
    ASSERT_EQ(Node->GetNodeName(), "#document");
    EXPECT_EQ(Node->GetFirstChild()->GetNodeName(), "p");
    EXPECT_EQ(Node->GetFirstChild()->GetNextSibling()->GetText(), "é");
  }
  EXPECT_EQ(OfFile->GetDocumentElement()->GetPlace(), FPath + ":1:6");
  EXPECT_EQ(OfString->GetDocumentElement()->GetPlace(), "1:6");
}

TEST_F(XMLFile, WhatIsRefusedHandsNothingOut) {
  const TRef<IXMLDocument> Before = ParseXML("<a/>");
  TRef<IXMLDocument> Document = Before;
  EXPECT_EQ(Raised<EFileError>([&] { OpenXMLFromFile(FPath, Document); }),
            FPath + ": the file cannot be opened: No such file or directory");
  ReplaceFile(FPath, "<a>\n<b></a>");
  EXPECT_EQ(Raised<EXMLError>([&] { OpenXMLFromFile(FPath, Document); }),
            FPath + ":2:4: </a> stands where <b> of line 2 has to end");
  EXPECT_EQ(Raised<EXMLError>([&] { OpenXMLFromString("<a>", Document); }),
            "1:1: <a> is not closed");
  EXPECT_EQ(Document, Before);
}

}  // namespace
}  // namespace System::Beacon::Fencing
