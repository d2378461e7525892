#include "positioning/particle_kernel.h"

#include <cstdlib>
#include <string_view>

namespace System::Beacon::Fencing {
namespace {

bool IsBaselineWanted() {
  const char* const Wanted = std::getenv("WAYFENCE_KERNEL");
  return Wanted && std::string_view(Wanted) == "baseline";
}

TParticleKernel Choose() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") && !IsBaselineWanted()) return Avx2::RunParticlePass;
#endif
  return Baseline::RunParticlePass;
}

}  // namespace

TParticleKernel ChooseParticleKernel() {
  static const TParticleKernel Chosen = Choose();
  return Chosen;
}

}  // namespace System::Beacon::Fencing
