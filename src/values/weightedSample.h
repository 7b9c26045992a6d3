#pragma once

/// A number drawn for a continuous node, and how much it counts.
struct KVN_weightedSample {
  double value = 0.0;
  double weight = 1.0;
};
