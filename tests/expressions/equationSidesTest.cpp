#include "expressions/equationSides.h"

#include <cmath>

#include "expressions/expression.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/failingAllocation.h"

namespace {

KVN_equationSides SidesOf(const std::string& text) {
  KVN_equationSides sides;
  EXPECT_EQ(sides.Parse(text, nullptr, nullptr), 0) << text;
  return sides;
}

}  // namespace

TEST(EquationSides, ParseWantsAnEqualsSignAtTheTop) {
  const struct {
    const char* text;
    int result;
    const char* error;
  } cases[] = {
      {"y = x + 1", 0, ""},
      {"y", KVN_EXPRESSION_ERROR, "Toplevel '=' sign missing in equation"},
      {"(a = b) + 1", KVN_EXPRESSION_ERROR, "Toplevel '=' sign missing in equation"},
      {"a <> b", KVN_EXPRESSION_ERROR, "Toplevel '=' sign missing in equation"},
      {"y = ", KVN_REFUSED, "Factor expected"},
      {"", KVN_REFUSED, "Empty expression"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    KVN_equationSides sides = SidesOf("old = 1");
    std::string error;
    EXPECT_EQ(sides.Parse(c.text, nullptr, &error), c.result);
    EXPECT_EQ(error, c.error);
    EXPECT_EQ(sides.IsComplete(), c.result == 0) << "a failure drops the old sides";
  }
}

TEST(EquationSides, TextComesBackFromTheTwoSides) {
  for (const char* text :
       {"y=x+1", "y=(a=b)", "y-1=2*x", "(a=b)=c", "y=(c ? a : b)", "-y=-(a+b)"}) {
    SCOPED_TRACE(text);
    const KVN_equationSides sides = SidesOf(text);
    EXPECT_EQ(TextOf(sides), std::string(text) == "(a=b)=c" ? "a=b=c" : text);
  }
  EXPECT_EQ(TextOf(SidesOf("y = a - (b - c)")), "y=a-(b-c)");
  EXPECT_EQ(TextOf(SidesOf("a = b = c")), "a=b=c");
}

TEST(EquationSides, SolvesForOneVariable) {
  const struct {
    const char* text;
    double y;  // for x = 3, z = 5; NaN: not solvable
  } cases[] = {
      {"y = x", 3},
      {"x = y", 3},
      {"2*y + 1 = x", 1},
      {"x = -(y+1)", -4},
      {"y = (x>2)*10", 10},
      {"y = Max(0,x-2)*3", 3},
      {"-y = x", -3},
      {"x - y = z", -2},
      {"z / y = x", 5.0 / 3.0},
      {"y ^ 2 = x + 1", 2},
      {"Exp(y) = x", log(3.0)},
      {"x = 2 ^ y", log2(3.0)},
      {"Log(y, x) = 2", 9},
      {"-(x - y) * 2 = z", 5.5},
      {"y = (x - z) * 2", -4},
      {"y*x^0*2 = x + y^0", 2},  // y^0 goes, which takes memory
      {"y*y = x", NAN},
      {"y = y", NAN},
      {"z = x", NAN},
      {"Abs(y) = x", NAN},
      {"(y < x) = 1", NAN},
      {"Max(y, x) = z", NAN},
      {"(x ? y : z) = 1", NAN},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const int expected = std::isnan(c.y) ? int{KVN_REFUSED} : 0;
    // Also where an allocation fails: the result is this one or that there is no memory.
    FailEachAllocation([&](int n) {
      KVN_equationSides sides = SidesOf(c.text);
      bool failed = false;
      const int result = RunFailing(n, failed, [&] { return sides.Solve("y"); });
      EXPECT_TRUE(result == expected || (failed && result == KVN_NO_MEMORY)) << result;
      if (result != 0) return failed;
      sides.AssignVariable("x", 3);
      sides.AssignVariable("z", 5);
      EXPECT_EQ(TextOf(sides).substr(0, 2), "y=");
      EXPECT_NEAR(SignedValue(*sides.Rhs()), c.y, 1e-12) << TextOf(sides);
      return failed;
    });
  }
}

// Simplification looks at present values before it multiplies out a product by a constant, and
// variables that have no value yet are all alike.
TEST(EquationSides, SolvingDoesNotTakeADifferenceOfUnsetVariablesForZero) {
  KVN_equationSides sides = SidesOf("y = (a - b) * 2");
  sides.AssignVariable("a", 7.0);
  ASSERT_EQ(sides.Solve("y"), 0);
  // The values of the caller are there again.
  EXPECT_EQ(SignedValue(*sides.Rhs()), 14.0 - 2.0 * KVN_UNDEFINED_VALUE);
  sides.AssignVariable("b", 4.0);
  EXPECT_EQ(SignedValue(*sides.Rhs()), 6.0);
}

// A copy of a distribution would draw for itself.
TEST(EquationSides, SolvingKeepsOneDrawForEachDistribution) {
  for (const auto& [text, solved] : {std::pair{"y = Uniform(0,1)*(a + b)", "y=Uniform(0,1)*(a+b)"},
                                     {"y = (a + b)/Uniform(1,2)", "y=(a+b)/Uniform(1,2)"},
                                     {"y = (a + Uniform(0,1))*(b - c)", "y=(a+Uniform(0,1))*(b-c)"},
                                     {"(y - a)*Uniform(1,2) = b", "y=b/Uniform(1,2)+a"},
                                     {"y = a*(Uniform(0,1) + b)", "y=a*Uniform(0,1)+a*b"}}) {
    KVN_equationSides sides = SidesOf(text);
    EXPECT_EQ(sides.Solve("y"), 0) << text;
    EXPECT_EQ(TextOf(sides), solved);
  }
}

// None, all, or a sum with a term less.
TEST(EquationSides, WithoutMemoryNoHalfIsMade) {
  FailEachAllocation([](int n) {
    const KVN_equationSides source = SidesOf("y = a + 1");
    KVN_equationSides copy, made, sum;
    bool failed = false;
    {
      FailingAllocation failing(n);
      copy = source;
      failed = made.Parse("y = x*3", nullptr, nullptr) < 0 || !copy.IsComplete();
      sum.SetDefault("y", {"a", "b"});
      failed = !sum.IsComplete() || sum.AppendTerm("c") < 0 || failed;
      EXPECT_EQ(failed, failing.HasFailed());
    }
    EXPECT_TRUE(!copy.IsComplete() || TextOf(copy) == "y=a+1");
    EXPECT_TRUE(!made.IsComplete() || TextOf(made) == "y=x*3");
    const std::string text = sum.IsComplete() ? TextOf(sum) : "y=a+b";
    EXPECT_TRUE(text == "y=a+b+c" || (failed && text == "y=a+b")) << text;
    return failed;
  });
}

TEST(EquationSides, SumGrowsNoDeeperThanAFormulaMayBe) {
  KVN_equationSides sides;
  sides.SetDefault("y", {});
  int terms = 0;
  while (terms < 5000 && sides.AppendTerm("x" + std::to_string(terms)) == 0) ++terms;
  EXPECT_LT(terms, 5000);
  EXPECT_EQ(sides.AppendTerm("more"), KVN_REFUSED);
  KVN_equationSides again;
  EXPECT_EQ(again.Parse(TextOf(sides), nullptr, nullptr), 0);
  ASSERT_EQ(again.Solve("y"), 0);
}
