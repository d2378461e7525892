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

TEST(XMLHelpers, FilesAndTextsOpenAtTheDocumentNodeOrHandNothingOut) {
  const std::string Path = testing::TempDir() + "XMLHelpersTest.xml";
  ReplaceFile(Path, "<?p?><a>é</a>");
  TRef<IXMLDocument> OfFile, OfString;
  for (const TRef<IXMLNode>& Node :
       {OpenXMLFromFile(Path, OfFile), OpenXMLFromString("<?p?><a>é</a>", OfString)}) {
    ASSERT_EQ(Node->GetNodeName(), "#document");
    EXPECT_EQ(Node->GetFirstChild()->GetNextSibling()->GetText(), "é");
  }
  EXPECT_EQ(OfFile->GetDocumentElement()->GetPlace(), Path + ":1:6");
  EXPECT_EQ(OfString->GetDocumentElement()->GetPlace(), "1:6");

  const TRef<IXMLDocument> Before = OfFile;
  ReplaceFile(Path, "<a>\n<b></a>");
  EXPECT_EQ(Raised<EXMLError>([&] { OpenXMLFromFile(Path, OfFile); }),
            Path + ":2:4: </a> stands where <b> of line 2 has to end");
  EXPECT_EQ(Raised<EXMLError>([&] { OpenXMLFromString("<a>", OfFile); }), "1:1: <a> is not closed");
  std::filesystem::remove(Path);
  EXPECT_THROW(OpenXMLFromFile(Path, OfFile), EFileError);
  EXPECT_EQ(OfFile, Before);
}

}  // namespace
}  // namespace System::Beacon::Fencing
