#include "expressions/functionTable.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "tests/expressions/expressionTools.h"

namespace {

struct RowCase {
  const char* name;
  std::vector<double> args;
  double value;
};

// What a calculator or a table of functions gives, to the digits shown.
const RowCase kRows[] = {
    {"Abs", {-2.5}, 2.5},
    {"Acos", {0.5}, 1.0471975511965979},
    {"Acos", {2}, NAN},
    {"And", {1, -3, 0.1}, 1},
    {"And", {1, 0, NAN}, 0},
    {"And", {NAN, 1e-300}, 1},
    {"Asin", {0.5}, 0.5235987755982989},
    {"Atan", {1}, 0.7853981633974483},
    {"Atan2", {1, -1}, 2.356194490192345},
    {"Combin", {5, 2}, 10},
    {"Combin", {-5.9, 2.9}, 10},
    {"Combin", {2, 5}, INFINITY},
    {"Combin", {NAN, 0}, 1},
    {"Combin", {5, NAN}, 1},
    {"Cos", {1}, 0.5403023058681398},
    {"Cosh", {1}, 1.5430806348152437},
    {"Exp", {1}, 2.718281828459045},
    {"Fact", {5.9}, 120},
    {"Fact", {0}, 1},
    {"Fact", {-1}, 0},
    {"Fact", {-0.5}, 1},
    {"Fact", {170}, 7.257415615307994e306},
    {"Fact", {1e300}, INFINITY},
    {"Fact", {NAN}, 0},
    {"FactDouble", {7}, 105},
    {"FactDouble", {8}, 384},
    {"FactDouble", {1}, 1},
    {"FactDouble", {0}, 1},
    {"FactDouble", {-1}, 0},
    {"FactDouble", {1e300}, INFINITY},
    {"FactDouble", {NAN}, 0},
    {"GCD", {-12.9, 18.2}, 6},
    {"GCD", {7, 0}, 7},
    {"GCD", {NAN, 5}, 5},
    {"GCD", {1e300, 1e300}, 9223372036854775807.0},
    {"If", {0, 5, 6}, 6},
    {"If", {0.1, 5, 6}, 5},
    {"If", {NAN, 5, 6}, 5},
    {"LCM", {4, -6}, 12},
    {"LCM", {0, 0}, 0},
    {"LCM", {65536, 32768}, -65536},      // 2^31 wraps, over 2^15
    {"LCM", {100000, 65536}, -63635456},  // -2036334592, over 32
    {"Ln", {10}, 2.302585092994046},
    {"Ln", {0}, -INFINITY},
    {"Log", {8, 2}, 3},
    {"Log10", {1000}, 3},
    {"Max", {1, 3, 2}, 3},
    {"Min", {2, -1, 3}, -1},
    {"Multinomial", {2, 3.9, 1}, 60},
    {"Multinomial", {1e300, 1e300}, NAN},
    {"Or", {0, 0, 0.5}, 1},
    {"Or", {0, -0.0}, 0},
    {"Pi", {}, 3.141592653589793},
    {"Pow10", {-2}, 0.01},
    {"Sign", {-0.5}, -1},
    {"Sign", {3}, 1},
    {"Sign", {NAN}, 0},
    {"Sin", {1}, 0.8414709848078965},
    {"Sinh", {1}, 1.1752011936438014},
    {"Sqr", {-3}, 9},
    {"Sqrt", {2}, 1.4142135623730951},
    {"SqrtPi", {2}, 2.5066282746310002},
    {"Sum", {1, 2, 3.5}, 6.5},
    {"SumSq", {1, -2, 3}, 14},
    {"Switch", {1.9, 10, 20, 30}, 10},
    {"Switch", {3, 10, 20, 30}, 30},
    {"Switch", {-5, 10, 20, 30}, 10},
    {"Switch", {1e300, 10, 20, 30}, 30},
    {"Switch", {NAN, 10, 20, 30}, 10},
    {"Tan", {1}, 1.5574077246549023},
    {"Tanh", {1}, 0.7615941559557649},
    {"Trim", {5, 1, 3}, 3},
    {"Trim", {0, 1, 3}, 1},
    {"Trim", {2, 1, 3}, 2},
    {"Xor", {1, 0, -2, 5}, 1},
    {"Xor", {1, 1}, 0},
};

TEST(FunctionTable, Computes) {
  std::set<std::string> seen;
  for (const RowCase& c : kRows) {
    SCOPED_TRACE(c.name);
    const KVN_functionRow* row = FindFunction(c.name);
    ASSERT_NE(row, nullptr);
    seen.insert(c.name);
    const int count = static_cast<int>(c.args.size());
    EXPECT_TRUE(row->arity < 0 ? count >= -row->arity : count == row->arity);
    const double value = row->evaluate(c.args.data(), count);
    if (std::isnan(c.value)) {
      EXPECT_TRUE(std::isnan(value)) << value;
    } else {
      EXPECT_DOUBLE_EQ(value, c.value);
    }
  }
  EXPECT_EQ(seen.size(), 37u);  // every row that is no distribution
}

TEST(FunctionTable, FindsEveryRowInAnyCase) {
  int distributions = 0;
  for (const KVN_functionRow& row : theFunctionTable) {
    std::string name = row.name;
    EXPECT_EQ(FindFunction(name), &row) << name;
    for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    EXPECT_EQ(FindFunction(name), &row) << name;
    EXPECT_EQ(FindFunction(name + "_"), nullptr) << name;
    EXPECT_EQ(row.density == nullptr, row.moments == nullptr) << name;
    if (row.density != nullptr) distributions++;
  }
  EXPECT_EQ(distributions, 9);
  EXPECT_EQ(FindFunction(""), nullptr);
  EXPECT_EQ(FindFunction("A"), nullptr);
  EXPECT_EQ(FindFunction("Zz"), nullptr);
}

}  // namespace
