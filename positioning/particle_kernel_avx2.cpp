#define WAYFENCE_KERNEL_VERSION Avx2
#include "positioning/particle_kernel_body.inc"
