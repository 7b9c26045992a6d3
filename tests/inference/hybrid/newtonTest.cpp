#include "inference/hybrid/newton.h"

#include <cmath>
#include <functional>
#include <limits>

#include "foundation/resultCodes.h"
#include "tests/support/builders.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Vector = std::vector<double>;

class FunctionSystem : public ResidualSystem {
 public:
  explicit FunctionSystem(std::function<void(const Vector&, Vector&)> residuals)
      : compute(std::move(residuals)) {}
  void ComputeResiduals(const Vector& x, Vector& residuals) override {
    evaluations++;
    compute(x, residuals);
  }
  long evaluations = 0;

 private:
  std::function<void(const Vector&, Vector&)> compute;
};

FunctionSystem SystemOfOne(double (*f)(double)) {
  return FunctionSystem([f](const Vector& x, Vector& out) { out[0] = f(x[0]); });
}

struct Answer {
  int result;
  Vector x;
  int iterations;
};

Answer Solve(FunctionSystem& system, Vector start, int most = kNewtonIterations) {
  Answer answer{0, std::move(start), -1};
  answer.result = NewtonSolve(system, answer.x, kNewtonStep, most, &answer.iterations);
  return answer;
}

}  // namespace

TEST(Newton, SolvesOneEquation) {
  const struct {
    const char* name;
    double (*f)(double);
    double start, root;
    int iterations;  // -1: any
  } cases[] = {
      {"linear, then a round without change", [](double x) { return 0.5 * x + 1 - x; }, 0, 2, 2},
      {"square root", [](double x) { return x * x - 2; }, 1, M_SQRT2, -1},
      {"above 1 the step grows with x", [](double x) { return x - 1e12; }, 5e11, 1e12, -1},
      {"flat: x stays", [](double) { return 1.0; }, 3, 3, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    FunctionSystem system = SystemOfOne(c.f);
    const Answer answer = Solve(system, {c.start});
    EXPECT_EQ(answer.result, 0);
    EXPECT_NEAR(answer.x[0], c.root, 1e-6 * std::max(1.0, std::fabs(c.root)));
    if (c.iterations >= 0) {
      EXPECT_EQ(answer.iterations, c.iterations);
    }
  }
}

// The difference at a negative number is the plain step, however large the number is.
TEST(Newton, StepIsProportionalOnlyAboveOne) {
  const struct {
    double x, step;
  } cases[] = {{1000.0, 0.001}, {-1000.0, 1e-6}, {1.0, 1e-6}, {0.0, 1e-6}, {2.0, 2e-6}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.x);
    double largest = -std::numeric_limits<double>::infinity();
    FunctionSystem system([&](const Vector& x, Vector& out) {
      largest = std::max(largest, x[0]);
      out[0] = 1.0;  // flat: x isn't moved by the round itself
    });
    (void)Solve(system, {c.x}, 1);
    EXPECT_NEAR(largest - c.x, c.step, 1e-9 * c.step + 1e-12);
  }
}

TEST(Newton, SolvesSystems) {
  // x + y = 3, x*y = 2 has (1,2) and (2,1). From (0, 1) the first round is exact: dx + dy = 2 and
  // dx = 2.
  FunctionSystem circle([](const Vector& x, Vector& out) {
    out[0] = x[0] + x[1] - 3;
    out[1] = x[0] * x[1] - 2;
  });
  const Answer answer = Solve(circle, {0, 1});
  ASSERT_EQ(answer.result, 0);
  EXPECT_NEAR(answer.x[0], 2.0, 1e-6);
  EXPECT_NEAR(answer.x[1], 1.0, 1e-6);
  FunctionSystem nothing([](const Vector&, Vector&) {});
  EXPECT_EQ(Solve(nothing, {}).result, KVN_REFUSED);
}

// A power of two as slope and step keeps the arithmetic exact, so that the first change is `root`
// bit for bit.
TEST(Newton, ChangeMustBeBelowTheLimit) {
  for (const auto& [root, rounds] : {std::pair{0.0001, 2}, {std::nextafter(0.0001, 0.0), 1}}) {
    SCOPED_TRACE(rounds);
    FunctionSystem system([r = root](const Vector& x, Vector& out) {
      out[0] = std::ldexp(x[0], 60) - std::ldexp(r, 60);
    });
    Vector x = {0.0};
    int iterations = 0;
    ASSERT_EQ(NewtonSolve(system, x, std::ldexp(1.0, -20), 100, &iterations), 0);
    EXPECT_EQ(x[0], root);
    EXPECT_EQ(iterations, rounds);
  }
}

TEST(Newton, GivesUpEarlyOnlyWhereTheRestWouldRepeat) {
  // Not a number stays so: it ends at once, with the count of a full run.
  FunctionSystem bad = SystemOfOne([](double) { return kNaN; });
  Answer answer = Solve(bad, {0.0});
  EXPECT_EQ(answer.result, 0);
  EXPECT_TRUE(std::isnan(answer.x[0]));
  EXPECT_EQ(answer.iterations, kNewtonIterations);
  EXPECT_LT(bad.evaluations, 20);

  // x := -x forever (residual |x|^0.5 with the sign of x): whatever the limit, x is that of a run
  // that was done round by round.
  const auto swing = [](double x) { return std::copysign(std::sqrt(std::fabs(x)), x); };
  for (int most : {1, 2, 3, 50, 51}) {
    SCOPED_TRACE(most);
    FunctionSystem stepwise = SystemOfOne(swing);
    Vector x = {0.25};
    for (int i = 0; i < most; i++) {
      ASSERT_EQ(NewtonSolve(stepwise, x, kNewtonStep, 1, nullptr), 0);
    }
    FunctionSystem whole = SystemOfOne(swing);
    EXPECT_EQ(Solve(whole, {0.25}, most).x[0], x[0]);
  }
}

TEST(SolveLinear, EliminatesWithTheFirstNonZeroPivot) {
  const struct {
    const char* name;
    Vector rows, b, y;  // y empty: no solution
  } cases[] = {
      {"diagonal", {2, 0, 0, 4}, {2, 8}, {1, 2}},
      {"row swap", {0, 1, 1, 0}, {3, 5}, {5, 3}},
      {"second swap", {1, 1, 1, 1, 1, 2, 0, 1, 0}, {6, 9, 2}, {1, 2, 3}},
      {"not the largest", {1e-20, 1, 1, 1}, {1, 2}, {0, 1}},
      {"no pivot", {0, 1, 0, 2}, {1, 1}, {}},
      {"last is zero", {1, 1, 1, 1}, {1, 1}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const int n = static_cast<int>(c.b.size());
    KVN_Dmatrix rows = TableOf({n, n}, c.rows);
    Vector b = c.b;
    Vector y(c.b.size(), -7.0);
    EXPECT_EQ(SolveLinear(rows, b, y, n), c.y.empty() ? KVN_REFUSED : 0);
    EXPECT_EQ(y, c.y.empty() ? Vector(c.b.size(), -7.0) : c.y);
  }
}
