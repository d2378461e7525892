#include <utility>

#include "scene/System.Beacon.Fencing.Scene.Wyx.h"

namespace System::Beacon::Fencing::Scene {

TWyxTimer::TWyxTimer() {
  FTimer.SetOnTimer(Bind<&TWyxTimer::Tick>(this));
}

void TWyxTimer::SetOnTimer(TMethod<void()> AHandler) {
  FOnTimer = std::move(AHandler);
}

void TWyxTimer::Tick() {
  const TMethod<void()> Handler = FOnTimer;  // the timer may go meanwhile
  Handler();
}

}  // namespace System::Beacon::Fencing::Scene
