#include "inference/hybrid/newton.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"

namespace {

constexpr double kSmallChange = 0.0001;
constexpr double kProportionalAbove = 1.0;

/// NaN is the same as NaN here, whatever its bits: nothing computed from it can tell.
bool AreSame(const std::vector<double>& a, const std::vector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), [](double left, double right) {
    return std::memcmp(&left, &right, sizeof left) == 0 || (std::isnan(left) && std::isnan(right));
  });
}

class NewtonRun {
 public:
  NewtonRun(ResidualSystem& equations, std::vector<double>& estimate, double relativeStep)
      : system(equations),
        x(estimate),
        step(relativeStep),
        n(static_cast<int>(estimate.size())),
        y(x),
        b(x.size()),
        residuals(x.size()),
        moved(x.size()) {}

  int Setup() {
    const int sizes[] = {n, n};
    return jacobian.Setup(sizes, 2);
  }

  /// One round; the change that it made.
  double Advance() {
    system.ComputeResiduals(x, residuals);
    for (int j = 0; j < n; ++j) Differentiate(j);
    for (int i = 0; i < n; ++i) {
      double sum = 0.0;
      for (int j = 0; j < n; ++j) sum += jacobian[i * n + j] * x[j];
      b[i] = sum - residuals[i];
    }
    (void)SolveLinear(jacobian, b, y, n);  // where it is singular, y is still the present x
    double change = 0.0;
    for (int j = 0; j < n; ++j) change += std::fabs(x[j] - y[j]);
    x = y;
    return change;
  }

 private:
  void Differentiate(int j) {
    const double present = x[j];
    x[j] = present + (present > kProportionalAbove ? step * present : step);
    const double difference = x[j] - present;  // what the rounding left of the step
    system.ComputeResiduals(x, moved);
    x[j] = present;
    for (int i = 0; i < n; ++i) jacobian[i * n + j] = (moved[i] - residuals[i]) / difference;
  }

  ResidualSystem& system;
  std::vector<double>& x;
  double step;
  int n;
  KVN_Dmatrix jacobian;
  std::vector<double> y;
  std::vector<double> b;
  std::vector<double> residuals;
  std::vector<double> moved;
};

}  // namespace

int NewtonSolve(ResidualSystem& system, std::vector<double>& x, double step, int maxIterations,
                int* iterations) {
  if (x.empty()) return KVN_REFUSED;
  NewtonRun run(system, x, step);
  if (int result = run.Setup(); result < 0) return result;
  // Brent's search for a cycle: compares with the estimate of the last round whose number is a
  // power of two.
  std::vector<double> remembered = x;
  int rememberedAt = 0;
  int end = maxIterations;
  bool isCycle = false;
  int count = 0;
  while (count < end) {
    ++count;
    if (run.Advance() < kSmallChange) {
      if (iterations != nullptr) *iterations = count;
      return KVN_SUCCESS;
    }
    if (isCycle) continue;
    if (AreSame(x, remembered)) {
      isCycle = true;
      end = count + (maxIterations - count) % (count - rememberedAt);
    } else if ((count & (count - 1)) == 0) {
      remembered = x;
      rememberedAt = count;
    }
  }
  if (iterations != nullptr) *iterations = maxIterations;
  return KVN_SUCCESS;
}

int SolveLinear(KVN_Dmatrix& rows, std::vector<double>& b, std::vector<double>& y, int n) {
  double* const cells = rows.GetData();
  const auto row = [&](int r) { return cells + static_cast<std::ptrdiff_t>(r) * n; };
  for (int c = 0; c < n; ++c) {
    int pivot = c;
    while (pivot < n && row(pivot)[c] == 0.0) ++pivot;
    if (pivot == n) return KVN_REFUSED;
    if (pivot != c) {
      std::swap_ranges(row(c), row(c) + n, row(pivot));
      std::swap(b[c], b[pivot]);
    }
    for (int r = c + 1; r < n; ++r) {
      const double factor = row(r)[c] / row(c)[c];
      for (int k = c + 1; k < n; ++k) row(r)[k] -= factor * row(c)[k];
      b[r] -= factor * b[c];
    }
  }
  for (int r = n - 1; r >= 0; --r) {
    double sum = b[r];
    for (int k = r + 1; k < n; ++k) sum -= row(r)[k] * y[k];
    y[r] = sum / row(r)[r];
  }
  return KVN_SUCCESS;
}
