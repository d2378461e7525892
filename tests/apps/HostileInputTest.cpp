// Files that are made to exhaust memory or to hang: each is refused, or read within a bound.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "map/project_builder.h"
#include "platform/base64.h"
#include "platform/zip.h"
#include "support/program.h"

namespace Wayfence {
namespace {

using namespace System;
using namespace System::Beacon::Fencing;
using namespace System::Beacon::Fencing::Scene::Beacons;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsSanitized = true;
#elif defined(__has_feature)
constexpr bool IsSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool IsSanitized = false;
#endif

std::string Times(std::size_t ACount, const std::string& AText) {
  std::string Result;
  Result.reserve(ACount * AText.size());
  for (std::size_t I = 0; I < ACount; ++I) Result += AText;
  return Result;
}

std::string Scene(const std::string& AContent) {
  return "<object qualified_class = 'System.Beacon.Fencing.Scene.Classes.TScene'>" + AContent +
         "</object>";
}

/// A project of one map whose picture has the bytes.
std::string ProjectWithPicture(const std::string& ABytes) {
  TProjectBuilder Project("Picture");
  Project.AddMap("Ground", 10, 10).GetMap()->SetBitmapPath("plan.png");
  const TRef<TBundle> Bundle = Project.MakeBundle();
  std::string Id;
  Bundle->AddString("plan.png", ABytes, Id, false);
  return Bundle->SerializeToXML();
}

/// What begins a PNG of so many pixels a side: 65535.
std::string HugePictureHeader() {
  using namespace std::string_literals;
  return "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\xFF\xFF\0\0\xFF\xFF\x08\x06\0\0\0"s +
         "\x8E\x1C\xB6\x8D";
}

std::string ProjectWithDescriptions(std::size_t ACount) {
  TProjectBuilder Project("Descriptions");
  Project.AddMap("Ground", 10, 10)
      .AddZone("Hall", {0, 0, 1, 1})
      ->SetDescriptionList(Times(ACount, ":QQ==:QQ==") + ":");
  return Project.MakeBundle()->SerializeToXML();
}

std::string Archive(std::size_t ACount, const std::string& AName, const std::string& ABytes) {
  std::vector<TZipFile> Files;
  for (std::size_t I = 0; I < ACount; ++I)
    Files.push_back({I == 0 ? AName : AName + std::to_string(I), ABytes});
  return PackZip(Files);
}

struct THostileInput {
  const char* What;
  std::string File;
  const char* Command;
  const char* Answer;                 // part of it
  std::size_t FixedSize = 64 * 1024;  // KiB

  /// What the program may take, KiB: a fixed amount and a few times the file.
  std::size_t GetBound() const { return FixedSize + 12 * File.size() / 1024; }
};

std::vector<THostileInput> HostileInputs() {
  constexpr std::size_t Million = 1'000'000;
  constexpr std::size_t MiB = 1U << 20;
  const char* const Import = "project import out.xml --geojson input";
  const char* const List = "project import out.xml --beacons input";
  return {
      {"elements in elements", Times(Million, "<object>"), "inspect input", "deeper than 256"},
      {"a count of thousands of millions",
       Scene("<Children count='2000000000'><item/></Children>"),
       "inspect input",
       "count is 2000000000, but the element holds 1"},
      {"too many elements",
       Scene(Times(12 * Million, "<x/>")),
       "inspect input",
       "more than 12000000 elements"},
      {"many attributes",
       Scene("<x " + Times(4 * Million, "a='' ") + "/>"),
       "inspect input",
       "attribute a stands here twice"},
      {"much Base64",
       "<bundle><file path='project' id='1'>" + std::string(40 * MiB, 'A') + "</file></bundle>",
       "inspect input",
       "project:1:1"},
      {"a picture of four thousand million pixels",
       ProjectWithPicture(HugePictureHeader()),
       "check input",
       "error: Ground: plan.png"},
      {"a million descriptions",
       ProjectWithDescriptions(Million),
       "route input --from 0,0,0 --to Nowhere",
       "no point of interest 'Nowhere'"},
      {"a small archive of 264 MiB",
       Archive(8, "a", std::string(33 * MiB, 'a')),
       "bundle list input",
       "268435456 bytes"},
      {"an archive that lies about its sizes",
       ReadWholeFile(WAYFENCE_SOURCE_DIR "/fuzz/corpus/zip/lying", MiB),
       "bundle list input",
       "wayfence: input"},
      {"a table of one endless line",
       Archive(1, "MapId.txt", std::string(16 * MiB, 'a')),
       "bundle list input",
       "MapId.txt:1: 'aaaa"},
      {"arrays in arrays", Times(Million, "["), Import, "nested more than 32 levels"},
      {"too many numbers",
       fmt::format("[{}0]", Times(Million, "0,")),
       Import,
       "1000000 values",
       192 * 1024},
      {"too many columns", Times(8 * Million, ","), List, "more than 1000 columns"},
      {"a column with a long name", std::string(40 * MiB, 'a'), List, "there is no column"},
      {"a field without an end", "name,x,y\n\"" + std::string(40 * MiB, 'a'), List, "input:2"},
  };
}

class HostileInputTest : public ProgramTest {
 protected:
  void WriteFiles() override {}
};

TEST_F(HostileInputTest, TakesNoMoreMemoryThanItsSizeAllows) {
  for (const THostileInput& Input : HostileInputs()) {
    SCOPED_TRACE(Input.What);
    ReplaceFile(Path("input"), Input.File);
    if (!IsSanitized) FPrelude = fmt::format("ulimit -d {};", Input.GetBound());
    const TOutcome Outcome = Run(Input.Command);
    EXPECT_EQ(Outcome.ExitCode, 1);
    EXPECT_NE((Outcome.Output + Outcome.Messages).find(Input.Answer), std::string::npos)
        << (Outcome.Output + Outcome.Messages).substr(0, 400);
    EXPECT_LT(Outcome.Messages.size(), 1000U);
  }
}

}  // namespace
}  // namespace Wayfence
