#pragma once

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
