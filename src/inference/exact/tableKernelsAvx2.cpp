// Compiled with -mavx2, and called only where the machine has it.
#include "inference/exact/tableWalk.h"

#include "inference/exact/tableKernels.inc"

extern const TableKernels theAvx2Kernels;
const TableKernels theAvx2Kernels = {CopyKernel, MultiplyKernel, ReplaceKernel, AddKernel};
