#pragma once

#include "foundation/doubleArray.h"
#include "foundation/intArray.h"

/// How good the posteriors of a sampling run are, as far as the run itself can tell. A caller who
/// wants to know hands one to SetSamplingQuality before UpdateBeliefs. Results don't change by it:
/// the same samples are looked at twice.
///
/// The standard error comes from batch means: the run is cut into kBatches stretches of the one
/// stream, and the posterior being a ratio of two sums, its error is that of the ratio estimator
/// (W. G. Cochran 1977, Sampling Techniques, section 6). It tells the spread, not a bias that all
/// batches share.
class SamplingQuality {
 public:
  static constexpr int kBatches = 20;

  /// One for each outcome; null for a node that no sampling decided: settled by its evidence or by
  /// the reduction of the network, or not computed. NaN with fewer than two samples.
  const double* GetStandardErrors(int handle) const;
  /// Effective number of samples over the number asked for, (sum w)^2 / (N * sum w^2), from 0 to 1
  /// (A. Kong 1992); 1 for a node that no sampling decided.
  double GetEffectiveShare(int handle) const;

  void Clear();
  /// Called by the samplers, once for each node.
  [[nodiscard]] int Note(int handle, const double* errors, int count, double effectiveShare);

 private:
  int PlaceOf(int handle) const;

  KVN_intArray places;  // by handle: place in `shares` plus 1, 0 for none
  KVN_intArray starts;  // by place: first cell in `errors`
  KVN_doubleArray shares;
  KVN_doubleArray allErrors;
};

/// Every later run of a sampler in this process notes into `receiver`, which the caller keeps alive
/// until it sets another or null. Not guarded.
void SetSamplingQuality(SamplingQuality* receiver);
SamplingQuality* GetSamplingQuality();
