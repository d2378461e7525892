#include <mutex>
#include <utility>

#include "platform/errors.h"
#include "platform/messages.h"
#include "platform/threads.h"

namespace System {
namespace {

struct TSlot {
  std::mutex Lock;  // guards Handler
  TApplicationExceptionEvent Handler;
};

TSlot& Slot() {
  static TSlot Value;
  return Value;
}

}  // namespace

void SetApplicationExceptionHandler(TApplicationExceptionEvent AHandler) {
  const std::lock_guard Guard(Slot().Lock);
  std::swap(Slot().Handler, AHandler);
}

void HandleApplicationException(TObject* ASender, const std::exception& AError) {
  TApplicationExceptionEvent Handler;
  {
    const std::lock_guard Guard(Slot().Lock);
    Handler = Slot().Handler;
  }
  Handler(ASender, AError);
}

void HandleCurrentException(TObject* ASender) {
  WithCurrentException(
      [&](const std::exception& AError) { HandleApplicationException(ASender, AError); });
}

void WithCurrentException(const std::function<void(const std::exception&)>& ABody) {
  try {
    throw;
  } catch (const std::exception& Error) {
    ABody(Error);
  } catch (...) {
    ABody(EGeneralError(std::string(Messages::SUnknownException)));
  }
}

}  // namespace System
