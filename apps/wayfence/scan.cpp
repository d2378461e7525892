// wayfence scan: every beacon frame that a source delivers, in any region.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <string>

#include "apps/wayfence/beacon_fields.h"
#include "apps/wayfence/commands.h"
#include "apps/wayfence/source.h"
#include "platform/beacons/frame.h"
#include "platform/beacons/tracker.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon;

namespace {

/// Where the frames go: to lines of JSON or into a table.
class TScanOutput {
 public:
  virtual ~TScanOutput() = default;
  virtual void Add(const TJsonLine& ALine,
                   const IBeacon* ABeacon,
                   const std::string& AExtra,
                   double ASeconds) = 0;
  virtual void Finish() {}
};

class TLineOutput final : public TScanOutput {
 public:
  void Add(const TJsonLine& ALine, const IBeacon*, const std::string&, double) override {
    ALine.Print();
  }
};

/// One row a beacon, redrawn twice a second.
class TTableOutput final : public TScanOutput {
 public:
  void Add(const TJsonLine&,
           const IBeacon* ABeacon,
           const std::string& AExtra,
           double ASeconds) override {
    if (ABeacon) Update(*ABeacon, AExtra, ASeconds);
    const auto Now = std::chrono::steady_clock::now();
    if (Now < FNextDraw) return;
    FNextDraw = Now + std::chrono::milliseconds(500);
    Draw();
  }
  void Finish() override { Draw(); }

 private:
  struct TRow {
    std::string Address, Kind, Distance, Extra;
    int Rssi = UnknownRssi;
    double Seconds = 0.0;
    unsigned Count = 0;
  };

  void Update(const IBeacon& ABeacon, const std::string& AExtra, double ASeconds) {
    constexpr std::size_t MaxRows = 1000;
    const std::string Identity = IdentityOf(ABeacon);
    if (FRows.size() >= MaxRows && !FRows.contains(Identity)) return;
    TRow& Row = FRows[Identity];
    Row.Address = ABeacon.GetAddress().ToText();
    Row.Kind = NameOf(ABeacon.GetKindofBeacon());
    Row.Rssi = ABeacon.GetRssi();
    Row.Distance = ABeacon.GetDistance() < 0.0 ? "" : fmt::format("{:.1f}", ABeacon.GetDistance());
    if (!AExtra.empty()) Row.Extra = AExtra;
    Row.Seconds = ASeconds;
    ++Row.Count;
  }

  static std::string IdentityOf(const IBeacon& ABeacon) {
    if (const IEddystoneBeacon* const View = ABeacon.GetEddystoneView())
      return View->GetEddystoneUID().GetNamespace() + " " + View->GetEddystoneUID().GetInstance();
    return fmt::format(
        "{} {:5} {:5}", GUIDToString(ABeacon.GetGUID()), ABeacon.GetMajor(), ABeacon.GetMinor());
  }

  void Draw() const {
    std::string Screen = "\033[H\033[J";
    Screen += fmt::format("{:<50} {:<9} {:<17} {:>5} {:>8} {:>7} {:>9}  {}\n",
                          "beacon",
                          "kind",
                          "address",
                          "dBm",
                          "metres",
                          "frames",
                          "last (s)",
                          "");
    for (const auto& [Identity, Row] : FRows)
      Screen += fmt::format("{:<50} {:<9} {:<17} {:>5} {:>8} {:>7} {:>9.1f}  {}\n",
                            Identity,
                            Row.Kind,
                            Row.Address,
                            Row.Rssi == UnknownRssi ? "" : std::to_string(Row.Rssi),
                            Row.Distance,
                            Row.Count,
                            Row.Seconds,
                            Row.Extra);
    std::fputs(Screen.c_str(), stdout);
    std::fflush(stdout);
  }

  std::map<std::string, TRow> FRows;
  std::chrono::steady_clock::time_point FNextDraw;
};

/// Hears of every frame from a tracker that is given a region for whatever comes along.
class TScanner {
 public:
  TScanner(const TWatchedSource& ASource, TScanOutput& AOutput)
      : FSource(ASource), FOutput(AOutput) {}

  void Process(const TAdvertisement& AAdvertisement) {
    TFrameReader Reader(AAdvertisement.Payload);
    TBeaconFrame Frame;
    while (Reader.Next(Frame)) {
      if (Frame.Kind == TFrameKind::EddystoneURL || Frame.Kind == TFrameKind::EddystoneTLM)
        ShowTelemetry(Frame, AAdvertisement);
      else
        ShowIdentity(Frame, AAdvertisement);
    }
  }

 private:
  void ShowIdentity(const TBeaconFrame& AFrame, const TAdvertisement& AAdvertisement) {
    const TRef<TSighting> Sighting = NewSighting(AFrame);
    Sighting->SetTxPower(AFrame.Power);
    Measure(*Sighting, AAdvertisement);
    if (AFrame.Kind == TFrameKind::EddystoneUID) Remember(AAdvertisement.Address, Sighting);
    TJsonLine Line(FSource.GetSeconds(), "Sighting");
    AddBeacon(Line, *Sighting);
    AddPower(Line, AFrame);
    FOutput.Add(Line, Sighting.Get(), "", FSource.GetSeconds());
  }

  void ShowTelemetry(const TBeaconFrame& AFrame, const TAdvertisement& AAdvertisement) {
    TEddystoneURL URL;
    if (AFrame.Kind == TFrameKind::EddystoneURL && !DecodeEddystoneURL(AFrame.Data, URL.URL))
      return;
    const auto Known = FEddystones.find(AAdvertisement.Address);
    TJsonLine Line(FSource.GetSeconds(), "Sighting");
    if (Known != FEddystones.end()) {
      Measure(*Known->second, AAdvertisement);
      AddBeacon(Line, *Known->second);
    } else {
      Line.Text("address", AAdvertisement.Address.ToText()).Text("kind", "Eddystone");
      if (AAdvertisement.Rssi != UnknownRssi) Line.Number("rssi", AAdvertisement.Rssi);
    }
    AddPower(Line, AFrame);
    if (AFrame.Kind == TFrameKind::EddystoneURL)
      Line.Text("url", URL.URL);
    else
      AddTelemetry(Line, ReadTLM(AFrame.Data));
    FOutput.Add(Line,
                Known == FEddystones.end() ? nullptr : Known->second.Get(),
                URL.URL,
                FSource.GetSeconds());
  }

  void Measure(TSighting& ASighting, const TAdvertisement& AAdvertisement) const {
    const bool IsKnown = AAdvertisement.Rssi != UnknownRssi && ASighting.GetTxPower() != NoPower;
    const int Loss = ASighting.GetTxPower() - AAdvertisement.Rssi;
    ASighting.SetAddress(AAdvertisement.Address);
    ASighting.SetRssi(AAdvertisement.Rssi);
    ASighting.SetDistance(IsKnown ? FDistances.GetDistance(2 * Loss) : -1.0);
    ASighting.SetProximity(ProximityOf(ASighting.GetDistance()));
  }

  static void AddPower(TJsonLine& ALine, const TBeaconFrame& AFrame) {
    if (AFrame.Power != NoPower) ALine.Number("txPower", AFrame.Power);
  }

  void Remember(const TBluetoothAddress& AAddress, const TRef<TSighting>& ASighting) {
    constexpr std::size_t MaxKnown = 4096;  // a hostile radio may make up addresses
    if (FEddystones.size() >= MaxKnown && !FEddystones.contains(AAddress)) FEddystones.clear();
    FEddystones[AAddress] = ASighting;
  }

  const TWatchedSource& FSource;
  TScanOutput& FOutput;
  TDistanceTable FDistances{0.5F};
  std::map<TBluetoothAddress, TRef<TSighting>> FEddystones;
};

TTicks EndOf(double ASeconds) {
  return ASeconds > 0.0 ? After(Ticks(), static_cast<TTicks>(ASeconds * TicksPerSecond))
                        : NoDeadline;
}

void ScanUntil(TWatchedSource& ASource, TTicks AEnd, TScanner& AScanner) {
  constexpr TTicks LookAtInterruptsEvery = 100 * TicksPerMillisecond;
  TAdvertisement Advertisement;
  while (!IsInterrupted() && Ticks() < AEnd) {
    const TTicks Deadline = ASource.IsLive() ? After(Ticks(), LookAtInterruptsEvery) : AEnd;
    const TSourceResult Result = ASource.Next(Advertisement, std::min(AEnd, Deadline));
    if (Result == TSourceResult::Finished) return;
    if (Result == TSourceResult::Advertisement) AScanner.Process(Advertisement);
  }
}

}  // namespace

int RunScan(const TScanArguments& AArguments) {
  TRun Run = OpenRun(AArguments.From);
  TLineOutput Lines;
  TTableOutput Table;
  TScanOutput& Output =
      isatty(STDOUT_FILENO) ? static_cast<TScanOutput&>(Table) : static_cast<TScanOutput&>(Lines);
  TScanner Scanner(*Run.Source, Output);
  if (!Run.Simulation) CatchInterrupts();
  if (Run.Source->IsLive()) std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  Run.Source->Open();
  ScanUntil(*Run.Source, EndOf(AArguments.Seconds), Scanner);
  Run.Source->Close();
  Output.Finish();
  Run.Source->ReportProblems();
  return ExitDone;
}

}  // namespace Wayfence
