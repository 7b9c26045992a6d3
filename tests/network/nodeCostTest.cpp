#include "network/nodeCost.h"

#include <gtest/gtest.h>

#include <functional>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "tests/support/builders.h"

namespace {

constexpr int kCostLayer = 1;

int Rotate(KVN_nodeDefinition& d) { return d.ChangeOrderOfOutcomes(IntsOf({2, 0, 1})); }

/// x, whose costs are tested, and three possible cost parents of different sizes.
class NodeCost : public testing::Test {
 protected:
  NodeCost() { EXPECT_EQ(network.DefinitionOf(three)->SetNumberOfOutcomes(3), 0); }

  KVN_nodeCost& Costs() { return *network.GetNode(x)->Cost(); }
  std::vector<int> Shape() { return ItemsOf(Costs().GetCosts().GetDimensions()); }

  KVN_network network;
  int x = network.AddNode(KVN_TYPE_CPT, "x");
  int two = network.AddNode(KVN_TYPE_CPT, "two");
  int three = network.AddNode(KVN_TYPE_CPT, "three");
};

}  // namespace

TEST_F(NodeCost, ParentsBecomeDimensionsInTheirOrder) {
  EXPECT_TRUE(CellsNear(Costs().GetCosts(), {0}, 0));
  ASSERT_EQ(Costs().SetCosts(DoublesOf({5})), 0);
  ASSERT_EQ(network.AddArc(three, x, kCostLayer), 0);
  EXPECT_TRUE(CellsNear(Costs().GetCosts(), {5, 5, 5}, 0));
  ASSERT_EQ(Costs().SetCosts(DoublesOf({1, 2, 3})), 0);  // the list has four slots, three in use
  ASSERT_EQ(network.AddArc(two, x, kCostLayer), 0);
  EXPECT_EQ(Shape(), (std::vector<int>{3, 2, 1}));
  EXPECT_TRUE(CellsNear(Costs().GetCosts(), {1, 1, 2, 2, 3, 3}, 0));

  EXPECT_EQ(Costs().SetCosts(DoublesOf({1, 2, 3, 4, 5})), KVN_REFUSED);
  ASSERT_EQ(Costs().SetCosts(DoublesOf({1, 2, 3, 4, 5, 6})), 0);
  ASSERT_EQ(network.RemoveArc(three, x, kCostLayer), 0);
  EXPECT_TRUE(CellsNear(Costs().GetCosts(), {1, 2}, 0));  // those of its first outcome
  ASSERT_EQ(network.RemoveArc(two, x, kCostLayer), 0);
  EXPECT_EQ(Shape(), (std::vector<int>{1}));
  EXPECT_TRUE(CellsNear(Costs().GetCosts(), {1}, 0));
}

TEST_F(NodeCost, FollowsTheOutcomesOfAParent) {
  // Before each, the rows for the outcomes of `three` are 1 2 / 3 4 / 5 6.
  const struct {
    const char* name;
    std::function<int(KVN_nodeDefinition&)> edit;
    std::vector<double> after;
  } cases[] = {
      {"inserted", [](auto& d) { return d.InsertOutcome(1, "n"); }, {1, 2, 0, 0, 3, 4, 5, 6}},
      {"appended", [](auto& d) { return d.AddOutcome("n"); }, {1, 2, 3, 4, 5, 6, 0, 0}},
      {"removed", [](auto& d) { return d.RemoveOutcome(1); }, {1, 2, 5, 6}},
      {"rotated", Rotate, {5, 6, 1, 2, 3, 4}},
      {"replaced", [](auto& d) { return d.SetNumberOfOutcomes(4); }, std::vector<double>(8)},
  };
  ASSERT_EQ(network.AddArc(three, x, kCostLayer), 0);
  ASSERT_EQ(network.AddArc(two, x, kCostLayer), 0);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ASSERT_EQ(Costs().SetCosts(DoublesOf({1, 2, 3, 4, 5, 6})), 0);
    EXPECT_EQ(c.edit(*network.DefinitionOf(three)), 0);
    EXPECT_TRUE(CellsNear(Costs().GetCosts(), c.after, 0));
    ASSERT_EQ(network.DefinitionOf(three)->SetNumberOfOutcomes(3), 0);
  }
}

TEST_F(NodeCost, KindsWithoutOutcomesToIndexByAreRefused) {
  ASSERT_EQ(Costs().SetCosts(DoublesOf({5})), 0);
  for (int type : {KVN_TYPE_TABLE, KVN_TYPE_DEMORGAN, KVN_TYPE_CAST}) {
    SCOPED_TRACE(type);
    const int parent = network.AddNode(type, nullptr);
    EXPECT_EQ(network.AddArc(parent, x, kCostLayer), KVN_REFUSED);
    EXPECT_STREQ(GetLastErrorMessage(), "Arc cannot be added");
    EXPECT_EQ(network.GetNumberOfParents(x, kCostLayer), 0);
    EXPECT_EQ(Costs().RemoveParent(parent), type == KVN_TYPE_TABLE ? KVN_REFUSED : KVN_SUCCESS);
    EXPECT_TRUE(CellsNear(Costs().GetCosts(), {5}, 0));
  }
}

TEST_F(NodeCost, RebuildLeavesOutWhatNoLongerFits) {
  ASSERT_EQ(network.AddArc(two, x, kCostLayer), 0);
  ASSERT_EQ(network.AddArc(three, x, kCostLayer), 0);
  (void)network.GetNode(three)->ChangeType(KVN_TYPE_DEMORGAN);  // refused to convert: defaults
  EXPECT_EQ(Costs().Rebuild(), 0);
  EXPECT_STREQ(GetLastErrorMessage(), "Parent could not be added");
  EXPECT_EQ(Shape(), (std::vector<int>{2, 1}));
}

TEST_F(NodeCost, ParentThatCameWithoutOutcomesTakesNothingAlong) {
  EXPECT_EQ(network.DefinitionOf(three)->SetNumberOfOutcomes(0), KVN_REFUSED);  // and is empty now
  ASSERT_EQ(Costs().SetCosts(DoublesOf({5})), 0);
  ASSERT_EQ(network.AddArc(three, x, kCostLayer), 0);
  ASSERT_EQ(network.RemoveArc(three, x, kCostLayer), 0);
  EXPECT_TRUE(CellsNear(Costs().GetCosts(), {5}, 0));
}
