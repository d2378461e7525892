// A window of the window system, through SDL.
#pragma once

#include "platform/controls/sdl/sdl_screen.h"

struct SDL_KeyboardEvent;
struct SDL_MouseButtonEvent;
struct SDL_MouseMotionEvent;
struct SDL_MouseWheelEvent;
struct SDL_Renderer;
struct SDL_Texture;
struct SDL_Window;
struct SDL_WindowEvent;

namespace System {

/// The picture lives in a texture, of which only what has changed is brought up to date.
class TSdlWindow final : public IScreenWindow {
 public:
  TSdlWindow(
      TSdlScreen& AScreen, TWindow& AWindow, const std::string& ATitle, int AWidth, int AHeight);
  ~TSdlWindow() override;

  void SetTitle(const std::string& ATitle) override;
  void Resize(int AWidth, int AHeight) override;
  TPictureSize GetSize() const override;
  float GetScale() const override;
  void Show(const TDrawing& ADrawing, const TDamage& AParts) override;

  TWindow& GetWindow() const noexcept { return FWindow; }
  std::uint32_t GetId() const;
  /// Tells the window what has happened. This object may be gone afterwards.
  void Handle(const SDL_Event& AnEvent);
  /// Makes the texture anew when it is shown next.
  void LosePicture();

 private:
  /// Counts this window among those that need the display.
  class TConnection {
   public:
    explicit TConnection(TSdlScreen& AScreen) : FScreen(AScreen) { FScreen.Connect(); }
    ~TConnection() { FScreen.Disconnect(); }
    TConnection(const TConnection&) = delete;
    TConnection& operator=(const TConnection&) = delete;

   private:
    TSdlScreen& FScreen;
  };
  struct TRelease {
    void operator()(SDL_Window* AWindow) const noexcept;
    void operator()(SDL_Renderer* ARenderer) const noexcept;
    void operator()(SDL_Texture* ATexture) const noexcept;
  };

  void MakeTexture(TPictureSize ASize);
  void Copy(const TDrawing& ADrawing, const TRectF& APart);
  void Present();
  void HandleWindow(const SDL_WindowEvent& AnEvent);
  void HandleMotion(const SDL_MouseMotionEvent& AnEvent);
  void HandleButton(const SDL_MouseButtonEvent& AnEvent);
  void HandleWheel(const SDL_MouseWheelEvent& AnEvent);
  void HandleKey(const SDL_KeyboardEvent& AnEvent);

  TSdlScreen& FScreen;
  TWindow& FWindow;
  TConnection FConnection;
  std::unique_ptr<SDL_Window, TRelease> FHandle;
  std::unique_ptr<SDL_Renderer, TRelease> FRenderer;
  std::unique_ptr<SDL_Texture, TRelease> FTexture;
  TPictureSize FTextureSize;
  TPointF FPointer;  // where it was seen last
};

}  // namespace System
