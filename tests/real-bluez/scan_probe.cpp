// Prints what the live source delivers, "ADDRESS RSSI PAYLOAD", and what it tells, "told: TEXT",
// until it is terminated.
#include <csignal>
#include <cstdio>

#include "platform/beacons/bluez_source.h"
#include "platform/hex.h"

namespace {

System::Beacon::IAdvertisementSource* Source = nullptr;

void Scan() {
  Source->Open();
  std::puts("scanning");
  System::Beacon::TAdvertisement Heard;
  while (Source->Next(Heard, System::NoDeadline) == System::Beacon::TSourceResult::Advertisement)
    std::printf("%s %d %s\n",
                Heard.Address.ToText().c_str(),
                Heard.Rssi,
                System::BytesToHex(Heard.Payload).c_str());
  Source->Close();
  std::puts("closed");
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const auto Probe = System::Beacon::NewBluezSource(
      {},
      {.OnDiagnostic = [](const std::string& AText) { std::printf("told: %s\n", AText.c_str()); }});
  Source = Probe.Get();
  std::signal(SIGTERM, [](int) { Source->Interrupt(); });
  try {
    Scan();
  } catch (const System::Beacon::EBeaconSourceError& Error) {
    std::printf("error: %s\n", Error.what());
    return 1;
  }
  return 0;
}
