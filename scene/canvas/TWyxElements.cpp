#include <istream>

#include "platform/files.h"
#include "scene/canvas/System.Beacon.Fencing.Canvas.Wyx.h"
#include "scene/canvas/messages.h"

namespace System::Beacon::Fencing::Canvas {

// ---------------------------------------------------------------- TWyxBitmap

void TWyxBitmap::LoadFromFile(const std::string& AFileName, const std::string& AName) {
  FPicture = LoadPicture(AFileName, AName);
}

void TWyxBitmap::LoadFromStream(std::istream& AStream, const std::string& AName) {
  FPicture = DecodePicture(ReadWholeStream(AStream, AName, MaxPictureFileSize), AName);
}

TRectF TWyxBitmap::GetLocalRect() const {
  return {0, 0, static_cast<float>(GetWidth()), static_cast<float>(GetHeight())};
}

// ---------------------------------------------------------------- TWyxLayer

void TWyxLayer::UpdateCanvasObject(TObject* AnObject) {
  auto* const Drawing = dynamic_cast<TDrawing*>(AnObject);
  if (AnObject && !Drawing) throw EGeneralError(std::string(Messages::SWrongSurface));
  FDrawing = Drawing;
}

// ---------------------------------------------------------------- TInvalidateRegionWyx

class TInvalidateRegionWyx::TListener final : public TComponent {
 public:
  explicit TListener(TControl* AControl) : TComponent(nullptr), FControl(AControl) {
    if (FControl) FControl->FreeNotification(this);
  }
  TControl* GetControl() const noexcept { return FControl; }

 protected:
  void Notification(TComponent* AComponent, TOperation AOperation) override {
    TComponent::Notification(AComponent, AOperation);
    if (AOperation == TOperation::Remove && AComponent == FControl) FControl = nullptr;
  }

 private:
  TControl* FControl;
};

TInvalidateRegionWyx::TInvalidateRegionWyx(TControl* AControl)
    : FListener(std::make_unique<TListener>(AControl)) {}

TInvalidateRegionWyx::~TInvalidateRegionWyx() = default;

void TInvalidateRegionWyx::InvalidateRect(const TRectF& ARect) {
  if (TControl* const Control = FListener->GetControl()) Control->RepaintRect(ARect);
}

void TInvalidateRegionWyx::Invalidate() {
  if (TControl* const Control = FListener->GetControl()) Control->Repaint();
}

TRef<IInvalidateRegion> TWyxInvlaidator::Create(TControl* AControl) {
  return New<TInvalidateRegionWyx>(AControl);
}

}  // namespace System::Beacon::Fencing::Canvas
