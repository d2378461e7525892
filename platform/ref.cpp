#include "platform/ref.h"

namespace System {

void TInterfacedObject::Release() const noexcept {
  if (FRefCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  FRefCount.store(1, std::memory_order_relaxed);
  const_cast<TInterfacedObject*>(this)->BeforeDestruction();
  delete this;
}

}  // namespace System
