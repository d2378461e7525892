#include "platform/random.h"

#include <bit>
#include <mutex>
#include <random>

namespace System {
namespace {

std::uint64_t SplitMix64(std::uint64_t& AState) noexcept {
  std::uint64_t Z = (AState += 0x9E3779B97F4A7C15ULL);
  Z = (Z ^ (Z >> 30)) * 0xBF58476D1CE4E5B9ULL;
  Z = (Z ^ (Z >> 27)) * 0x94D049BB133111EBULL;
  return Z ^ (Z >> 31);
}

struct TGenerator {
  std::mutex Lock;  // guards Uniform, Split, GUIDs
  TRandomStream Uniform;
  TRandomStream Split;
  TRandomStream GUIDs;

  explicit TGenerator(std::uint64_t ASeed) noexcept
      : Uniform(ASeed), Split(Uniform.Next()), GUIDs(Uniform.Next()) {}
};

TGenerator& Generator() noexcept {
  static TGenerator Instance([] {
    std::random_device Entropy;
    return (std::uint64_t{Entropy()} << 32) | Entropy();
  }());
  return Instance;
}

}  // namespace

TRandomStream::TRandomStream(std::uint64_t ASeed) noexcept {
  for (std::uint64_t& Word : FState) Word = SplitMix64(ASeed);
}

std::uint64_t TRandomStream::Next() noexcept {
  auto& S = FState;
  const std::uint64_t Result = std::rotl(S[0] + S[3], 23) + S[0];
  const std::uint64_t T = S[1] << 17;
  S[2] ^= S[0];
  S[3] ^= S[1];
  S[1] ^= S[2];
  S[0] ^= S[3];
  S[2] ^= T;
  S[3] = std::rotl(S[3], 45);
  return Result;
}

double TRandomStream::NextDouble() noexcept {
  return static_cast<double>(Next() >> 11) * 0x1p-53;
}

std::uint32_t TRandomStream::NextBelow(std::uint32_t ABound) noexcept {
  return static_cast<std::uint32_t>(((Next() >> 32) * ABound) >> 32);
}

double Random() noexcept {
  TGenerator& G = Generator();
  const std::lock_guard Guard(G.Lock);
  return G.Uniform.NextDouble();
}

TRandomStream SplitRandomStream() noexcept {
  TGenerator& G = Generator();
  const std::lock_guard Guard(G.Lock);
  return TRandomStream(G.Split.Next());
}

TGUID NewGUID() noexcept {
  TGenerator& G = Generator();
  TGUID Result;
  {
    const std::lock_guard Guard(G.Lock);
    for (std::size_t I = 0; I < Result.Bytes.size(); I += 8) {
      const std::uint64_t Word = G.GUIDs.Next();
      for (std::size_t J = 0; J < 8; ++J)
        Result.Bytes[I + J] = static_cast<std::uint8_t>(Word >> (8 * J));
    }
  }
  Result.Bytes[6] = static_cast<std::uint8_t>((Result.Bytes[6] & 0x0F) | 0x40);
  Result.Bytes[8] = static_cast<std::uint8_t>((Result.Bytes[8] & 0x3F) | 0x80);
  return Result;
}

void SeedRandom(std::uint64_t ASeed) noexcept {
  TGenerator& G = Generator();
  const TGenerator Fresh(ASeed);
  const std::lock_guard Guard(G.Lock);
  G.Uniform = Fresh.Uniform;
  G.Split = Fresh.Split;
  G.GUIDs = Fresh.GUIDs;
}

}  // namespace System
