#define WAYFENCE_KERNEL_VERSION Baseline
#include "positioning/particle_kernel_body.inc"
