#pragma once

#include <vector>

class KVN_Dmatrix;

/// A system of n equations in n unknowns, F(x) = 0.
class ResidualSystem {
 public:
  virtual ~ResidualSystem() = default;
  /// One residual for each equation; both vectors have n entries. Gives the same numbers for the
  /// same x.
  virtual void ComputeResiduals(const std::vector<double>& x, std::vector<double>& residuals) = 0;
};

/// The stopping rule of equation networks.
constexpr int kNewtonIterations = 1000000;
constexpr double kNewtonStep = 1e-6;

/// Newton's method with a Jacobian by forward differences (Dennis and Schnabel, Numerical Methods
/// for Unconstrained Optimization and Nonlinear Equations, 1983, chapter 5), from the given x on.
/// The difference in x[j] is `step` * x[j] above 1.0 and `step` otherwise, for negative numbers too
/// (intended). Ends when the sum of the changes is below 0.0001; a change that isn't a number
/// doesn't end it, and running out of iterations is no failure: x is then the last estimate
/// (both intended). Where the Jacobian is singular x stays as it is, which is a change of 0.
///
/// An estimate that comes back bit for bit repeats forever, so the rounds that are left are not
/// computed one by one: the result is the one that they would have.
///
/// 0; KVN_REFUSED for a system without unknowns, KVN_NO_MEMORY. `iterations`, unless null, gets the
/// number used, `maxIterations` when that was reached.
int NewtonSolve(ResidualSystem& system, std::vector<double>& x, double step, int maxIterations,
                int* iterations);

/// Gaussian elimination in place: `rows` (n by n) times y = b. The first non-zero entry of a column
/// is the pivot; there is no search for the largest (intended). KVN_REFUSED, with y unchanged, for
/// a column without one.
int SolveLinear(KVN_Dmatrix& rows, std::vector<double>& b, std::vector<double>& y, int n);
