#include "platform/beacons/simulated/simulated_radio.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <queue>
#include <utility>

namespace System::Beacon {
namespace {

constexpr double WeakestRssi = -127.0, StrongestRssi = 20.0;  // dBm

TRandomStream StreamOf(const TBluetoothAddress& AAddress, std::uint64_t ASeed) {
  std::uint64_t Number = 0;
  for (const std::uint8_t Byte : AAddress.Bytes) Number = Number << 8 | Byte;
  return TRandomStream(TRandomStream(ASeed).Next() ^ Number);
}

/// A transmitter at work. What it draws for one purpose leaves the other purposes alone.
class TSender {
 public:
  TSender(const TRadioOptions& AOptions, const TTransmitter& ATransmitter, TRandomStream AStream)
      : FOptions(AOptions),
        FTransmitter(ATransmitter),
        FLink(AOptions, ATransmitter.Place, ATransmitter.Power, TRandomStream(AStream.Next())),
        FTimes(AStream.Next()),
        FFrames(AStream.Next()),
        FInterval(static_cast<TTicks>(ATransmitter.Interval * TicksPerSecond)),
        FNext(static_cast<TTicks>(FTimes.NextDouble() * static_cast<double>(FInterval))) {}

  /// When the next frame is sent.
  TTicks GetNext() const { return FNext; }
  const TTransmitter& GetTransmitter() const { return FTransmitter; }

  /// Sends the frame: what a receiver shows, dBm, or nothing when it does not hear it.
  std::optional<std::int8_t> Send(const TRadioPlace& AReceiver) {
    constexpr std::uint32_t LongestDelay = 10 * TicksPerMillisecond;
    FNext += FInterval + FTimes.NextBelow(LongestDelay + 1);
    const bool IsMissed = FFrames.NextDouble() < FOptions.Loss;
    const double Fading = DrawFading(FOptions.Fading, FFrames);
    if (IsMissed) return std::nullopt;
    const double Strength = FLink.GetMeanStrength(AReceiver) + Fading;
    if (Strength < FOptions.Sensitivity) return std::nullopt;
    return static_cast<std::int8_t>(
        std::clamp(std::nearbyint(Strength), WeakestRssi, StrongestRssi));
  }

 private:
  const TRadioOptions& FOptions;
  const TTransmitter& FTransmitter;
  TRadioLink FLink;
  TRandomStream FTimes;
  TRandomStream FFrames;
  TTicks FInterval;
  TTicks FNext;
};

class TSimulatedReader final : public TInterfacedObject, public virtual IAdvertisementReader {
 public:
  TSimulatedReader(TSimulatedRadio ARadio, TReceiverPath APath)
      : FRadio(std::move(ARadio)), FPath(std::move(APath)) {
    FSenders.reserve(FRadio.Transmitters.size());
    for (const TTransmitter& Transmitter : FRadio.Transmitters) {
      FSenders.emplace_back(
          FRadio.Options, Transmitter, StreamOf(Transmitter.Address, FRadio.Seed));
      FQueue.push({FSenders.back().GetNext(), FSenders.size() - 1});
    }
  }

  bool Read(TAdvertisement& AAdvertisement) override {
    while (!FQueue.empty()) {
      const auto [Time, Index] = FQueue.top();
      FQueue.pop();
      if (Time > FPath.GetEnd()) continue;
      FTime = Time;
      TSender& Sender = FSenders[Index];
      const std::optional<std::int8_t> Rssi = Sender.Send(FPath.GetPlace(Time));
      FQueue.push({Sender.GetNext(), Index});
      if (!Rssi) continue;
      const TTransmitter& Transmitter = Sender.GetTransmitter();
      AAdvertisement = {Time, Transmitter.Address, *Rssi, Transmitter.Payload};
      return true;
    }
    FTime = FPath.GetEnd();
    return false;
  }
  bool HasWallTime() const override { return false; }
  const TReadProblems& GetProblems() const override { return FProblems; }
  double GetProgress() const override {
    const TTicks End = FPath.GetEnd();
    return End > 0 ? static_cast<double>(FTime) / static_cast<double>(End) : 1.0;
  }

 private:
  using TDue = std::pair<TTicks, std::size_t>;  // when which sender sends

  const TSimulatedRadio FRadio;
  const TReceiverPath FPath;
  const TReadProblems FProblems;
  std::vector<TSender> FSenders;
  std::priority_queue<TDue, std::vector<TDue>, std::greater<>> FQueue;
  TTicks FTime = 0;
};

void CheckTransmitter(const TTransmitter& ATransmitter) {
  const auto Refuse = [&](const std::string& AWhat) {
    throw EBeaconSourceError(
        fmt::format("the simulated transmitter {}: {}", ATransmitter.Address.ToText(), AWhat));
  };
  if (ATransmitter.Payload.size() > MaxPayloadSize)
    Refuse(fmt::format("a payload has at most {} bytes", MaxPayloadSize));
  constexpr double Farthest = TReceiverPath::MaxMetres;
  if (!(std::abs(ATransmitter.Place.X) <= Farthest && std::abs(ATransmitter.Place.Y) <= Farthest))
    Refuse(fmt::format("it is further than {} metres away", Farthest));
  if (ATransmitter.Power < TTransmitter::LeastPower || ATransmitter.Power > TTransmitter::MostPower)
    Refuse(fmt::format("its power is from {} to {} dBm at 1 m",
                       TTransmitter::LeastPower,
                       TTransmitter::MostPower));
  if (!(ATransmitter.Interval >= TTransmitter::ShortestInterval &&
        ATransmitter.Interval <= TTransmitter::LongestInterval))
    Refuse(fmt::format("its interval is from {} to {} seconds",
                       TTransmitter::ShortestInterval,
                       TTransmitter::LongestInterval));
}

}  // namespace

TRef<IAdvertisementReader> OpenSimulatedRadio(TSimulatedRadio ARadio, TReceiverPath APath) {
  CheckRadioOptions(ARadio.Options);
  if (ARadio.Transmitters.size() > TSimulatedRadio::MaxTransmitters)
    throw EBeaconSourceError(fmt::format("the simulated radio has {} transmitters; {} are the most",
                                         ARadio.Transmitters.size(),
                                         TSimulatedRadio::MaxTransmitters));
  for (const TTransmitter& Transmitter : ARadio.Transmitters) CheckTransmitter(Transmitter);
  return New<TSimulatedReader>(std::move(ARadio), std::move(APath));
}

}  // namespace System::Beacon
