// A project of its own that uses the installed library: a header, a counted object, a function
// that lies in the library.
#include <cstdio>

#include "platform/beacons/advertisement.h"
#include "platform/ref.h"

namespace {

class TVisit final : public System::TInterfacedObject {};

}  // namespace

int main() {
  const System::TRef<TVisit> Visit = System::New<TVisit>();
  System::Beacon::TBluetoothAddress Address;
  const bool Parsed = System::Beacon::TBluetoothAddress::Parse("c4:be:84:01:02:03", Address);
  std::puts(Address.ToText().c_str());
  return Visit && Parsed && Address.ToText() == "C4:BE:84:01:02:03" ? 0 : 1;
}
