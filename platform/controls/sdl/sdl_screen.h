// The window system, through SDL.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/controls/screen.h"

union SDL_Event;

namespace System {

class TSdlWindow;

/// Raises what SDL says about its last failure.
[[noreturn]] void RaiseScreenError();

class TSdlScreen final : public IScreen {
 public:
  std::unique_ptr<IScreenWindow> Open(TWindow& AWindow,
                                      const std::string& ATitle,
                                      int AWidth,
                                      int AHeight) override;
  void Process(TTicks ADeadline) override;
  void Wake() override;

  /// Connects to the display with the first window, and disconnects with the last one.
  void Connect();
  void Disconnect() noexcept;
  void Add(TSdlWindow& AWindow) { FWindows.push_back(&AWindow); }
  void Remove(TSdlWindow& AWindow) noexcept { std::erase(FWindows, &AWindow); }

 private:
  void Dispatch(const SDL_Event& AnEvent);
  TSdlWindow* Find(std::uint32_t AnId) const;
  template <class TAction>
  void ForEachWindow(TAction&& AnAction);

  std::vector<TSdlWindow*> FWindows;
  std::mutex FLock;  // guards FConnections, and the display while a thread wakes the loop
  int FConnections = 0;
};

}  // namespace System
