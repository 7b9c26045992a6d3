#include "inference/exact/tableWalk.h"

extern const TableKernels theBaselineKernels;  // tableKernelsBaseline.cpp
#ifdef KVN_HAS_AVX2_KERNELS
extern const TableKernels theAvx2Kernels;  // tableKernelsAvx2.cpp
#endif

void WalkPlan::Build(int count, const std::int64_t* sizes, const std::int64_t* strides) {
  levels = 0;
  for (int d = count - 1; d >= 0; --d) {
    if (sizes[d] == 1) continue;
    if (levels > 0 && strides[d] == steps[levels - 1] * counts[levels - 1]) {
      counts[levels - 1] *= sizes[d];
      continue;
    }
    counts[levels] = sizes[d];
    steps[levels] = strides[d];
    ++levels;
  }
  if (levels == 0) {
    counts[0] = 1;
    steps[0] = 0;
    levels = 1;
  }
}

const TableKernels& GetTableKernels() {
#ifdef KVN_HAS_AVX2_KERNELS
  static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
  if (hasAvx2) return theAvx2Kernels;
#endif
  return theBaselineKernels;
}
