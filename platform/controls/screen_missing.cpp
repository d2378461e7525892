// What stands in for the window system in a library that was built without it.
#ifndef WAYFENCE_HAS_SDL2

#include "platform/controls/screen.h"
#include "platform/messages.h"

namespace System {

IScreen& IScreen::Instance() {
  throw EGeneralError(std::string(Messages::SBuiltWithoutWindows));
}

}  // namespace System

#endif
