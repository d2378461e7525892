// What stands in for the live source in a library that was built without it.
#ifndef WAYFENCE_HAS_BLUEZ

#include "platform/beacons/bluez_source.h"

namespace System::Beacon {
namespace {

class TMissingSource final : public TInterfacedObject, public virtual IAdvertisementSource {
 public:
  void Open() override {
    throw EBeaconSourceError(
        "this build cannot scan live: it was made without libsystemd; "
        "install libsystemd-dev, configure again and rebuild, or use a recording");
  }
  void Close() noexcept override {}
  TSourceResult Next(TAdvertisement&, TTicks) override { return TSourceResult::Finished; }
  void Interrupt() noexcept override {}
  bool IsLive() const override { return true; }
};

}  // namespace

TRef<IAdvertisementSource> NewBluezSource(const std::string&, TBluezOptions) {
  return New<TMissingSource>();
}

}  // namespace System::Beacon

#endif
