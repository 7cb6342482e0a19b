#include "effects/filter_kernels.h"

namespace effects {

const FilterKernels& FastestKernels() {
  static const FilterKernels& fastest = Avx2Kernels() != nullptr ? *Avx2Kernels() : PortableKernels();
  return fastest;
}

}  // namespace effects
