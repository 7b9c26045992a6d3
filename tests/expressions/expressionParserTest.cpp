#include "expressions/expressionParser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "expressions/expressionWalk.h"
#include "expressions/function.h"
#include "tests/expressions/expressionTools.h"
#include "tests/support/failingAllocation.h"

namespace {

struct ErrorCase {
  const char* text;
  const char* message;
  int position;  // past the token that was seen last
};

const ErrorCase kErrors[] = {
    {"", "Empty expression", 0},
    {"  \t", "Empty expression", 3},
    {"$", "Invalid token", 1},
    {"1 + _a", "Invalid token", 5},
    {"1 + .", "Invalid token", 4},
    {"1 +", "Factor expected", 3},
    {"1 + * 2", "Factor expected", 5},
    {"+1", "Factor expected", 1},
    {"Sqrt()", "Factor expected", 6},
    {"Max(1,)", "Factor expected", 7},
    {"(1", "')' expected", 2},
    {"(1 2)", "')' expected", 4},
    {"foo(1)", "Unknown function: foo", 4},
    {"Sqrt(4,5)", "')' expected in a function call", 7},
    {"Pi(1)", "')' expected in a function call", 4},
    {"Sqrt(4", "')' expected in a function call", 6},
    {"Atan2(1 2)", "Comma expected in a function call", 9},
    {"Max(1 2)", "Comma expected in a function call", 7},
    {"Max(1,2", "Comma expected in a function call", 7},
    {"Atan2(1)", "Too few parameters in function call", 8},
    {"Max(1)", "Too few parameters in vararg function call", 6},
    {"Switch(1,2) + 1", "Too few parameters in vararg function call", 13},
    {"Max()", "Too few parameters in vararg function call", 5},
    {"a ? b", "':' expected", 5},
    {"a ? b, c", "':' expected", 6},
    {"2 3", "Invalid expression", 3},
    {"1.2.3", "Invalid expression", 5},
    {"a)", "Invalid expression", 2},
    {"a ? b : c : d", "Invalid expression", 11},
    {"1 $ 2 )", "Invalid token", 3},
};

TEST(ExpressionParser, TellsTheFirstErrorAndItsPlace) {
  for (const ErrorCase& c : kErrors) {
    SCOPED_TRACE(c.text);
    std::string message;
    int position = -1;
    EXPECT_EQ(Tree(ParseExpression(c.text, &position, &message)), nullptr);
    EXPECT_EQ(message, c.message);
    EXPECT_EQ(position, c.position);
  }
}

struct ShapeCase {
  const char* text;
  const char* same;  // with all parentheses
};

const ShapeCase kShapes[] = {
    {"a^b^c", "(a^b)^c"},
    {"-2^3", "(-2)^3"},
    {"-x^2", "(-x)^2"},
    {"2^-3", "2^(-3)"},
    {"--x", "x"},
    {"---x", "-x"},
    {"a-b-c", "(a-b)-c"},
    {"a/b*c", "(a/b)*c"},
    {"a+b*c^d", "a+(b*(c^d))"},
    {"a*b+c", "(a*b)+c"},
    {"a=b=c", "(a=b)=c"},
    {"a<>b>=c<d", "a<>((b>=c)<d)"},
    {"a+b<=c", "(a+b)<=c"},
    {"a?b:c?d:e", "(a?b:c)?d:e"},
    {"a?b?c:d:e", "a?(b?c:d):e"},
    {"a=b?c:d", "(a=b)?c:d"},
    {" 1e3 + .5+0x10 ", "1000+0.5+16"},
    {"sqrt(4)+SQRT(4)", "Sqrt(4)+Sqrt(4)"},
    {"Pi+Pi()", "(Pi)+(Pi())"},
    {"a_1*Bb", "(a_1)*(Bb)"},
};

/// How a tree hangs together, whatever Print makes of it: kind, sign, own text of leaves, children.
std::string Structure(const KVN_expression& node) {
  std::string text = (node.sign < 0 ? "-" : "") + std::to_string(node.GetKind());
  if (GetChildPlaces(node) == 0) return text + "'" + Printed(node) + "'";
  for (int i = 0; i < GetChildPlaces(node) && GetChild(node, i) != nullptr; i++) {
    text += (i == 0 ? "[" : " ") + Structure(*GetChild(node, i));
  }
  return text + "]";
}

TEST(ExpressionParser, Associates) {
  for (const ShapeCase& c : kShapes) {
    SCOPED_TRACE(c.text);
    const Tree tree = Parsed(c.text);
    const Tree same = Parsed(c.same);
    ASSERT_NE(tree, nullptr);
    ASSERT_NE(same, nullptr);
    EXPECT_EQ(Structure(*tree), Structure(*same));
  }
}

TEST(ExpressionParser, TakesThirtyArguments) {
  EXPECT_EQ(ValueOf("Sum(" + Repeated("2", 30, ",") + ")"), 60.0);
  std::string message;
  int position = -1;
  const std::string tooMany = "Sum(" + Repeated("2", 31, ",") + ")";
  EXPECT_EQ(Tree(ParseExpression(tooMany.c_str(), &position, &message)), nullptr);
  EXPECT_EQ(message, "Max parameter count for vararg function call exceeded");
  EXPECT_EQ(position, 64);  // "Sum(", 30 times "2,": past the comma after the thirtieth
}

struct DepthCase {
  const char* name;
  std::string text;
  int place;  // -1: not too deep
};

TEST(ExpressionParser, RefusesWhatIsTooDeep) {
  const auto nested = [](const std::string& open, const std::string& inner,
                         const std::string& close, int count) {
    return Repeated(open, count, "") + inner + Repeated(close, count, "");
  };
  // Past the parenthesis or the branch too many and one token more; terms are counted at the end.
  const DepthCase cases[] = {
      {"parentheses", nested("(", "x", ")", 256), -1},
      {"one more", nested("(", "x", ")", 257), 258},
      {"2,000 parentheses", nested("(", "x", ")", 2000), 258},
      {"2,000 that stay open", nested("(", "", "", 2000), 258},
      {"calls", nested("Sin(", "x", ")", 257), 1029},
      {"branches", nested("x?", "x", ":x", 257), 515},
      {"signs are no depth", nested("-", "x", "", 100001), -1},
      {"terms", Repeated("x", 2000, "+"), -1},
      {"one term more", Repeated("x", 2001, "+"), 4001},
      {"50,000 terms", Repeated("x", 50000, "^"), 99999},
      {"a chain", "x" + Repeated("?x:x", 1999, ""), -1},
      {"a chain too long", "x" + Repeated("?x:x", 2000, ""), 8001},
  };
  for (const DepthCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::string message;
    int place = -1;
    const Tree tree(ParseExpression(c.text.c_str(), &place, &message));
    EXPECT_EQ(tree != nullptr, c.place < 0);
    EXPECT_EQ(message, c.place < 0 ? "" : "Invalid expression");
    EXPECT_EQ(place, c.place);
  }
}

TEST(ExpressionParser, TakesNullForEveryPointer) {
  std::string message;
  EXPECT_EQ(ParseExpression(nullptr, nullptr, &message), nullptr);
  EXPECT_EQ(message, "Empty expression");
  EXPECT_EQ(ParseExpression("1+", nullptr, nullptr), nullptr);
}

TEST(ExpressionParser, WithoutMemoryThereIsAnErrorAndNoLeak) {
  const char* text = "-(a+b*2)^c < 1 ? Max(x,y,Pi()) : Normal(d,e/f)";
  const int failures = FailEachAllocation([&](int n) {
    std::string message;
    FailingAllocation failing(n);
    const Tree tree(ParseExpression(text, nullptr, &message));
    EXPECT_EQ(tree == nullptr, failing.HasFailed());
    EXPECT_EQ(message.empty(), !failing.HasFailed());
    return failing.HasFailed();
  });
  const Tree tree = Parsed(text);
  EXPECT_EQ(failures, CountNodes(tree.get()));
  FailEachAllocation([&](int n) {
    FailingAllocation failing(n);
    const Tree copy(tree->Clone());
    EXPECT_EQ(copy == nullptr, failing.HasFailed());
    return failing.HasFailed();
  });
}

/// A language of its own: names that begin with x, a function Twice, and no Sqrt of a constant.
class OwnParser : public KVN_expressionParser {
 protected:
  bool CheckVariable(const std::string& name, std::string& error) override {
    error = "not mine";
    return name[0] == 'x';
  }
  bool MakeFunction(const std::string& name, KVN_function*& function, int& arity) override {
    if (name != "Twice") return KVN_expressionParser::MakeFunction(name, function, arity);
    function = new KVN_unknownFunction("Double");
    arity = 1;
    return true;
  }
  KVN_function* ValidateFunction(KVN_function* function, std::string& error) override {
    error = "pointless";
    return IsConstant(*function->args[0]) ? nullptr : function;
  }
};

TEST(ExpressionParser, AsksTheDerivedParser) {
  OwnParser parser;
  const Tree tree(parser.Parse("Twice(x1)+Sqrt(x)", nullptr, nullptr));
  ASSERT_NE(tree, nullptr);
  EXPECT_EQ(Printed(*tree), "Double(x1)+Sqrt(x)");
  std::string message;
  int position = -1;
  EXPECT_EQ(parser.Parse("x + y*2", &message, &position), nullptr);
  EXPECT_EQ(message, "Invalid variable 'y': not mine");
  EXPECT_EQ(position, 6);                                            // past the "*"
  EXPECT_EQ(parser.Parse("Sqrt(y)", &message, &position), nullptr);  // there is no argument to see
  EXPECT_EQ(message, "Invalid variable 'y': not mine");
  EXPECT_EQ(parser.Parse("Sqrt(4)+1", &message, &position), nullptr);
  EXPECT_EQ(message, "pointless");
  EXPECT_EQ(position, 8);
}

}  // namespace
