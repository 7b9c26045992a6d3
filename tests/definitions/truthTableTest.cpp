#include "definitions/truthTable.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"
#include "values/nodeValue.h"

namespace {

using Texts = std::vector<std::string>;
constexpr double kExact = 0.0;

/// Node x with three outcomes under parent p with two.
class TruthTableUnderParent : public testing::Test {
 protected:
  TruthTableUnderParent() { AddArcs(network, {p}, x); }
  KVN_truthTable& truth() { return DefinitionAs<KVN_truthTable>(network, x); }
  KVN_Dmatrix& table() { return TableOfNode(network, x); }

  KVN_network network;
  int p = AddNodeOf(network, KVN_TYPE_CPT, "p", 2);
  int x = AddNodeOf(network, KVN_TYPE_TRUTHTABLE, "x", 3);
};

TEST_F(TruthTableUnderParent, NewRowsDetermineTheFirstOutcome) {
  EXPECT_TRUE(CellsNear(table(), {1, 0, 0, 1, 0, 0}, kExact));
  EXPECT_EQ(truth().CheckConsistency(1), 0);
}

TEST_F(TruthTableUnderParent, ResultingStatesByIndex) {
  KVN_nodeValue& value = *network.ValueOf(x);
  value.SetValueValid();
  EXPECT_EQ(truth().SetResultingStates(IntsOf({2, 3})), KVN_REFUSED);
  EXPECT_EQ(truth().SetResultingStates(IntsOf({-1, 0})), KVN_REFUSED);
  EXPECT_EQ(truth().SetResultingStates(IntsOf({2, 9, 9})), KVN_LENGTH_MISMATCH);
  EXPECT_TRUE(CellsNear(table(), {1, 0, 0, 1, 0, 0}, kExact));
  EXPECT_TRUE(value.IsValueValid());

  KVN_nodeDefinition& definition = truth();
  EXPECT_EQ(definition.SetDefinition(IntsOf({2, 1})), 0);
  EXPECT_TRUE(CellsNear(table(), {0, 0, 1, 0, 1, 0}, kExact));
  EXPECT_FALSE(value.IsValueValid());
}

TEST_F(TruthTableUnderParent, ResultingStatesByName) {
  KVN_nodeDefinition& definition = truth();
  EXPECT_EQ(definition.SetDefinition(StringsOf({"State2", "State2"})), 0);
  EXPECT_TRUE(CellsNear(table(), {0, 0, 1, 0, 0, 1}, kExact));
  EXPECT_EQ(truth().SetResultingStates(StringsOf({"State1"})), KVN_LENGTH_MISMATCH);
  EXPECT_EQ(truth().SetResultingStates(StringsOf({"State1", "nobody"})), 0);
  EXPECT_TRUE(CellsNear(table(), {0, 1, 0, 1, 0, 0}, kExact)) << "unknown names mean the first";

  WriteCells(network, x, {0.5, 0.5, 0, 0, 0, 1});
  KVN_idArray states = IdsOf({"State2"});
  EXPECT_EQ(truth().GetResultingStates(states), 0);
  EXPECT_EQ(TextsOf(states), (Texts{"State2", "State0", "State2"})) << "appended, repeats kept";
}

TEST(TruthTable, MakeDeterministicRounds) {
  const struct {
    std::vector<double> before, after;  // two rows of three
  } cases[] = {
      {{0.7, 0.2, 0.1, 0.1, 0.2, 0.7}, {1, 0, 0, 0, 0, 1}},
      {{0.5, 0.5, 0, 0.2, 0.4, 0.4}, {0, 1, 0, 0, 0, 1}},  // ties go to the later cell
      {{0, 0, 0, 0, 1, 0}, {0, 0, 1, 0, 1, 0}},            // so zeros end at the last one
      {{-0.5, -0.1, -0.2, -0.5, 0, -0.1},
       {0, 0, 0, 0, 1, 0}},  // nothing reaches 0 in the first row
  };
  for (const auto& c : cases) {
    KVN_network network;
    const int p = AddNodeOf(network, KVN_TYPE_CPT, "p", 2);
    const int x = AddNodeOf(network, KVN_TYPE_TRUTHTABLE, "x", 3);
    AddArcs(network, {p}, x);
    WriteCells(network, x, c.before);
    EXPECT_EQ(DefinitionAs<KVN_truthTable>(network, x).MakeDeterministic(), 0);
    EXPECT_TRUE(CellsNear(TableOfNode(network, x), c.after, kExact));
  }
}

TEST_F(TruthTableUnderParent, ConsistencyWantsOneOnePerRow) {
  const struct {
    std::vector<double> cells;
    bool consistent;
  } cases[] = {
      {{0, 1, 0, 1, 0, 0}, true},
      {{0, 0.5, 0.5, 1, 0, 0}, false},
      {{0, 1, 1, 1, 0, 0}, false},
      {{0, 1, 0, 0, 0, 0}, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(truth().SetProbabilities(DoublesOf(c.cells)), 0);
    EXPECT_EQ(truth().IsConsistent(), c.consistent);
  }
}

TEST_F(TruthTableUnderParent, RowsOfANewParentOutcomeDetermineTheLastOutcome) {
  ASSERT_EQ(network.DefinitionOf(p)->InsertOutcome(1, "mid"), 0);
  EXPECT_TRUE(CellsNear(table(), {1, 0, 0, 0, 0, 1, 1, 0, 0}, kExact));
}

TEST(TruthTable, ConversionRoundsAndIsConsistent) {
  KVN_network network;
  const int x = AddNodeOf(network, KVN_TYPE_CPT, "x", 3);
  WriteCells(network, x, {0.2, 0.7, 0.1});
  ASSERT_EQ(network.GetNode(x)->ChangeType(KVN_TYPE_TRUTHTABLE), 0);
  EXPECT_TRUE(CellsNear(TableOfNode(network, x), {0, 1, 0}, kExact));
  EXPECT_TRUE(network.DefinitionOf(x)->IsConsistent());
}

}  // namespace
