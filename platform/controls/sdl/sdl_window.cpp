#include "platform/controls/sdl/sdl_window.h"

#include <SDL.h>

#include <algorithm>

#include "platform/controls/window.h"

namespace System {
namespace {

TPointF PointOf(int AnX, int AnY) {
  return {static_cast<float>(AnX), static_cast<float>(AnY)};
}

}  // namespace

void TSdlWindow::TRelease::operator()(SDL_Window* AWindow) const noexcept {
  SDL_DestroyWindow(AWindow);
}

void TSdlWindow::TRelease::operator()(SDL_Renderer* ARenderer) const noexcept {
  SDL_DestroyRenderer(ARenderer);
}

void TSdlWindow::TRelease::operator()(SDL_Texture* ATexture) const noexcept {
  SDL_DestroyTexture(ATexture);
}

TSdlWindow::TSdlWindow(
    TSdlScreen& AScreen, TWindow& AWindow, const std::string& ATitle, int AWidth, int AHeight)
    : FScreen(AScreen), FWindow(AWindow), FConnection(AScreen) {
  FHandle.reset(SDL_CreateWindow(ATitle.c_str(),
                                 SDL_WINDOWPOS_UNDEFINED,
                                 SDL_WINDOWPOS_UNDEFINED,
                                 AWidth,
                                 AHeight,
                                 SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI));
  if (!FHandle) RaiseScreenError();
  FRenderer.reset(SDL_CreateRenderer(FHandle.get(), -1, 0));
  if (!FRenderer) RaiseScreenError();
  FScreen.Add(*this);
}

TSdlWindow::~TSdlWindow() {
  FScreen.Remove(*this);
}

std::uint32_t TSdlWindow::GetId() const {
  return SDL_GetWindowID(FHandle.get());
}

void TSdlWindow::SetTitle(const std::string& ATitle) {
  SDL_SetWindowTitle(FHandle.get(), ATitle.c_str());
}

void TSdlWindow::Resize(int AWidth, int AHeight) {
  SDL_SetWindowSize(FHandle.get(), AWidth, AHeight);
}

// ---------------------------------------------------------------- the picture

TPictureSize TSdlWindow::GetSize() const {
  TPictureSize Result;
  SDL_GetRendererOutputSize(FRenderer.get(), &Result.Width, &Result.Height);
  return {std::clamp(Result.Width, 1, MaxPictureSide),
          std::clamp(Result.Height, 1, MaxPictureSide)};
}

float TSdlWindow::GetScale() const {
  int Units = 0;
  SDL_GetWindowSize(FHandle.get(), &Units, nullptr);
  return Units > 0 ? static_cast<float>(GetSize().Width) / static_cast<float>(Units) : 1.0F;
}

void TSdlWindow::LosePicture() {
  FTexture = nullptr;
  FWindow.Repaint();
}

void TSdlWindow::Show(const TDrawing& ADrawing, const TDamage& AParts) {
  const TPictureSize Size = ADrawing.GetSize();
  const TRectF Whole{0, 0, static_cast<float>(Size.Width), static_cast<float>(Size.Height)};
  if (!FTexture || FTextureSize != Size) {
    MakeTexture(Size);
    Copy(ADrawing, Whole);
  } else {
    for (const TRectF& Part : AParts.GetRects()) Copy(ADrawing, IntersectRect(Part, Whole));
  }
  Present();
}

void TSdlWindow::MakeTexture(TPictureSize ASize) {
  FTexture = nullptr;
  FTexture.reset(SDL_CreateTexture(FRenderer.get(),
                                   SDL_PIXELFORMAT_ARGB8888,
                                   SDL_TEXTUREACCESS_STATIC,
                                   ASize.Width,
                                   ASize.Height));
  if (!FTexture) RaiseScreenError();
  SDL_SetTextureBlendMode(FTexture.get(), SDL_BLENDMODE_NONE);
  FTextureSize = ASize;
}

void TSdlWindow::Copy(const TDrawing& ADrawing, const TRectF& APart) {
  if (APart.IsEmpty()) return;
  const SDL_Rect Part{static_cast<int>(APart.Left),
                      static_cast<int>(APart.Top),
                      static_cast<int>(APart.GetWidth()),
                      static_cast<int>(APart.GetHeight())};
  const int Width = ADrawing.GetSize().Width;
  const std::size_t First = static_cast<std::size_t>(Part.y) * Width + Part.x;
  SDL_UpdateTexture(FTexture.get(),
                    &Part,
                    ADrawing.GetPixels().data() + First,
                    Width * static_cast<int>(sizeof(std::uint32_t)));
}

void TSdlWindow::Present() {
  if (!FTexture) return;
  // As large as it is: while the window is being resized, the picture may have another size.
  const SDL_Rect Place{0, 0, FTextureSize.Width, FTextureSize.Height};
  SDL_RenderClear(FRenderer.get());
  SDL_RenderCopy(FRenderer.get(), FTexture.get(), nullptr, &Place);
  SDL_RenderPresent(FRenderer.get());
}

// ---------------------------------------------------------------- events

void TSdlWindow::Handle(const SDL_Event& AnEvent) {
  switch (AnEvent.type) {
    case SDL_WINDOWEVENT:
      return HandleWindow(AnEvent.window);
    case SDL_MOUSEMOTION:
      return HandleMotion(AnEvent.motion);
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
      return HandleButton(AnEvent.button);
    case SDL_MOUSEWHEEL:
      return HandleWheel(AnEvent.wheel);
    case SDL_KEYDOWN:
      return HandleKey(AnEvent.key);
    default:
      return;
  }
}

void TSdlWindow::HandleWindow(const SDL_WindowEvent& AnEvent) {
  switch (AnEvent.event) {
    case SDL_WINDOWEVENT_SIZE_CHANGED:
    case SDL_WINDOWEVENT_DISPLAY_CHANGED:
      return FWindow.SizeChanged();
    case SDL_WINDOWEVENT_EXPOSED:
      return Present();
    case SDL_WINDOWEVENT_LEAVE:
      return FWindow.PointerLeave();
    case SDL_WINDOWEVENT_CLOSE:
      return FWindow.Close();
    default:
      return;
  }
}

void TSdlWindow::HandleMotion(const SDL_MouseMotionEvent& AnEvent) {
  TWindow& Window = FWindow;
  const TPointF Point = FPointer = PointOf(AnEvent.x, AnEvent.y);
  // The button may have been let go where this window was not told.
  const bool IsDown = (AnEvent.state & SDL_BUTTON_LMASK) != 0;
  if (Window.IsPressed() && !IsDown) Window.PointerUp(Point);
  Window.PointerMove(Point);
}

void TSdlWindow::HandleButton(const SDL_MouseButtonEvent& AnEvent) {
  if (AnEvent.button != SDL_BUTTON_LEFT) return;
  FPointer = PointOf(AnEvent.x, AnEvent.y);
  if (AnEvent.type == SDL_MOUSEBUTTONDOWN)
    FWindow.PointerDown(PointOf(AnEvent.x, AnEvent.y));
  else if (FWindow.IsPressed())
    FWindow.PointerUp(PointOf(AnEvent.x, AnEvent.y));
}

void TSdlWindow::HandleWheel(const SDL_MouseWheelEvent& AnEvent) {
  const float Steps =
      AnEvent.direction == SDL_MOUSEWHEEL_FLIPPED ? -AnEvent.preciseY : AnEvent.preciseY;
  if (Steps != 0) FWindow.Wheel(FPointer, Steps);
}

void TSdlWindow::HandleKey(const SDL_KeyboardEvent& AnEvent) {
  const auto Modifiers = AnEvent.keysym.mod;
  FWindow.KeyDown({.Key = SDL_GetKeyName(AnEvent.keysym.sym),
                   .Shift = (Modifiers & KMOD_SHIFT) != 0,
                   .Control = (Modifiers & KMOD_CTRL) != 0,
                   .Alt = (Modifiers & KMOD_ALT) != 0});
}

}  // namespace System
