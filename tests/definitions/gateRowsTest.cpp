// What the numbers of the two binary gates make of their tables.

#include <gtest/gtest.h>

#include <vector>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "tests/support/builders.h"

namespace {

/// A few roundings of numbers of the order of 1.
constexpr double kGateRounding = 1e-15;

/// A binary gate with parents of its own class, which were added one by one.
template <class Gate>
struct GateNet {
  explicit GateNet(int parentCount) {
    for (int i = 0; i < parentCount; i++) {
      parents.push_back(network.AddNode(Type(), nullptr));
      EXPECT_EQ(network.AddArc(parents.back(), handle, 0), 0);
    }
  }

  static int Type() { return Gate(nullptr, -1).GetType(); }
  Gate& gate() { return static_cast<Gate&>(*network.DefinitionOf(handle)); }

  /// Whether the cells of "True" are these, and those of "False" what is left of 1.
  testing::AssertionResult HasRows(const std::vector<double>& rows) {
    KVN_Dmatrix* table = nullptr;
    EXPECT_EQ(gate().GetDefinition(table), 0);
    std::vector<double> cells;
    for (double p : rows) {
      cells.push_back(p);
      cells.push_back(1 - p);
    }
    return CellsNear(*table, cells, kGateRounding);
  }

  KVN_network network;
  int handle = network.AddNode(Type(), "gate");
  std::vector<int> parents;
};

struct CastCase {
  const char* name;
  std::vector<double> positive, negative;
  double baseline;
  std::vector<double> rows;
};
// Workings, by row:
//   both ways      0: b = 0.5, r = 0.5; 1: a = 0.5, r = -0.5
//   full pushes    00: a = b = 0; 01: b = 0, r = 1; 10: a = 0, r = -1
//   mixed pushes   00: b = 0.8 * 0.5, r = 0.6; 01: a = 0.4, b = 0.8, r = -0.5;
//                  10: a = 0.9, b = 0.5, r = 4 / 9; 11: a = 0.9 * 0.4, r = -0.64
//   out of bounds  0: b = -2, r = 1 + 2; 1: a = -2, r = -2 - 1
const CastCase kCastCases[] = {
    {"no parents", {}, {}, 0.3, {0.3}},
    {"no pushes", {0, 0}, {0, 0}, 0.3, {0.3, 0.3, 0.3, 0.3}},
    {"both ways", {0.5}, {-0.5}, 0.5, {0.75, 0.25}},
    {"full pushes", {1, -1}, {0, 0}, 0.25, {0.25, 1, 0, 0.25}},
    {"mixed pushes", {0.2, 0.5}, {-0.1, -0.6}, 0.4, {0.76, 0.2, 2.0 / 3, 0.144}},
    {"out of bounds", {3}, {-3}, 0.5, {2, -1}},
};

TEST(Cast, RowsFollowTheNumbers) {
  for (const CastCase& c : kCastCases) {
    SCOPED_TRACE(c.name);
    GateNet<KVN_cast> net(static_cast<int>(c.positive.size()));
    EXPECT_EQ(net.gate().SetBaseline(c.baseline), 0);
    EXPECT_EQ(net.gate().SetPositiveWeights(DoublesOf(c.positive)), 0);
    EXPECT_EQ(net.gate().SetNegativeWeights(DoublesOf(c.negative)), 0);
    EXPECT_TRUE(net.HasRows(c.rows));
  }
}

TEST(Cast, NumbersTravelWithTheirParents) {
  // On a baseline of 0 only 0.5 at coordinate 0 of the first and 0.25 at 1 of the second push.
  GateNet<KVN_cast> net(3);
  ASSERT_EQ(net.gate().SetBaseline(0), 0);
  ASSERT_EQ(net.gate().SetPositiveWeights(DoublesOf({0.5, 0, 0})), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.5, 0.5, 0.5, 0, 0, 0, 0}));
  ASSERT_EQ(net.gate().SetNegativeWeights(DoublesOf({0, 0.25, 0})), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.5, 0.625, 0.625, 0, 0, 0.25, 0.25}));
  ASSERT_EQ(net.network.ChangeOrderOfParents(net.handle, IntsOf({2, 0, 1})), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.625, 0, 0.25, 0.5, 0.625, 0, 0.25}));
  ASSERT_EQ(net.network.RemoveArc(net.parents[0], net.handle, 0), 0);
  EXPECT_TRUE(net.HasRows({0, 0.25, 0, 0.25}));
}

TEST(Cast, RecreatedParentsDoNotPush) {
  GateNet<KVN_cast> net(2);
  ASSERT_EQ(net.gate().SetPositiveWeights(DoublesOf({0.5, 0.5})), 0);
  EXPECT_EQ(net.gate().ReCreate(), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.5, 0.5, 0.5}));
  EXPECT_EQ(net.gate().SetNegativeWeights(DoublesOf({0.5})), KVN_REFUSED);
}

struct DemorganCase {
  const char* name;
  std::vector<int> types;
  std::vector<double> weights;
  double prior;
  std::vector<double> rows;
};
// Workings, by row:
//   cause                  0: 0.2 + 0.8 * 0.5
//   inhibitor, then cause  00: raised to 0.75 first, then halved, in spite of the order
//   requirement, barrier   01: 0.5 + 0.5 * 0.2; 10: 0.5 * 0.6; 11: 0.6 * 0.6
const DemorganCase kDemorganCases[] = {
    {"no parents", {}, {}, 0.3, {0.3}},
    {"cause", {2}, {0.5}, 0.2, {0.6, 0.2}},
    {"barrier", {3}, {0.5}, 0.2, {0.2, 0.6}},
    {"inhibitor, then cause", {0, 2}, {0.5, 0.5}, 0.5, {0.375, 0.25, 0.75, 0.5}},
    {"requirement, barrier", {1, 3}, {0.4, 0.2}, 0.5, {0.5, 0.6, 0.3, 0.36}},
    {"unknown type", {7, 2}, {0.9, 0.5}, 0.5, {0.75, 0.5, 0.75, 0.5}},
    {"weight without bound", {2}, {1.5}, 0.5, {1.25, 0.5}},
};

TEST(Demorgan, RowsFollowTheNumbers) {
  for (const DemorganCase& c : kDemorganCases) {
    SCOPED_TRACE(c.name);
    GateNet<KVN_demorgan> net(static_cast<int>(c.types.size()));
    EXPECT_EQ(net.gate().SetParentWeights(DoublesOf(c.weights)), 0);
    EXPECT_EQ(net.gate().SetPriorBelief(c.prior), 0);
    EXPECT_EQ(net.gate().SetParentTypes(IntsOf(c.types)), 0);
    EXPECT_TRUE(net.HasRows(c.rows));
  }
}

TEST(Demorgan, NumbersTravelWithTheirParents) {
  // Causes of 0.1, 0.2 and 0.4 on a prior of 0: a row is 1 minus the product of 1 - w over the
  // parents at coordinate 0.
  GateNet<KVN_demorgan> net(3);
  ASSERT_EQ(net.gate().SetPriorBelief(0), 0);
  ASSERT_EQ(net.gate().SetParentWeights(DoublesOf({0.1, 0.2, 0.4})), 0);
  EXPECT_TRUE(net.HasRows({0.568, 0.28, 0.46, 0.1, 0.52, 0.2, 0.4, 0}));
  ASSERT_EQ(net.network.ChangeOrderOfParents(net.handle, IntsOf({2, 0, 1})), 0);
  EXPECT_TRUE(net.HasRows({0.568, 0.46, 0.52, 0.4, 0.28, 0.1, 0.2, 0}));

  ASSERT_EQ(net.network.RemoveArc(net.parents[0], net.handle, 0), 0);  // 0.4 and 0.2 stay
  EXPECT_EQ(ItemsOf(net.gate().GetParentTypes()), (std::vector<int>{2, 2}));
  EXPECT_TRUE(net.HasRows({0.52, 0.4, 0.2, 0}));
}

TEST(Demorgan, DefaultsOfNewAndOfRecreatedParentsDiffer) {
  GateNet<KVN_demorgan> net(2);
  EXPECT_EQ(ItemsOf(net.gate().GetParentWeights()), (std::vector<double>{0, 0}));
  ASSERT_EQ(net.gate().SetParentTypes(IntsOf({0, 3})), 0);
  EXPECT_EQ(net.gate().ReCreate(), 0);
  EXPECT_EQ(ItemsOf(net.gate().GetParentWeights()), (std::vector<double>{1, 1}));
  EXPECT_EQ(ItemsOf(net.gate().GetParentTypes()), (std::vector<int>{0, 3}));
  // 00: inhibited; 01: raised to 1, then inhibited; 11: raised to 1
  EXPECT_TRUE(net.HasRows({0, 0, 0.5, 1}));

  ASSERT_EQ(net.gate().SetParentTypes(IntsOf({0, 4})), 0);
  EXPECT_EQ(net.gate().ReCreate(), KVN_REFUSED);
  EXPECT_TRUE(net.HasRows({0.5}));
}

TEST(Demorgan, RefusedTypesChangeNothing) {
  GateNet<KVN_demorgan> net(1);
  EXPECT_EQ(net.gate().SetParentTypes(IntsOf({0, 0})), KVN_REFUSED);
  EXPECT_EQ(net.gate().SetParentTypes(KVN_intArray()), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(net.gate().GetParentTypes()), (std::vector<int>{2}));
}

TEST(Demorgan, OrderRefusedByTheWeightsLeavesTheTypesPermuted) {
  GateNet<KVN_demorgan> net(2);
  ASSERT_EQ(net.gate().SetParentTypes(IntsOf({0, 3})), 0);
  ASSERT_EQ(net.gate().SetParentWeights(DoublesOf({0.5, 0.25})), 0);
  EXPECT_EQ(net.gate().ReorderParents(IntsOf({1, 1})), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(net.gate().GetParentTypes()), (std::vector<int>{0, 3}));

  // An order may also count the slots of a list, and that of the types has more of them.
  const int slots = net.gate().GetParentTypes().GetSize();
  ASSERT_GT(slots, net.gate().GetParentWeights().GetSize());
  KVN_intArray order = IntsOf({1, 0});
  for (int i = 2; i < slots; i++) ASSERT_EQ(order.Add(i), 0);
  EXPECT_EQ(net.gate().ReorderParents(order), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(net.gate().GetParentTypes()), (std::vector<int>{3, 0}));
  EXPECT_EQ(ItemsOf(net.gate().GetParentWeights()), (std::vector<double>{0.5, 0.25}));
}

}  // namespace
