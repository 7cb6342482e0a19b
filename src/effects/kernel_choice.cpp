#include "effects/filter_kernels.h"

namespace effects {

#if !defined(__x86_64__)
const FilterKernels* Avx2Kernels() { return nullptr; }
#endif

const FilterKernels& FastestKernels() {
  static const FilterKernels& fastest = Avx2Kernels() != nullptr ? *Avx2Kernels() : PortableKernels();
  return fastest;
}

}  // namespace effects
