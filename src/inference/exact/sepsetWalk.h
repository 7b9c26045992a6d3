#pragma once

#include "foundation/dmatrix.h"

/// How to walk over the cells of a table in their order, together with the cells that they fall on
/// in a smaller table: its dimensions are among those of the larger one. Dimensions that step alike
/// are merged, so the inner loop is as long as can be.
class SepsetWalk {
 public:
  /// `steps` has, for each dimension of `large`, the distance in the small table between
  /// neighbours along it; 0 where it lacks the dimension.
  void Build(const KVN_Dmatrix& large, const KVN_intArray& steps);

  /// Adds each cell to the one it falls on.
  void Sum(const double* large, double* small) const;
  /// Multiplies each cell by the one it falls on; the largest product is the result.
  double Multiply(double* large, const double* small) const;

 private:
  // A table has fewer than 2^31 cells, and dimensions of one cell don't count.
  static constexpr int kMostLevels = 31;
  struct Level {
    int cells;
    int step;
  };

  template <typename Visit>
  void ForEach(Visit visit) const;

  Level levels[kMostLevels];  // the innermost first
  int count = 0;
};
