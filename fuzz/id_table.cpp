// Tables of ids: what is read is written and read again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "persistence/bundle_names.h"
#include "platform/errors.h"

namespace {

using namespace System;
using namespace System::Beacon::Fencing;

std::string Rewritten(const std::string& AText) {
  std::string Result;
  for (const TBundleName& Name : ReadIdTable(AText, "fuzz"))
    AppendToIdTable(Result, Name.Path, Name.Id);
  return Result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  std::string Table;
  try {
    Table = Rewritten(std::string(reinterpret_cast<const char*>(AData), ASize));
  } catch (const EFileError&) {
    return 0;
  }
  if (Rewritten(Table) != Table) std::abort();
  return 0;
}
