#pragma once

/// Settings of the importance sampler that prepares its tables by loopy propagation, and of loopy
/// propagation itself. A network carries one record; the files store it field by field.
struct EpisParameters {
  int proplen = 5;      // rounds of propagation
  int numstates1 = 5;   // outcome counts up to this use eps1
  int numstates2 = 8;   // ... up to this eps2
  int numstates3 = 20;  // ... up to this eps3, larger ones eps4
  double eps1 = 0.006;  // cutoffs for small probabilities
  double eps2 = 0.0001;
  double eps3 = 0.00005;
  double eps4 = 0.00005;

  /// At least one round, rising counts, and cutoffs eps1 to eps3 of which none is above the one
  /// before. eps4 is not tested.
  bool IsLegal() const {
    return proplen >= 1 && numstates1 < numstates2 && numstates2 < numstates3 && !(eps2 > eps1) &&
           !(eps3 > eps2);
  }
  bool operator==(const EpisParameters&) const = default;
};
