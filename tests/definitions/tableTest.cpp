#include "definitions/table.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"
#include "tests/support/definitionBuilder.h"
#include "values/nodeValue.h"

namespace {

using Ints = std::vector<int>;

/// Utility u of a (2 outcomes) and b (3), with 1..6.
class UtilityTable : public testing::Test {
 protected:
  UtilityTable() {
    AddArcs(network, {a, b}, u);
    EXPECT_EQ(utility().SetUtilities(DoublesOf({1, 2, 3, 4, 5, 6})), 0);
  }
  KVN_table& utility() { return DefinitionAs<KVN_table>(network, u); }
  KVN_Dmatrix& table() { return TableOfNode(network, u); }

  KVN_network network;
  int a = AddNodeOf(network, KVN_TYPE_CPT, "a", 2);
  int b = AddNodeOf(network, KVN_TYPE_LIST, "b", 3);
  int u = AddNodeOf(network, KVN_TYPE_TABLE, "u");
};

// The edits are those of a probability table, but for what a new cell is.
TEST_F(UtilityTable, FollowsItsParentsWithoutNormalising) {
  EXPECT_EQ(utility().AddParent(AddNodeOf(network, KVN_TYPE_TABLE, "other")), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(table().GetDimensions()), (Ints{2, 3, 1}));
  ASSERT_EQ(network.ChangeOrderOfParents(u, IntsOf({1, 0})), 0);
  ASSERT_EQ(network.DefinitionOf(b)->InsertOutcome(1, "new"), 0);
  EXPECT_TRUE(CellsNear(table(), {1, 4, 0, 0, 2, 5, 3, 6}, 0.0)) << "new utilities are 0.0";
  ASSERT_EQ(network.DefinitionOf(b)->RemoveOutcome(0), 0);
  ASSERT_EQ(network.DefinitionOf(a)->ChangeOrderOfOutcomes(IntsOf({1, 0})), 0);
  EXPECT_TRUE(CellsNear(table(), {0, 0, 5, 2, 6, 3}, 0.0));
  WriteCells(network, a, {0.25, 0.75});
  EXPECT_EQ(utility().MarginalizeParent(b), KVN_REFUSED);  // a decision
  EXPECT_EQ(utility().AbsorbParentEvidence(a), KVN_REFUSED);
  ASSERT_EQ(utility().MarginalizeParent(a), 0);
  EXPECT_TRUE(CellsNear(table(), {0, 2.75, 3.75}, 0.0));  // 0.25 * 5 + 0.75 * 2 and so on
}

TEST_F(UtilityTable, SettersAndRange) {
  KVN_nodeValue& value = *network.ValueOf(u);
  value.SetValueValid();
  EXPECT_EQ(utility().SetUtilities(DoublesOf({1, 2})), KVN_REFUSED);
  EXPECT_EQ(utility().SetDefinition(DoublesOf({-7})), 0);
  EXPECT_TRUE(value.IsValueValid());
  EXPECT_EQ(utility().GetMinimum(), -7);
  EXPECT_EQ(utility().GetMaximum(), 6);
  EXPECT_EQ(utility().SetUtilities(DoublesOf({9, 2, 3, 4, 5, 6})), 0);
  EXPECT_FALSE(value.IsValueValid());
  EXPECT_EQ(utility().GetMaximum(), 9);
}

// The rules for the numbers are those of expected utilities and tested there.
TEST(Table, RescaleTellsTheNetworkUnlessNothingChanges) {
  const struct {
    const char* name;
    double toHigh;
    std::vector<double> before, after;  // of a utility with a binary parent
    bool told;
  } cases[] = {
      {"scaled", 1, {10, 20}, {0, 1}, true},
      {"constant table", 4, {7, 7}, {4, 4}, true},
      {"equal ranges", 1, {0, 1}, {0, 1}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int a = AddNodeOf(network, KVN_TYPE_CPT, "a", 2);
    const int u = AddNodeOf(network, KVN_TYPE_TABLE, "u");
    AddArcs(network, {a}, u);
    WriteCells(network, u, c.before);
    network.ValueOf(u)->SetValueValid();
    EXPECT_EQ(DefinitionAs<KVN_table>(network, u).Rescale(0, 0, 0, c.toHigh), 0);
    EXPECT_TRUE(CellsNear(TableOfNode(network, u), c.after, 0.0));
    EXPECT_EQ(network.ValueOf(u)->IsValueValid(), !c.told);
  }
}

}  // namespace
