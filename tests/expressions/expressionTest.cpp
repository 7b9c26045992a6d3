#include "expressions/expression.h"

#include <gtest/gtest.h>

#include <cmath>
#include <new>
#include <string>
#include <vector>

#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"
#include "foundation/random.h"
#include "tests/expressions/expressionTools.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"

namespace {

struct ValueCase {
  const char* text;
  double value;  // with a = 2, b = 5, z = 0
};

const ValueCase kValues[] = {
    {"a+b*a", 12},        {"-(a+b)", -7},
    {"a-b", -3},          {"b/a", 2.5},
    {"-a^2", 4},          {"-(a^2)", -4},
    {"a^b^2", 1024},      {"a<b", 1},
    {"b<b", 0},           {"b<=b", 1},
    {"a>b", 0},           {"b>=b", 1},
    {"a=b", 0},           {"a<>b", 1},
    {"-(a=a)", -1},       {"z?a:b", 5},
    {"a?z:b", 0},         {"-(a?a:b)", -2},
    {"z/z?a:b", 2},      // not a number isn't 0
    {"0.1+0.2=0.3", 0},  // no tolerance
    {"-Max(a,-b,z)", -2}, {"Sum(-a,b,-(a*b))", -7},
};

TEST(Expression, Evaluates) {
  for (const ValueCase& c : kValues) {
    SCOPED_TRACE(c.text);
    const Tree tree = Parsed(c.text);
    ASSERT_NE(tree, nullptr);
    AssignVariable(*tree, "a", 2);
    AssignVariable(*tree, "b", 5);
    AssignVariable(*tree, "z", 0);
    EXPECT_EQ(SignedValue(*tree), c.value);
  }
}

TEST(Expression, EvaluatesOnlyTheSelectedBranch) {
  const Tree tree = Parsed("x=0 ? 1 : Uniform(0,1)");
  ResetGenerators();
  AssignVariable(*tree, "x", 0);
  EXPECT_EQ(SignedValue(*tree), 1.0);
  EXPECT_EQ(KVN_functionRandom().GetState(), 0u);
}

struct PrintCase {
  const char* text;
  const char* printed;  // null: the same
};

const PrintCase kPrints[] = {
    {"a-(b-c)", nullptr},
    {"(a-b)-c", "a-b-c"},
    {"a+(b+c)", nullptr},
    {"a*(b/c)", nullptr},
    {"(a*b)/c", "a*b/c"},
    {"(a+b)*c", nullptr},
    {"(a*b)+c", "a*b+c"},
    {"(a^b)^c", "a^b^c"},
    {"a^(b^c)", nullptr},
    {"(a<b)=(c>=d)", "a<b=c>=d"},
    {"a=(b=c)", nullptr},
    {"-a^2", nullptr},
    {"-(a^2)", nullptr},
    {"(-(a+b))*c", "(-(a+b))*c"},
    {"a - -b", "a--b"},
    {"-Max(-a,(b+c),-(b*c))", "-Max(-a,b+c,-(b*c))"},
    {"pi()*exp(x)", "Pi()*Exp(x)"},
    {"a+b?c-1:d*2", "a+b ? c-1 : d*2"},
    {"a?b:c?d:e", "(a ? b : c) ? d : e"},
    {"(a?b:c)+1", "(a ? b : c)+1"},
    {"a?b?c:d:e", "a ? b ? c : d : e"},
    {"-(a?b:c)", "-(a ? b : c)"},
    {"1.23456789", "1.23457"},  // six digits, meant
    {"0.00001*1e300*100000*1e6", "1e-05*1e+300*100000*1e+06"},
};

TEST(Expression, PrintsWithTheFewestParentheses) {
  for (const PrintCase& c : kPrints) {
    SCOPED_TRACE(c.text);
    const Tree tree = Parsed(c.text);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(Printed(*tree), c.printed != nullptr ? c.printed : c.text);
  }
}

// Meant, and a trap: the last branch gets no parentheses, which the parser would need there.
TEST(Expression, PrintsAConditionalInTheLastBranchWithoutParentheses) {
  EXPECT_EQ(Printed(*Parsed("a?b:(c?d:e)")), "a ? b : c ? d : e");
}

TEST(Expression, CloneIsDeep) {
  const Tree tree = Parsed("-(x>1 ? Sum(-x,2)^y : Normal(x,-y))/Pi()");
  AssignVariable(*tree, "y", 3);
  AssignVariable(*tree, "x", 5);
  tree->sign = -1;
  const Tree copy(tree->Clone());
  const std::string text = Printed(*tree);
  AssignVariable(*tree, "x", 7);
  RenameVariable(*tree, "x", "w");
  EXPECT_EQ(Printed(*copy), text);
  EXPECT_EQ(copy->Evaluate(), 27.0 / 3.141592653589793);  // -((-5+2)^3)/pi
}

TEST(Expression, CloneKeepsUnknownFunctions) {
  KVN_unknownFunction call("Mystery");
  EXPECT_EQ(Printed(call), "Mystery()");
  call.args[0] = Parsed("x+1").release();
  call.args[1] = Parsed("-y").release();
  const Tree copy(call.Clone());
  EXPECT_EQ(Printed(*copy), "Mystery(x+1,-y)");
  EXPECT_EQ(static_cast<KVN_function&>(*copy).GetArgumentCount(), 2);
  EXPECT_TRUE(std::isnan(copy->Evaluate()));
  KVN_function without(nullptr);
  const Tree other(without.Clone());
  EXPECT_EQ(Printed(*other), "()");
  EXPECT_TRUE(std::isnan(other->Evaluate()));
  KVN_expression* slot = other.get();
  EXPECT_FALSE(other->Isolate("x", slot, slot));
}

TEST(Expression, VisitsVariablesFromLeftToRight) {
  const Tree tree = Parsed("x+y*x>u ? Max(b,-a) : (Normal(d,c)^x)");
  std::vector<std::string> names = {"kept"};
  GetVariables(*tree, names);
  EXPECT_EQ(names, (std::vector<std::string>{"kept", "x", "y", "u", "b", "a", "d", "c"}));
  EXPECT_EQ(CountVariable(*tree, "x"), 3);
  EXPECT_EQ(CountVariable(*tree, "X"), 0);
  names.clear();
  GetVariables(*Parsed("Pi+inf+nan+Pi()"), names);
  EXPECT_EQ(names, (std::vector<std::string>{"Pi", "inf", "nan"}));
  RenameVariable(*tree, "x", "y");
  EXPECT_EQ(CountVariable(*tree, "y"), 4);
}

TEST(Expression, ReportsDistributions) {
  const Tree tree = Parsed("Normal(Uniform(0,1),1)+Max(1,Beta(2,2))*(x ? 1 : 1+Uniform(3,4))");
  std::vector<KVN_expression**> found;
  KVN_expression* root = tree.get();
  root->CollectDistributions(&root, found);
  ASSERT_EQ(found.size(), 3u);  // not the one inside of Normal
  EXPECT_EQ(Printed(**found[0]), "Normal(Uniform(0,1),1)");
  EXPECT_EQ(Printed(**found[1]), "Beta(2,2)");
  EXPECT_EQ(Printed(**found[2]), "Uniform(3,4)");
  EXPECT_FALSE(tree->IsDeterministic());
  EXPECT_TRUE(Parsed("Max(1,x)*(x?1:2)")->IsDeterministic());
  const Tree alone = Parsed("Normal(0,1)");
  KVN_expression* slot = alone.get();
  found.clear();
  slot->CollectDistributions(&slot, found);
  EXPECT_EQ(found, std::vector<KVN_expression**>{&slot});
}

// Meant: each of the three children of a conditional goes by the slot of the condition.
TEST(Expression, ReportsDistributionsInBranchesWithTheSlotOfTheCondition) {
  const Tree tree = Parsed("x ? Normal(0,1) : Uniform(0,1)");
  KVN_expression* root = tree.get();
  std::vector<KVN_expression**> found;
  root->CollectDistributions(&root, found);
  KVN_expression** slot = &static_cast<KVN_operatorConditional&>(*tree).condition;
  EXPECT_EQ(found, (std::vector<KVN_expression**>{slot, slot}));
}

/// x+1+1+..., nested to the left or to the right. Deeper than the parser would make it.
KVN_expression* NewDeepSum(int levels, bool toTheLeft) {
  KVN_expression* tree = new KVN_variable("x");
  for (int i = 1; i < levels; i++) {
    KVN_expression* one = new KVN_constant(1);
    tree = toTheLeft ? new KVN_operatorPlus(tree, one) : new KVN_operatorPlus(one, tree);
  }
  return tree;
}

/// 50,000 levels of each kind of node with children, around a variable.
KVN_expression* NewDeepMixture() {
  const KVN_functionRow* sum = FindFunction("Sum");
  KVN_expression* tree = new KVN_variable("x");
  for (int i = 0; i < 50000; i++) {
    if (i % 2 == 0) {
      tree = new KVN_operatorConditional(new KVN_variable("x"), tree, new KVN_constant(0));
    } else {
      auto* call = new KVN_function(sum);
      call->args[0] = new KVN_constant(1);
      call->args[1] = tree;
      tree = call;
    }
    tree->sign = i % 4 == 0 ? -1 : 1;
  }
  return tree;
}

void UseDeepTrees() {
  for (const bool toTheLeft : {true, false}) {
    Tree tree(NewDeepSum(50000, toTheLeft));
    AssignVariable(*tree, "x", 1);
    EXPECT_EQ(SignedValue(*tree), 50000.0);
    EXPECT_EQ(SignedValue(*Tree(tree->Clone())), 50000.0);
    EXPECT_EQ(GetDepth(tree.get()), 50000);
    EXPECT_EQ(CountNodes(tree.get()), 99999);
    EXPECT_TRUE(tree->IsDeterministic());
    EXPECT_EQ(Printed(*tree).substr(0, 6), toTheLeft ? "x+1+1+" : "1+(1+(");
    KVN_expression* root = tree.release();
    EXPECT_TRUE(root->Simplify(root));
    EXPECT_EQ(SignedValue(*root), 50000.0);
    delete root;
  }
  const Tree tree(NewDeepMixture());
  AssignVariable(*tree, "x", 1);
  // From the inside: -1, 0, 0, 1 and, every four levels, the same again.
  EXPECT_EQ(SignedValue(*tree), 1.0);
}

TEST(Expression, DeepTreesNeedNoStack) { RunInSmallStack(UseDeepTrees); }

// A walk with frames has its arguments on the heap: where levels got lost, even a small tree has.
TEST(Expression, AnExceptionGivesTheLevelsBack) {
  if (kIsSanitized) GTEST_SKIP() << "the sanitizers keep the arguments of all calls on the heap";
  static const double* seen = nullptr;
  const KVN_functionRow row = {"Probe", 1,
                               [](const double* args, int) {
                                 if (args[0] == 0.0) throw std::bad_alloc();
                                 seen = args;
                                 return 1.0;
                               },
                               nullptr, nullptr};
  auto* call = new KVN_function(&row);
  call->args[0] = new KVN_variable("x");
  const Tree tree(new KVN_operatorConditional(new KVN_operatorPlus(call, new KVN_constant(1)),
                                              new KVN_constant(1), new KVN_constant(0)));
  std::vector<const double*> places;
  for (int i = 0; i < 302; i++) {
    AssignVariable(*tree, "x", i == 0 || i == 301);
    try {
      (void)tree->Evaluate();
      places.push_back(seen);
    } catch (const std::bad_alloc&) {
    }
  }
  ASSERT_EQ(places.size(), 2u);
  EXPECT_EQ(places[0], places[1]);
}

}  // namespace
