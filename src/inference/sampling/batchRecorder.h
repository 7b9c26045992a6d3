#pragma once

#include "foundation/doubleArray.h"

/// Cuts the accumulated weights of one part into batches, for SamplingQuality. Without a receiver
/// it holds no memory and does nothing.
class BatchRecorder {
 public:
  /// `cells`: accumulated weights of the part, all outcomes of all nodes. KVN_NO_MEMORY.
  [[nodiscard]] int Setup(int cells, int samples);

  /// Of each sample that counts.
  void AddWeight(double weight) {
    if (IsActive()) AddSquare(weight);
  }
  /// Whether `done` samples end a batch; call CloseBatch then.
  bool IsBatchEnd(int done) const { return done == nextEnd; }
  /// `accumulated` and `total` as they stand, from the start of the run.
  void CloseBatch(const double* accumulated, double total);

  /// After the last batch: the standard errors of the posteriors of `count` outcomes whose
  /// accumulated weights start at `start`.
  void ComputeErrors(int start, int count, double* errors) const;
  double ComputeEffectiveShare() const;
  bool IsActive() const { return batchCount > 0; }

 private:
  void AddSquare(double weight);
  double WeightIn(int batch, int cell) const;
  double TotalIn(int batch) const;

  int cells = 0;
  int samples = 0;
  int batchCount = 0;  // 0: inactive
  int closed = 0;
  int nextEnd = -1;        // samples after which the open batch ends
  double largest = 0.0;    // weight
  double squares = 0.0;    // of the weights over the largest: much evidence makes them tiny
  KVN_doubleArray sums;    // by batch and cell, accumulated from the start
  KVN_doubleArray totals;  // by batch, likewise
};
