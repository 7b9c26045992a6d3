#include "expressions/equation.h"

#include <limits>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"

namespace {

using Ids = std::vector<std::string>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<int> ParentsOf(const KVN_network& network, int handle) {
  const KVN_intArray& parents = network.GetParents(handle);
  return std::vector<int>(parents.begin(), parents.end());
}

// y with the possible parents a, b, c, and d below y.
struct EquationNet {
  KVN_network network;
  int a = AddEquation(network, "a");
  int b = AddEquation(network, "b");
  int c = AddEquation(network, "c");
  int y = AddEquation(network, "y");
  int d = AddEquation(network, "d", "d = y");
  KVN_equation& node = EquationNode(network, y);
};

}  // namespace

TEST(Equation, ArcsEditTheSumAndTheEquationEditsTheArcs) {
  EquationNet net;
  ASSERT_EQ(net.network.AddArc(net.a, net.y, 0), 0);
  EXPECT_EQ(TextOf(net.network, net.y), "y=a");
  ASSERT_EQ(net.network.AddArc(net.b, net.y, 0), 0);
  EXPECT_EQ(TextOf(net.network, net.y), "y=a+b");
  ASSERT_EQ(net.node.SetEquation("y = Normal(c, 1) * a + 2"), 0);
  EXPECT_EQ(ParentsOf(net.network, net.y), (std::vector<int>{net.c, net.a}));
  // A removed arc takes the whole formula along.
  ASSERT_EQ(net.network.RemoveArc(net.c, net.y, 0), 0);
  EXPECT_EQ(TextOf(net.network, net.y), "y=a");
  ASSERT_EQ(net.network.RemoveArc(net.a, net.y, 0), 0);
  EXPECT_EQ(TextOf(net.network, net.y), "y=0");
  ASSERT_EQ(net.node.SetEquation("y = 3"), 0);
  EXPECT_TRUE(ParentsOf(net.network, net.y).empty());
}

TEST(Equation, OnlyEquationNodesMayBeParents) {
  EquationNet net;
  const int chance = AddNodeBelow(net.network, KVN_TYPE_CPT, "chance", 2, {});
  const LogWatch log;
  EXPECT_EQ(net.network.AddArc(chance, net.y, 0), KVN_NOT_APPLICABLE);
  EXPECT_EQ(log.Texts(), (Ids{"Only KVN_equation or KVN_equationSCC can be the parents.",
                              "Arc rejected by child node"}));
  EXPECT_EQ(TextOf(net.network, net.y), "y=0");
  // In a formula it passes, but the arc doesn't.
  EXPECT_EQ(net.node.SetEquation("y = a + chance"), 0);
  EXPECT_EQ(ParentsOf(net.network, net.y), (std::vector<int>{net.a}));
}

TEST(Equation, RefusedTextLeavesEquationAndArcs) {
  const struct {
    const char* text;
    const char* error;
    int position;
  } cases[] = {
      {"", "Equation cannot be empty.", -7},
      {"y", "Toplevel '=' sign missing in equation", -7},
      {"(a=b)+1", "Toplevel '=' sign missing in equation", -7},
      {"y = a +", "Factor expected", 7},
      {"y = z", "Unknown node identifier: z", -7},
      {"y = Foo(a)", "Unknown function: Foo", 8},
      {"y = a + d",
       "Node d can't be used in equation for current node, because it would result in a cycle.",
       -7},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EquationNet net;
    ASSERT_EQ(net.node.SetEquation("y = b"), 0);
    const LogWatch log;
    std::string error;
    int position = -7;
    EXPECT_EQ(net.node.SetEquation(c.text, &position, &error), KVN_REFUSED);
    EXPECT_EQ(error, c.error);
    EXPECT_EQ(position, c.position);
    EXPECT_EQ(log.Texts(), (Ids{c.error}));
    EXPECT_EQ(TextOf(net.network, net.y), "y=b");
    EXPECT_EQ(ParentsOf(net.network, net.y), (std::vector<int>{net.b}));
    EXPECT_EQ(net.node.SetEquation(c.text), KVN_REFUSED) << "null pointers are allowed";
  }
}

TEST(Equation, MayNameItselfAndNothingElse) {
  EquationNet net;
  EXPECT_EQ(net.node.SetEquation("2*y + y = 3"), 0);
  EXPECT_TRUE(ParentsOf(net.network, net.y).empty());
  EXPECT_EQ(net.node.SetEquation("1 = 2"), 0) << "it needn't be named";
  Ids names;
  EXPECT_TRUE(net.node.ValidateEquation("y = b + a*b", &names, nullptr, nullptr));
  EXPECT_EQ(names, (Ids{"y", "b", "a"}));
}

TEST(Equation, ChangedEquationMakesItAndWhatFollowsStale) {
  EquationNet net;
  for (int handle : {net.a, net.y, net.d}) EquationValueOf(net.network, handle).SetPoint(1.0);
  ASSERT_EQ(net.node.SetEquation("y = 4"), 0);
  EXPECT_TRUE(net.network.ValueOf(net.a)->IsValueValid());
  EXPECT_FALSE(net.network.ValueOf(net.y)->IsValueValid());
  EXPECT_FALSE(net.network.ValueOf(net.d)->IsValueValid());
}

TEST(Equation, RenameIsFollowedInTheNodeAndItsChildren) {
  EquationNet net;
  ASSERT_EQ(net.node.SetEquation("y = a*y + a"), 0);
  ASSERT_EQ(net.network.GetNode(net.y)->SetId("why"), 0);
  ASSERT_EQ(net.network.GetNode(net.a)->SetId("aye"), 0);
  EXPECT_EQ(TextOf(net.network, net.y), "why=aye*why+aye");
  EXPECT_EQ(TextOf(net.network, net.d), "d=why");
}

TEST(Equation, IntervalsAreNamedOnceAndRise) {
  const struct {
    const char* name;
    std::vector<KVN_discInterval> list;  // on a range of 0 to 10
    int result;
  } cases[] = {
      {"two", {{"low", 4}, {"high", 10}}, 0},
      {"last top is forced", {{"low", 4}, {"high", -99}}, 0},
      {"one", {{"low", 10}}, KVN_REFUSED},
      {"none", {}, KVN_REFUSED},
      {"name repeats", {{"low", 4}, {"low", 10}}, KVN_ILLEGAL_ID},
      {"bad name", {{"1", 4}, {"high", 10}}, KVN_ILLEGAL_ID},
      {"no name", {{"", 4}, {"high", 10}}, KVN_ILLEGAL_ID},
      {"equal tops", {{"a", 4}, {"b", 4}, {"c", 10}}, KVN_LENGTH_MISMATCH},
      {"falling tops", {{"a", 5}, {"b", 4}, {"c", 10}}, KVN_LENGTH_MISMATCH},
      {"first at the bottom", {{"a", 0}, {"b", 10}}, KVN_LENGTH_MISMATCH},
      {"last but one at the top", {{"a", 3}, {"b", 10}, {"c", 10}}, KVN_LENGTH_MISMATCH},
      {"no number", {{"a", kNaN}, {"b", 3}, {"c", 10}}, KVN_LENGTH_MISMATCH},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    KVN_equation& node = EquationNode(network, AddEquation(network, "x"));
    node.SetBounds(0.0, 10.0);
    EXPECT_EQ(node.SetDiscIntervals(c.list), c.result);
    EXPECT_EQ(node.GetDiscIntervals().size(), c.result == 0 ? c.list.size() : 0u);
    if (c.result != 0) continue;
    EXPECT_EQ(node.GetDiscIntervals().back().upper, 10.0);
  }
}

TEST(Equation, IntervalsAreReadWithTheBoundsOfTheRange) {
  KVN_network network;
  const int x = AddEquation(network, "x");
  KVN_equation& node = EquationNode(network, x);
  double low = 0.0;
  double high = 0.0;
  EXPECT_EQ(node.GetInterval(0, low, high), KVN_NOT_APPLICABLE);
  Discretise(network, x, 0.0, {2, 5, 10});
  // The range may move under the intervals: its ends are always those of the first and the last.
  node.SetBounds(-1.0, 20.0);
  const double edges[] = {-1.0, 2.0, 5.0, 20.0};
  for (int i = 0; i < 3; i++) {
    ASSERT_EQ(node.GetInterval(i, low, high), 0);
    EXPECT_EQ(low, edges[i]);
    EXPECT_EQ(high, edges[i + 1]);
  }
  EXPECT_EQ(node.GetInterval(3, low, high), KVN_REFUSED);
  EXPECT_EQ(node.GetInterval(-1, low, high), KVN_REFUSED);
}

TEST(Equation, NewIntervalsDropTheTablesOfParentsAndNotOfChildren) {
  EquationNet net;
  ASSERT_EQ(net.node.SetEquation("y = a"), 0);
  for (int handle : {net.a, net.y, net.d}) {
    Discretise(net.network, handle, 0.0, {1, 2});
  }
  for (int handle : {net.a, net.y, net.d}) {
    ASSERT_EQ(EquationNode(net.network, handle).Discretize(0, nullptr), 0);
  }
  Discretise(net.network, net.y, 0.0, {1.5, 2});
  EXPECT_EQ(EquationNode(net.network, net.a).GetDiscreteTable(), nullptr);
  EXPECT_EQ(net.node.GetDiscreteTable(), nullptr);
  EXPECT_NE(EquationNode(net.network, net.d).GetDiscreteTable(), nullptr);
}

TEST(Equation, CopyHasEverythingAndAnotherKindGivesNothing) {
  EquationNet net;
  ASSERT_EQ(net.node.SetEquation("y = a"), 0);
  Discretise(net.network, net.y, 0.0, {1, 2});
  ASSERT_EQ(net.node.Discretize(0, nullptr), 0);
  const KVN_network copy(net.network);
  KVN_equation& taken = EquationNode(copy, net.y);
  EXPECT_EQ(TextOf(copy, net.y), "y=a");
  EXPECT_EQ(taken.GetUpperBound(), 2.0);
  EXPECT_EQ(taken.GetDiscIntervals().size(), 2u);
  EXPECT_NE(taken.GetDiscreteTable(), nullptr);
  EXPECT_EQ(taken.GetNetwork(), &copy);

  const int chance = AddNodeBelow(net.network, KVN_TYPE_CPT, "chance", 2, {});
  EXPECT_EQ(taken.Assign(*net.network.DefinitionOf(chance)), KVN_REFUSED);
  KVN_node& node = *net.network.GetNode(chance);
  EXPECT_EQ(node.ChangeType(KVN_TYPE_EQUATION), KVN_REFUSED);
  EXPECT_EQ(TextOf(net.network, chance), "chance=0");
  EXPECT_TRUE(node.IsReady());
}
