#include "apps/wayfence/filter_options.h"

#include "persistence/component_file.h"
#include "platform/components.h"
#include "platform/files.h"

namespace Wayfence {

using namespace System;
using namespace System::Beacon::Fencing;

namespace {

/// Streaming works on components: one that shows options of its own, or of someone else.
class TOptionsHolder final : public TComponent {
 public:
  FENCING_CLASS_INFO()

  explicit TOptionsHolder(TParticleFilterOptions* AOptions)
      : TComponent(nullptr), FOptions(AOptions ? AOptions : &FOwn) {}

  TParticleFilterOptions* GetOptions() { return FOptions; }

 private:
  TParticleFilterOptions FOwn;
  TParticleFilterOptions* const FOptions;
};

const TClassInfo& TOptionsHolder::ClassInfo() {
  static const TClassInfo Info{
      .Name = "Wayfence.TOptionsHolder",
      .Base = &TComponent::ClassInfo(),
      .CreateComponent = [](TComponent*) -> std::unique_ptr<TComponent> {
        return std::make_unique<TOptionsHolder>(nullptr);
      },
      .Properties = {ReadOnlyProperty<&TOptionsHolder::GetOptions>("ParticleFilterOptions", true)}};
  return Info;
}

}  // namespace

void LoadFilterOptions(TParticleFilterOptions& AOptions, const std::string& AFileName) {
  constexpr std::size_t MaxSize = 1 << 20;  // bytes
  // Nothing is put before the first line, nor on the last one, so that lines are told as they are.
  const std::string Text =
      "{\"ParticleFilterOptions\": " + ReadWholeFile(AFileName, MaxSize) + "\n}";
  TOptionsHolder Holder(&AOptions);
  ReadComponent(Holder, Text, AFileName);
}

}  // namespace Wayfence
