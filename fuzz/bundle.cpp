// Bundles: a text is read whole or not at all, and written and read again; and so is a table of
// ids. The first byte tells which of them the input is.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "persistence/bundle_names.h"
#include "platform/errors.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

void TryTable(const std::string& AText) {
  std::string Table;
  try {
    for (const TBundleName& Name : ReadIdTable(AText, "fuzz"))
      AppendToIdTable(Table, Name.Path, Name.Id);
  } catch (const EFileError&) {
    return;
  }
  std::string Again;
  for (const TBundleName& Name : ReadIdTable(Table, "table"))
    AppendToIdTable(Again, Name.Path, Name.Id);
  Require(Again == Table);
}

void TryText(const std::string& AText) {
  const auto Bundle = New<TBundle>(nullptr);
  Bundle->SetMaxSize(1 << 20);
  std::string Id;
  Bundle->AddString("kept", "content", Id, false);
  const std::string Before = Bundle->SerializeToXML();
  try {
    if (!Bundle->UnserializeFromXML(AText)) std::abort();
  } catch (const EGeneralError&) {
    Require(Bundle->SerializeToXML() == Before);
    return;
  }
  const auto Copy = New<TBundle>(nullptr);
  const std::string Written = Bundle->SerializeToXML();
  Require(Copy->UnserializeFromXML(Written));
  for (const std::string& Path : Bundle->GetPaths()) Require(Copy->ContainsFileWithPath(Path));
  Require(Copy->SerializeToXML().size() == Written.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  if (ASize == 0) return 0;
  const std::string Text(reinterpret_cast<const char*>(AData) + 1, ASize - 1);
  if (*AData == 'T')
    TryTable(Text);
  else
    TryText(Text);
  return 0;
}
