// Bundles as text: read whole or not at all, and written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "persistence/System.Beacon.Fencing.Bundle.h"
#include "platform/errors.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

void Require(bool AHolds) {
  if (!AHolds) std::abort();
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
  TryText(std::string(reinterpret_cast<const char*>(AData), ASize));
  return 0;
}
