#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "expressions/variableVisitor.h"
#include "tests/expressions/expressionTools.h"

namespace {

struct IsolateCase {
  const char* left;
  const char* lhs;  // null: refused
  const char* rhs;
};

// `left` = r, with the variable x.
// clang-format off: version 14 stumbles over the comments in the rows.
const IsolateCase kCases[] = {
    {"x+b", "x", "r-b"},
    {"b+2*x", "2*x", "r-b"},
    {"x-b", "x", "r+b"},
    {"b-x", "x", "b-r"},
    {"x*b", "x", "r/b"},
    {"b*x", "x", "r/b"},
    {"x/b", "x", "r*b"},
    {"b/x", "x", "b/r"},
    {"x^(b+1)", "x", "r^(1/(b+1))"},
    {"b^x", "x", "Ln(r)/Ln(b)"},
    {"Sin(x+1)", "x+1", "Asin(r)"},
    {"Asin(x)", "x", "Sin(r)"},
    {"Cos(x)", "x", "Acos(r)"},
    {"Acos(x)", "x", "Cos(r)"},
    {"Tan(x)", "x", "Atan(r)"},
    {"Atan(x)", "x", "Tan(r)"},
    {"Exp(x)", "x", "Ln(r)"},
    {"Ln(x)", "x", "Exp(r)"},
    {"Sqr(x)", "x", "Sqrt(r)"},
    {"Sqrt(x)", "x", "Sqr(r)"},
    {"Pow10(x)", "x", "Log10(r)"},
    {"Log10(-x)", "-x", "Pow10(r)"},
    {"Log(x,b)", "x", "b^r"},
    {"Log(b,x)", "x", "b^(1/r)"},
    {"Log(b,2)", "Log(b,2)", "r"},  // true without a change, meant
    {"b+2", nullptr, nullptr},
    {"Sin(b)", nullptr, nullptr},
    {"Abs(x)", nullptr, nullptr},
    {"Max(x,2)", nullptr, nullptr},
    {"x<b", nullptr, nullptr},
    {"x ? b : 2", nullptr, nullptr},
    {"x", nullptr, nullptr},
    {"2", nullptr, nullptr},
    {"Normal(x,1)", nullptr, nullptr},
};

// clang-format on

/// The equation `lhs = rhs`.
struct Equation {
  explicit Equation(const char* left) : lhs(Parsed(left).release()), rhs(Parsed("r").release()) {}
  Equation(const Equation&) = delete;
  Equation& operator=(const Equation&) = delete;
  ~Equation() {
    delete lhs;
    delete rhs;
  }
  bool Isolate() { return lhs->Isolate("x", lhs, rhs); }

  KVN_expression* lhs;
  KVN_expression* rhs;
};

TEST(Isolate, MovesOneLayerAcross) {
  for (const IsolateCase& c : kCases) {
    SCOPED_TRACE(c.left);
    Equation equation(c.left);
    EXPECT_EQ(equation.Isolate(), c.lhs != nullptr);
    EXPECT_EQ(Printed(*equation.lhs), c.lhs != nullptr ? c.lhs : c.left);
    EXPECT_EQ(Printed(*equation.rhs), c.rhs != nullptr ? c.rhs : "r");
  }
}

// The numbers: what is computed for r = f(x) gives x again.
TEST(Isolate, Inverts) {
  for (const IsolateCase& c : kCases) {
    if (c.lhs == nullptr || std::string(c.lhs) == c.left) continue;
    SCOPED_TRACE(c.left);
    Equation equation(c.left);
    const double x = std::string(c.left) == "Log10(-x)" ? -0.3 : 0.3;
    AssignVariable(*equation.lhs, "x", x);
    AssignVariable(*equation.lhs, "b", 1.7);
    AssignVariable(*equation.rhs, "r", equation.lhs->Evaluate());
    ASSERT_TRUE(equation.Isolate());
    EXPECT_NEAR(SignedValue(*equation.lhs), SignedValue(*equation.rhs), 1e-12);
  }
}

}  // namespace
