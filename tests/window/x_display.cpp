#include "window/x_display.h"

#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <cstring>
#include <string_view>

namespace System {
namespace {

struct TFree {
  void operator()(void* AMemory) const noexcept { std::free(AMemory); }
};

template <class T>
std::unique_ptr<T, TFree> Own(T* AReply) {
  return std::unique_ptr<T, TFree>(AReply);
}

/// A line of what a program writes, within a minute.
std::string ReadLine(FILE* AProgram) {
  std::string Result;
  pollfd Wait{fileno(AProgram), POLLIN, 0};
  char Letter = 0;
  while (poll(&Wait, 1, 60'000) > 0 && read(Wait.fd, &Letter, 1) == 1 && Letter != '\n')
    Result += Letter;
  return Result;
}

}  // namespace

/// The server writes the number of its display; the shell that becomes it, its process first.
TXDisplay::TXDisplay()
    : FProgram(popen(
          "echo $$; exec Xvfb -displayfd 1 -screen 0 800x600x24 -nolisten tcp 2>/dev/null", "re")) {
  FServer = FProgram ? std::atoi(ReadLine(FProgram).c_str()) : 0;
  const std::string Number = FProgram ? ReadLine(FProgram) : "";
  if (Number.empty())
    FProblem = "Xvfb cannot be started; install the Debian package xvfb";
  else
    Connect(Number);
}

void TXDisplay::Connect(const std::string& ANumber) {
  const std::string Display = fmt::format(":{}", ANumber);
  FConnection = xcb_connect(Display.c_str(), nullptr);
  if (xcb_connection_has_error(FConnection) != 0) {
    FProblem = "the display " + Display + " of Xvfb cannot be reached";
    return;
  }
  FRoot = xcb_setup_roots_iterator(xcb_get_setup(FConnection)).data->root;
  setenv("DISPLAY", Display.c_str(), 1);
}

TXDisplay::~TXDisplay() {
  if (FConnection) xcb_disconnect(FConnection);
  if (FServer != 0) kill(FServer, SIGTERM);
  if (FProgram) pclose(FProgram);
}

// ---------------------------------------------------------------- windows

xcb_atom_t TXDisplay::GetAtom(const std::string& AName) const {
  const auto Cookie =
      xcb_intern_atom(FConnection, 0, static_cast<std::uint16_t>(AName.size()), AName.c_str());
  const auto Reply = Own(xcb_intern_atom_reply(FConnection, Cookie, nullptr));
  return Reply ? Reply->atom : 0;
}

xcb_window_t TXDisplay::FindWindow(const std::string& ATitle) const {
  const auto Tree =
      Own(xcb_query_tree_reply(FConnection, xcb_query_tree(FConnection, FRoot), nullptr));
  const int Count = Tree ? xcb_query_tree_children_length(Tree.get()) : 0;
  for (int I = 0; I < Count; ++I) {
    const xcb_window_t Window = xcb_query_tree_children(Tree.get())[I];
    const auto Name = Own(xcb_get_property_reply(
        FConnection,
        xcb_get_property(FConnection, 0, Window, XCB_ATOM_WM_NAME, XCB_ATOM_ANY, 0, 64),
        nullptr));
    if (!Name) continue;
    const std::string_view Title(
        static_cast<const char*>(xcb_get_property_value(Name.get())),
        static_cast<std::size_t>(xcb_get_property_value_length(Name.get())));
    const auto State = Own(xcb_get_window_attributes_reply(
        FConnection, xcb_get_window_attributes(FConnection, Window), nullptr));
    if (Title == ATitle && State && State->map_state == XCB_MAP_STATE_VIEWABLE) return Window;
  }
  return 0;
}

std::vector<std::uint32_t> TXDisplay::GetPixels(xcb_window_t AWindow,
                                                int AWidth,
                                                int AHeight) const {
  const auto Cookie = xcb_get_image(FConnection,
                                    XCB_IMAGE_FORMAT_Z_PIXMAP,
                                    AWindow,
                                    0,
                                    0,
                                    static_cast<std::uint16_t>(AWidth),
                                    static_cast<std::uint16_t>(AHeight),
                                    ~0U);
  const auto Image = Own(xcb_get_image_reply(FConnection, Cookie, nullptr));
  if (!Image) return {};
  std::vector<std::uint32_t> Result(xcb_get_image_data_length(Image.get()) / 4);
  std::memcpy(Result.data(), xcb_get_image_data(Image.get()), Result.size() * 4);
  for (std::uint32_t& Pixel : Result) Pixel |= 0xFF000000;
  return Result;
}

// ---------------------------------------------------------------- input

void TXDisplay::Fake(std::uint8_t AType, std::uint8_t ADetail, int AnX, int AnY) {
  xcb_test_fake_input(FConnection,
                      AType,
                      ADetail,
                      XCB_CURRENT_TIME,
                      FRoot,
                      static_cast<std::int16_t>(AnX),
                      static_cast<std::int16_t>(AnY),
                      0);
  xcb_flush(FConnection);
}

void TXDisplay::MovePointer(xcb_window_t AWindow, int AnX, int AnY) {
  const auto Cookie = xcb_translate_coordinates(
      FConnection, AWindow, FRoot, static_cast<std::int16_t>(AnX), static_cast<std::int16_t>(AnY));
  const auto Place = Own(xcb_translate_coordinates_reply(FConnection, Cookie, nullptr));
  if (Place) Fake(XCB_MOTION_NOTIFY, 0, Place->dst_x, Place->dst_y);
}

void TXDisplay::TypeKey(xcb_window_t AWindow, std::uint8_t ACode) {
  xcb_set_input_focus(FConnection, XCB_INPUT_FOCUS_PARENT, AWindow, XCB_CURRENT_TIME);
  Fake(XCB_KEY_PRESS, ACode);
  Fake(XCB_KEY_RELEASE, ACode);
}

void TXDisplay::AskToClose(xcb_window_t AWindow) {
  xcb_client_message_event_t Event{};
  Event.response_type = XCB_CLIENT_MESSAGE;
  Event.format = 32;
  Event.window = AWindow;
  Event.type = GetAtom("WM_PROTOCOLS");
  Event.data.data32[0] = GetAtom("WM_DELETE_WINDOW");
  xcb_send_event(FConnection, 0, AWindow, 0, reinterpret_cast<const char*>(&Event));
  xcb_flush(FConnection);
}

}  // namespace System
