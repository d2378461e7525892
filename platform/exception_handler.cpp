#include <mutex>
#include <utility>

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

}  // namespace System
