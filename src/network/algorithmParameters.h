#pragma once

/// Settings of loopy propagation and of the EPIS sampler, in the order in which files keep them:
/// rounds of propagation, bounds of the outcome counts that choose a cutoff, and the cutoffs.
struct KVN_episParameters {
  int proplen = 5;
  int numstates1 = 5;
  int numstates2 = 8;
  int numstates3 = 20;
  double eps1 = 0.006;
  double eps2 = 0.0001;
  double eps3 = 5e-5;
  double eps4 = 5e-5;

  /// proplen >= 1; numstates1 < numstates2 < numstates3; eps2 <= eps1 and eps3 <= eps2.
  bool IsAcceptable() const;
};

/// Settings of the equation solver; stored, tested and copied, and read by nothing yet.
struct KVN_solverParameters {
  double d1 = 0.8;
  double d2 = 0.001;
  double d3 = 0.99;
  double d4 = 0.1;
  int i1 = 1;
  int i2 = 10;
  int i3 = 20;
  int spare = 0;

  /// 0.5 <= d1 <= 0.99; d2, d3, d4 above 0; d2 below d3; i1 and i2 at least 1; i3 not below i2.
  bool IsAcceptable() const;
};
