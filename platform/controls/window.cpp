#include "platform/controls/window.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/controls/screen.h"
#include "platform/controls/timer.h"
#include "platform/threads.h"

namespace System {
namespace {

std::vector<TWindow*>& OpenWindows() {
  static std::vector<TWindow*> Windows;
  return Windows;
}

bool MustQuit = false;

TTicks NextDeadline() {
  for (const TWindow* Window : OpenWindows()) {
    if (Window->IsDamaged()) return Ticks();
  }
  return TTimer::NextDeadline();
}

void UpdateWindows() {
  const std::vector<TWindow*> Windows = OpenWindows();
  for (TWindow* Window : Windows) {
    const bool IsOpen = std::count(OpenWindows().begin(), OpenWindows().end(), Window) > 0;
    if (IsOpen) Window->Update();
  }
}

/// One turn of the loop, which waits until the deadline at most.
void Turn(TTicks ADeadline) {
  if (!OpenWindows().empty()) IScreen::Instance().Process(std::min(ADeadline, NextDeadline()));
  ServeHandOffs();
  TTimer::ServeDue();
  UpdateWindows();
}

}  // namespace

TWindow::TWindow(const std::string& ATitle, int AWidth, int AHeight, TComponent* AOwner)
    : TPictureControl(AOwner, {AWidth, AHeight}, 1.0F),
      FTitle(ATitle),
      FScreenWindow(IScreen::Instance().Open(*this, ATitle, AWidth, AHeight)) {
  SizeChanged();
  if (OpenWindows().empty()) SetHandOffHook([] { IScreen::Instance().Wake(); });
  OpenWindows().push_back(this);
}

TWindow::~TWindow() {
  SetOnClose({});
  Close();
}

void TWindow::SetTitle(const std::string& ATitle) {
  FTitle = ATitle;
  if (FScreenWindow) FScreenWindow->SetTitle(ATitle);
}

void TWindow::Resize(int AWidth, int AHeight) {
  if (FScreenWindow) FScreenWindow->Resize(AWidth, AHeight);
}

void TWindow::SizeChanged() {
  if (FScreenWindow) SetSize(FScreenWindow->GetSize(), FScreenWindow->GetScale());
}

void TWindow::Close() {
  if (!IsOpen() || !CanClose()) return;
  std::erase(OpenWindows(), this);
  if (OpenWindows().empty()) SetHandOffHook({});
  FScreenWindow = nullptr;
}

void TWindow::Update() {
  if (!IsOpen() || !IsDamaged()) return;
  const TDamage Painted = PaintDamage();
  if (IsOpen()) FScreenWindow->Show(GetDrawing(), Painted);
}

void TWindow::Run() {
  MustQuit = false;
  Turn(Ticks());
  while (!MustQuit && !OpenWindows().empty()) Turn(NoDeadline);
}

void TWindow::Quit() noexcept {
  MustQuit = true;
}

bool TWindow::ProcessEvents(std::int64_t AMilliseconds) {
  Turn(Ticks());
  if (AMilliseconds > 0 && !OpenWindows().empty())
    Turn(After(Ticks(),
               std::min(AMilliseconds, NoDeadline / TicksPerMillisecond) * TicksPerMillisecond));
  return !OpenWindows().empty();
}

}  // namespace System
