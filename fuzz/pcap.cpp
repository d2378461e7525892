// Captures in pcap and pcapng.
#include "fuzz/read_to_the_end.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* AData, std::size_t ASize) {
  return Fuzz::ReadToTheEnd(&System::Beacon::OpenPcap, AData, ASize);
}
