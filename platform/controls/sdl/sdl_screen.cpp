#include "platform/controls/sdl/sdl_screen.h"

#include <SDL.h>
#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <string_view>

#include "platform/controls/sdl/sdl_window.h"
#include "platform/controls/window.h"
#include "platform/messages.h"

namespace System {
namespace {

/// So many events are handled before windows are painted again.
constexpr int MaxEventsInTurn = 64;

/// Rounded up, so that the deadline has come when the wait is over; -1: for ever.
int MillisecondsUntil(TTicks ADeadline) {
  if (ADeadline == NoDeadline) return -1;
  const TTicks Rest = std::max<TTicks>(ADeadline - Ticks(), 0);
  const TTicks Milliseconds = Rest / TicksPerMillisecond + (Rest % TicksPerMillisecond != 0);
  return static_cast<int>(std::min<TTicks>(Milliseconds, std::numeric_limits<int>::max()));
}

/// Windows behave like those of other applications, which SDL, made for games, does not ask for.
void SetHints() {
  SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
  SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
  SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
  SDL_SetHint(SDL_HINT_MOUSE_FOCUS_CLICKTHROUGH, "1");
  SDL_SetHint(SDL_HINT_MOUSE_AUTO_CAPTURE, "1");
  SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
}

/// Where it finds no display, SDL falls back to a driver whose windows are nowhere. Only those who
/// ask for it want that.
bool ShowsNothing() {
  const std::string_view Driver = SDL_GetCurrentVideoDriver();
  return (Driver == "offscreen" || Driver == "dummy") && !SDL_GetHint(SDL_HINT_VIDEODRIVER);
}

}  // namespace

IScreen& IScreen::Instance() {
  static TSdlScreen Screen;
  return Screen;
}

void RaiseScreenError() {
  throw EGeneralError(fmt::format(Messages::SNoWindow, SDL_GetError()));
}

std::unique_ptr<IScreenWindow> TSdlScreen::Open(TWindow& AWindow,
                                                const std::string& ATitle,
                                                int AWidth,
                                                int AHeight) {
  return std::make_unique<TSdlWindow>(*this, AWindow, ATitle, AWidth, AHeight);
}

void TSdlScreen::Connect() {
  const std::lock_guard Guard(FLock);
  SetHints();
  if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) RaiseScreenError();
  if (ShowsNothing()) {
    SDL_QuitSubSystem(SDL_INIT_VIDEO);
    SDL_SetError("there is no display");
    RaiseScreenError();
  }
  ++FConnections;
}

void TSdlScreen::Disconnect() noexcept {
  const std::lock_guard Guard(FLock);
  SDL_QuitSubSystem(SDL_INIT_VIDEO);
  --FConnections;
}

void TSdlScreen::Wake() {
  const std::lock_guard Guard(FLock);
  if (FConnections == 0) return;
  SDL_Event Event{};
  Event.type = SDL_USEREVENT;
  SDL_PushEvent(&Event);
}

void TSdlScreen::Process(TTicks ADeadline) {
  SDL_Event Event;
  if (SDL_WaitEventTimeout(&Event, MillisecondsUntil(ADeadline)) == 0) return;
  int Count = 0;
  do {
    Dispatch(Event);
  } while (++Count < MaxEventsInTurn && !FWindows.empty() && SDL_PollEvent(&Event) != 0);
}

void TSdlScreen::Dispatch(const SDL_Event& AnEvent) {
  switch (AnEvent.type) {
    case SDL_QUIT:
      return ForEachWindow([](TSdlWindow& AWindow) { AWindow.GetWindow().Close(); });
    case SDL_RENDER_TARGETS_RESET:
    case SDL_RENDER_DEVICE_RESET:
      return ForEachWindow([](TSdlWindow& AWindow) { AWindow.LosePicture(); });
    case SDL_WINDOWEVENT:
    case SDL_KEYDOWN:
    case SDL_MOUSEMOTION:
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
    case SDL_MOUSEWHEEL:
      // All of them name their window at the same place.
      if (TSdlWindow* const Window = Find(AnEvent.window.windowID)) Window->Handle(AnEvent);
      return;
    default:
      return;
  }
}

TSdlWindow* TSdlScreen::Find(std::uint32_t AnId) const {
  const auto HasId = [AnId](const TSdlWindow* AWindow) { return AWindow->GetId() == AnId; };
  const auto Found = std::find_if(FWindows.begin(), FWindows.end(), HasId);
  return Found == FWindows.end() ? nullptr : *Found;
}

/// Windows may be closed meanwhile.
template <class TAction>
void TSdlScreen::ForEachWindow(TAction&& AnAction) {
  std::vector<std::uint32_t> Ids;
  for (const TSdlWindow* Window : FWindows) Ids.push_back(Window->GetId());
  for (const std::uint32_t Id : Ids) {
    if (TSdlWindow* const Window = Find(Id)) AnAction(*Window);
  }
}

}  // namespace System
