// What a call raises.
#pragma once

#include <string>
#include <utility>

namespace System {

/// The message of the `TError` that a call raises; "nothing was raised" when it raises none.
template <class TError, class TCall>
std::string Raised(TCall&& ACall) {
  try {
    std::forward<TCall>(ACall)();
  } catch (const TError& Error) {
    return Error.what();
  }
  return "nothing was raised";
}

}  // namespace System
