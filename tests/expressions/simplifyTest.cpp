#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <string>

#include "expressions/expressionWalk.h"
#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"
#include "tests/expressions/expressionTools.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/sanitized.h"

namespace {

bool SimplifyOnce(Tree& tree) {
  KVN_expression* root = tree.release();
  const bool changed = root->Simplify(root);
  tree.reset(root);
  return changed;
}

struct StepCase {
  const char* before;
  const char* after;  // one step; null: unchanged
};

// clang-format off: version 14 stumbles over the comments in the rows.
const StepCase kSteps[] = {
    {"-(a+b)", "-a+-b"},
    {"1+2", "3"},
    {"1-3", "-2"},
    {"0+x", "x"},
    {"x+0", "x"},
    {"x+-3", "x-3"},
    {"3+x", "x+3"},
    {"(x+1)+2", "x+3"},
    {"(x-1)+2", "x+1"},
    {"(x-5)+2", "x+-3"},
    {"-(x+1)+2", "-x+-1+2"},
    {"a+(1+2)", "a+3"},
    {"-(a-b)", "b-a"},
    {"0-x", "-x"},
    {"0--x", "x"},
    {"x-0", "x"},
    {"x--3", "x+3"},
    {"3--x", "3+x"},
    {"a--b", nullptr},
    {"(x+5)-2", "x+3"},
    {"(x+1)-3", "x+-2"},
    {"(x-1)-3", "x-4"},
    {"(x-1)--3", "x-1+3"},
    {"-(x-1)-3", "1-x-3"},
    {"-(a*b)", "-a*b"},
    {"2*-3", "-6"},
    {"2*0", "0"},
    {"0*x", "0"},
    {"1*x", "x"},
    {"x*1", "x"},
    {"-1*x", "-x"},
    {"x*2", "2*x"},
    {"x*-1", "-1*x"},
    {"a*(b-c)", "a*b-a*c"},
    {"-a*-(b+c)", "-(-a*b+-a*c)"},
    {"(a-b)*c", "a*c-b*c"},
    {"(a+b)*(c+d)", "a*c+a*d+b*c+b*d"},
    {"(a+b)*(c-d)", "a*c-a*d+b*c-b*d"},
    {"(a-b)*(c+d)", "a*c+a*d-b*c-b*d"},
    {"(a-b)*-(c-d)", "-(a*c-a*d-b*c+b*d)"},
    {"a^2*(b+c)", nullptr},
    {"-(a/b)", "-a/b"},
    {"1/4", "0.25"},
    {"-0/x", "-0"},
    {"x/1", "x"},
    {"x/-4", "-0.25*x"},
    {"(a-b)/c", "a/c-b/c"},
    {"-(a+b)/c", "-(a/c+b/c)"},
    {"a/(b+c)", nullptr},
    {"x/x", "1"},
    {"x/y", nullptr},
    {"2^3", "8"},
    {"x^0", "1"},
    {"-(x^0)", "1"},
    {"x^(1+1)", "x^2"},
    {"1<2", "1"},
    {"1+2<x", nullptr},  // a comparison doesn't look below itself, meant
    {"1+2 ? 1+1 : 2*3", "3 ? 2 : 6"},
    {"Max(1+1,x+0)", "Max(2,x)"},
    {"Normal(1+1,2*3)", "Normal(2,6)"},
    {"Sin(0)", nullptr},
};

// clang-format on
TEST(Simplify, TakesOneStep) {
  for (const StepCase& c : kSteps) {
    SCOPED_TRACE(c.before);
    Tree tree = Parsed(c.before);
    for (const char* name : {"a", "b", "c", "d", "x", "y"}) AssignVariable(*tree, name, 1.5);
    EXPECT_EQ(SimplifyOnce(tree), c.after != nullptr);
    EXPECT_EQ(Printed(*tree), c.after != nullptr ? c.after : c.before);
  }
}

struct ExceptionCase {
  const char* name;
  const char* before;
  double x;
  double valueBefore;
  const char* after;
  double valueAfter;
};

// The steps that change the value, each of them meant.
const ExceptionCase kExceptions[] = {
    {"x times 0 is -x", "x*0", 3, 0, "-x", -3},
    {"but 0 where x is 0", "x*0", 0, 0, "0", 0},
    {"the sign of a folded power", "-(2^3)", 0, -8, "8", 8},
    {"the sign of a comparison", "-(1<2)", 0, -1, "1", 1},
    {"a quotient loses its signs", "-x/x", 2, -1, "1", 1},
    {"a quotient is never undefined", "x/x", 0, NAN, "1", 1},
    {"nor is a product with 0", "0*(1/x)", 0, NAN, "0", 0},
    {"nor a quotient with 0", "0/x", 0, NAN, "0", 0},
    {"the sign of a power of 0", "-(x^0)", 2, -1, "1", 1},
};

TEST(Simplify, ChangesTheValueInTheseCasesOnly) {
  for (const ExceptionCase& c : kExceptions) {
    SCOPED_TRACE(c.name);
    Tree tree = Parsed(c.before);
    AssignVariable(*tree, "x", c.x);
    const double before = SignedValue(*tree);
    EXPECT_TRUE(before == c.valueBefore || (std::isnan(before) && std::isnan(c.valueBefore)));
    ASSERT_TRUE(SimplifyOnce(tree));
    EXPECT_EQ(Printed(*tree), c.after);
    EXPECT_EQ(SignedValue(*tree), c.valueAfter);
  }
}

// Meant: the rule looks at the value that the left side has now. Without values, the undefined
// value squared is 0 to a double; NaN keeps the rule away.
TEST(Simplify, ProductsLookAtTheValuesOfTheMoment) {
  Tree tree = Parsed("x*x*3");
  AssignVariable(*tree, "x", std::nan(""));
  SimplifyOnce(tree);
  EXPECT_EQ(Printed(*tree), "3*(x*x)");
  tree = Parsed("x*x*3");
  SimplifyOnce(tree);
  EXPECT_EQ(Printed(*tree), "0");
}

void ExpectEnd(const std::string& before, const std::string& after) {
  SCOPED_TRACE(before);
  KVN_expression* root = Parsed(before).release();
  AssignVariable(*root, "x", 1.5);
  EXPECT_GT(SimplifyFully(root), 0);
  EXPECT_EQ(Printed(*root), after);
  EXPECT_EQ(SimplifyFully(root), 0);
  delete root;
}

TEST(SimplifyFully, GoesOnToTheEnd) {
  ExpectEnd("(x-5)+2", "x-3");
  ExpectEnd("2*(x+1)-3*(x-y)*2", "2*x+2-(2*(3*x)-2*(3*y))");
  ExpectEnd("(x+1)*(x-1)", "x*x-x+x-1");
  ExpectEnd(Repeated("1", 500, "+"), "500");
  ExpectEnd("x" + Repeated("+1", 500, ""), "x+500");
}

// Thirty factors would multiply out to 2^30 terms.
TEST(SimplifyFully, StopsBeforeTheTreeBursts) {
  KVN_expression* root = Parsed(Repeated("(x+y)", 30, "*")).release();
  AssignVariable(*root, "x", 0.25);
  AssignVariable(*root, "y", 0.5);
  const double before = root->Evaluate();
  constexpr int kMostNodes = 10000;
  SimplifyFully(root, kMostNodes);
  EXPECT_GT(CountNodes(root), kMostNodes);
  EXPECT_LT(CountNodes(root), 3 * kMostNodes);
  EXPECT_NEAR(SignedValue(*root), before, 1e-9 * before);
  delete root;
}

TEST(Simplify, WithoutMemoryTheValueStays) {
  for (const StepCase& c : kSteps) {
    if (c.after == nullptr) continue;
    SCOPED_TRACE(c.before);
    FailEachAllocation([&](int n) {
      Tree tree = Parsed(c.before);
      for (const char* name : {"a", "b", "c", "d", "x", "y"}) AssignVariable(*tree, name, 1.5);
      const double value = SignedValue(*tree);
      bool failed = false;
      (void)RunFailing(n, failed, [&] { return SimplifyOnce(tree) ? 1 : 0; });
      // Where a rule can't get its node, a later one that needs none may match.
      if (tree->IsDeterministic() && Printed(*tree) != c.after) {
        EXPECT_NEAR(SignedValue(*tree), value, 1e-12);
      }
      return failed;
    });
  }
}

/// Random formulas. The exact ones use small dyadic numbers, so that no operation rounds and every
/// rewritten form has the same value to the bit; the rough ones round, but only add, multiply and
/// divide positive numbers, so that no error is magnified.
class FormulaMaker {
 public:
  FormulaMaker(std::uint64_t seed, bool exactNumbers) : random(seed), exact(exactNumbers) {}

  KVN_expression* New(int levels) {
    KVN_expression* made = levels == 0 || Below(6) == 0 ? NewLeaf() : NewInner(levels - 1);
    if (exact && Below(4) == 0) made->sign = -1;
    return made;
  }

 private:
  int Below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

  KVN_expression* NewLeaf() {
    if (Below(2) == 0) {
      const char* names[] = {"p", "q", "r", "s"};
      return new KVN_variable(names[Below(4)]);
    }
    const double exactValues[] = {0, 1, 2, 3, 0.5, 4};
    return new KVN_constant(exact ? exactValues[Below(6)] : 0.1 + 0.37 * Below(20));
  }

  /// Powers of two, for the exact formulas.
  KVN_expression* NewDivisor(int levels) {
    if (!exact) return New(levels);
    KVN_expression* made = nullptr;
    if (Below(2) == 0) {
      made = new KVN_variable(Below(2) == 0 ? "p" : "q");
    } else {
      const double values[] = {0.5, 1, 2, 4};
      made = new KVN_constant(values[Below(4)]);
    }
    if (Below(4) == 0) made->sign = -1;
    return made;
  }

  KVN_expression* NewInner(int levels) {
    switch (Below(10)) {
      case 0:
        return new KVN_operatorDivide(New(levels), NewDivisor(levels));
      case 1:
        return new KVN_operatorExp(New(levels), new KVN_constant(Below(3)));
      case 2:
        return NewChoice(levels);
      case 3:
        return NewCall(levels);
      case 4:
      case 5:
      case 6:
        return new KVN_operatorMultiply(New(levels), New(levels));
      case 7:
        if (exact) return new KVN_operatorMinus(New(levels), New(levels));
        [[fallthrough]];
      default:
        return new KVN_operatorPlus(New(levels), New(levels));
    }
  }

  KVN_expression* NewChoice(int levels) {
    if (!exact) return New(levels);  // a comparison would see the last bit
    const int kind = KVN_KIND_LT + Below(6);
    KVN_expression* test = NewBinaryOperator(kind, New(levels), New(levels));
    if (Below(2) == 0) return test;
    return new KVN_operatorConditional(test, New(levels), New(levels));
  }

  KVN_expression* NewCall(int levels) {
    const char* names[] = {"Max", "Sum", "Min"};
    auto* call = new KVN_function(FindFunction(names[Below(3)]));
    const int count = 2 + Below(2);
    for (int i = 0; i < count; i++) call->args[i] = New(levels);
    return call;
  }

  std::mt19937_64 random;
  bool exact;
};

/// Whether a rule that is known to change the value would match at the node, or the value is out of
/// the range where the arithmetic of the test is exact.
bool IsExceptional(const KVN_expression& node, double value) {
  if (!std::isfinite(value) || std::fabs(value) > 1e6) return true;
  const int kind = node.GetKind();
  if (kind < KVN_KIND_PLUS || kind == KVN_KIND_CONDITIONAL) return false;
  auto& binary = static_cast<const KVN_binaryOperator&>(node);
  const bool folds = IsConstant(*binary.left) && IsConstant(*binary.right);
  if (folds) return kind >= KVN_KIND_EXP && node.sign < 0 && value != 0.0;
  if (kind == KVN_KIND_MULTIPLY) return IsConstantOf(*binary.right, 0.0);
  if (kind == KVN_KIND_EXP) return node.sign < 0 && IsConstantOf(*binary.right, 0.0);
  return kind == KVN_KIND_DIVIDE && binary.left->GetKind() == KVN_KIND_VARIABLE &&
         binary.right->GetKind() == KVN_KIND_VARIABLE &&
         static_cast<const KVN_variable&>(*binary.left).name ==
             static_cast<const KVN_variable&>(*binary.right).name &&
         binary.left->sign != binary.right->sign;
}

/// The signed value of a tree, computed once for each node; sets `exceptional` if one is.
double CheckedValue(const KVN_expression& node, bool& exceptional) {
  double values[KVN_MAX_ARGUMENTS];
  int count = 0;
  for (int i = 0; i < GetChildPlaces(node) && GetChild(node, i) != nullptr; i++) {
    values[count++] = CheckedValue(*GetChild(node, i), exceptional);
  }
  double value = 0.0;
  if (count == 0) {
    value = node.Evaluate();
  } else if (node.GetKind() == KVN_KIND_FUNCTION) {
    value = static_cast<const KVN_function&>(node).descriptor->evaluate(values, count);
  } else if (node.GetKind() == KVN_KIND_CONDITIONAL) {
    value = values[0] == 0.0 ? values[2] : values[1];
  } else {
    value = static_cast<const KVN_binaryOperator&>(node).Apply(values[0], values[1]);
  }
  exceptional = exceptional || IsExceptional(node, value);
  return value * node.sign;
}

/// Checks each step up to one where a documented exception is at hand. Returns the steps.
int CheckSteps(Tree& tree) {
  const double value = SignedValue(*tree);
  const std::string text = Printed(*tree);
  for (int steps = 0; steps < 100; steps++) {
    bool exceptional = false;
    const double now = CheckedValue(*tree, exceptional);
    const bool bothAreNone = std::isnan(now) && std::isnan(value);
    EXPECT_TRUE(now == value || bothAreNone || std::fabs(now - value) <= 1e-9 * std::fabs(value))
        << text << " became " << Printed(*tree);
    if (exceptional || CountNodes(tree.get()) > 100 || !SimplifyOnce(tree)) return steps;
  }
  ADD_FAILURE() << text << " has no end";
  return 0;
}

TEST(Simplify, KeepsTheValueOfRandomFormulas) {
  int checkedSteps = 0;
  for (const bool exact : {true, false}) {
    FormulaMaker maker(/*seed=*/20240607, exact);
    for (int i = 0; i < FewerIfSanitized(50000) && !::testing::Test::HasFailure(); i++) {
      Tree tree(maker.New(2 + i % 3));
      AssignVariable(*tree, "p", exact ? 2.0 : 0.7);
      AssignVariable(*tree, "q", exact ? -0.5 : 1.3);
      AssignVariable(*tree, "r", exact ? 3.0 : 2.9);
      AssignVariable(*tree, "s", exact ? -1.0 : 0.11);
      checkedSteps += CheckSteps(tree);
    }
  }
  EXPECT_GT(checkedSteps, FewerIfSanitized(140000));
}

}  // namespace
