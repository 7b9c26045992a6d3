#pragma once

#include <cstdint>

/// Most dimensions of a table in a join tree.
constexpr int kTableDimensionLimit = 30;

/// How to walk over adjacent cells of a large table together with the matching cells of a small
/// one, whose dimensions are among those of the large. Dimensions that step alike are merged into
/// one level, so that the loops below are few and long and compute no coordinates.
struct WalkPlan {
  int levels = 0;                             // level 0 is the innermost
  std::int64_t counts[kTableDimensionLimit];  // cells of the large table (level 0), or repeats
  std::int64_t steps[kTableDimensionLimit];   // in the small table, 0 where it lacks the dimension

  /// `sizes` are those of the large table, the last one fastest; `strides` the steps of the small
  /// table along them. Dimensions of one cell are left out.
  void Build(int count, const std::int64_t* sizes, const std::int64_t* strides);
};

/// The loops over plans. Each visits the cells in ascending order and combines a cell with one
/// number at a time, in the order of the formula beside it, so the bits don't depend on the
/// variant.
struct TableKernels {
  /// cell = factor
  void (*copy)(const WalkPlan& plan, double* cells, const double* factor);
  /// cell = cell * factor
  void (*multiply)(const WalkPlan& plan, double* cells, const double* factor);
  /// cell = before == 0 ? 0 : cell * now / before
  void (*replace)(const WalkPlan& plan, double* cells, const double* now, const double* before);
  /// sum = sum + cell
  void (*add)(const WalkPlan& plan, const double* cells, double* sums);
};

/// The variant for this machine, chosen once: the same source compiled for the baseline and, on
/// x86-64, for AVX2. Neither contracts or reassociates, so both give the same bits.
const TableKernels& GetTableKernels();
