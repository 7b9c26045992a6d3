#include "inference/exact/tableWalk.h"

#include "inference/exact/tableKernels.inc"

extern const TableKernels theBaselineKernels;
const TableKernels theBaselineKernels = {CopyKernel, MultiplyKernel, ReplaceKernel, AddKernel};
