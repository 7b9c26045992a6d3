#include "definitions/demorgan.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"
#include "tests/definitions/gateNet.h"

namespace {

struct RowsCase {
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
const RowsCase kRowsCases[] = {
    {"no parents", {}, {}, 0.3, {0.3}},
    {"cause", {2}, {0.5}, 0.2, {0.6, 0.2}},
    {"barrier", {3}, {0.5}, 0.2, {0.2, 0.6}},
    {"inhibitor, then cause", {0, 2}, {0.5, 0.5}, 0.5, {0.375, 0.25, 0.75, 0.5}},
    {"requirement, barrier", {1, 3}, {0.4, 0.2}, 0.5, {0.5, 0.6, 0.3, 0.36}},
    {"unknown type", {7, 2}, {0.9, 0.5}, 0.5, {0.75, 0.5, 0.75, 0.5}},
    {"weight without bound", {2}, {1.5}, 0.5, {1.25, 0.5}},
};

}  // namespace

TEST(Demorgan, RowsFollowTheNumbers) {
  for (const RowsCase& c : kRowsCases) {
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
