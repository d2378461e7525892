// The timer of animations in windows.
#pragma once

#include <cstdint>

#include "platform/controls/timer.h"
#include "scene/System.Beacon.Fencing.Scene.h"

namespace System::Beacon::Fencing::Scene {

/// A timer that ticks with those of the controls. Main thread only.
class TWyxTimer : public TInterfacedObject, public virtual ITimer {
 public:
  TWyxTimer();

  void SetOnTimer(TMethod<void()> AHandler) override;
  void SetEnabled(bool AValue) override { FTimer.SetEnabled(AValue); }
  bool GetEnabled() const override { return FTimer.GetEnabled(); }
  void SetInterval(std::uint32_t AMilliseconds) override { FTimer.SetInterval(AMilliseconds); }
  std::uint32_t GetInterval() const override { return FTimer.GetInterval(); }

 private:
  void Tick();

  TTimer FTimer;
  TMethod<void()> FOnTimer;
};

}  // namespace System::Beacon::Fencing::Scene
