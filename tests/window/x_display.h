// A display of its own for a test, with real input: an X server without a screen, and a client that
// moves its pointer and looks at its windows.
#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace System {

/// Applications that start in this process from now on are on this display.
class TXDisplay {
 public:
  /// Starts the server; `GetProblem` tells why it could not be.
  TXDisplay();
  ~TXDisplay();
  TXDisplay(const TXDisplay&) = delete;
  TXDisplay& operator=(const TXDisplay&) = delete;

  const std::string& GetProblem() const noexcept { return FProblem; }

  /// The window of a title, once it is shown; 0 when there is none.
  xcb_window_t FindWindow(const std::string& ATitle) const;
  /// Points are in the window.
  void MovePointer(xcb_window_t AWindow, int AnX, int AnY);
  /// Button 1 is the left one, 4 the wheel away from the user.
  void Press(std::uint8_t AButton) { Fake(XCB_BUTTON_PRESS, AButton); }
  void Release(std::uint8_t AButton) { Fake(XCB_BUTTON_RELEASE, AButton); }
  /// Presses and releases a key of a window, by its code on a PC.
  void TypeKey(xcb_window_t AWindow, std::uint8_t ACode);
  /// What a window manager sends for the cross in the title bar.
  void AskToClose(xcb_window_t AWindow);
  /// The pixels of a window as they are on the screen; none when it cannot be read.
  std::vector<std::uint32_t> GetPixels(xcb_window_t AWindow, int AWidth, int AHeight) const;

 private:
  void StartServer();
  void Connect(const std::string& ANumber);
  void Fake(std::uint8_t AType, std::uint8_t ADetail, int AnX = 0, int AnY = 0);
  xcb_atom_t GetAtom(const std::string& AName) const;

  pid_t FServer = 0;
  xcb_connection_t* FConnection = nullptr;
  xcb_window_t FRoot = 0;
  std::string FProblem;
};

}  // namespace System
