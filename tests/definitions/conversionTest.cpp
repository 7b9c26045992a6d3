#include <gtest/gtest.h>

#include <memory>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"
#include "values/nodeValue.h"

namespace {

using Texts = std::vector<std::string>;

constexpr int kKinds[] = {KVN_TYPE_TABLE,      KVN_TYPE_LIST,       KVN_TYPE_CPT,
                          KVN_TYPE_TRUTHTABLE, KVN_TYPE_CAST,       KVN_TYPE_DEMORGAN,
                          KVN_TYPE_NOISY_MAX,  KVN_TYPE_NOISY_ADDER};
constexpr int kRefused = KVN_REFUSED;
constexpr int kNone = KVN_NOT_APPLICABLE;

// Result of a change of kind, by old kind (row) and new kind (column), in the order of kKinds.
constexpr int kResults[8][8] = {
    // TABLE   LIST      CPT       TRUTHTABLE CAST   DEMORGAN NOISY_MAX NOISY_ADDER
    {0, 0, 0, 0, kNone, kNone, 0, 0},
    {0, 0, 0, 0, kNone, kNone, 0, 0},
    {0, 0, 0, 0, kNone, kNone, 0, 0},
    {0, 0, 0, 0, kNone, kNone, 0, 0},
    {kRefused, kRefused, 0, 0, 0, kNone, kRefused, kRefused},
    {kRefused, kRefused, 0, 0, kNone, 0, kRefused, kRefused},
    {0, 0, 0, 0, kNone, kNone, 0, 0},
    {0, 0, 0, 0, kNone, kNone, 0, 0},
};

bool KeepsNames(int from, int to) {
  const bool fromNames = (from & KVN_TYPE_BIT_DISCRETE) != 0;
  return fromNames && to != KVN_TYPE_TABLE && to != KVN_TYPE_CAST && to != KVN_TYPE_DEMORGAN;
}

TEST(Conversion, EveryPairOfKinds) {
  for (int row = 0; row < 8; row++) {
    for (int column = 0; column < 8; column++) {
      const int from = kKinds[row];
      const int to = kKinds[column];
      SCOPED_TRACE(std::to_string(from) + " to " + std::to_string(to));
      KVN_network network;
      const int x = AddNodeOf(network, from, "x");
      if (network.DefinitionOf(x)->GetNumberOfOutcomes() > 0) {
        (void)network.DefinitionOf(x)->RenameOutcome(0, "off");  // not for CAST and DEMORGAN
      }
      const Texts before = OutcomesAt(network, x);
      EXPECT_EQ(network.GetNode(x)->ChangeType(to), kResults[row][column]);
      ASSERT_NE(network.DefinitionOf(x), nullptr);
      EXPECT_EQ(network.DefinitionOf(x)->GetType(), to);
      EXPECT_TRUE(network.DefinitionOf(x)->IsReady());
      if (kResults[row][column] == 0 && KeepsNames(from, to)) {
        EXPECT_EQ(OutcomesAt(network, x), before);
      } else if ((to & KVN_TYPE_BIT_DISCRETE) != 0) {
        // A fresh adder has three outcomes, and what couldn't be converted is as fresh.
        const bool isFreshAdder = to == KVN_TYPE_NOISY_ADDER && kResults[row][column] != 0;
        EXPECT_EQ(network.DefinitionOf(x)->GetNumberOfOutcomes(), isFreshAdder ? 3 : 2);
      }

      const std::unique_ptr<KVN_nodeDefinition> clone(CloneDefinition(*network.DefinitionOf(x)));
      ASSERT_NE(clone, nullptr);
      EXPECT_TRUE(clone->IsReady());
      EXPECT_EQ(clone->GetSize(), network.DefinitionOf(x)->GetSize());
    }
  }
}

/// Node x of a kind with parent p (3 outcomes), turned into another kind.
struct ParentCase {
  int from, to;
  int parents;  // afterwards
  std::vector<int> sizes;
};
const ParentCase kParentCases[] = {
    {KVN_TYPE_CPT, KVN_TYPE_TABLE, 1, {3, 1}},
    {KVN_TYPE_CPT, KVN_TYPE_TRUTHTABLE, 1, {3, 2}},
    {KVN_TYPE_CPT, KVN_TYPE_LIST, 0, {}},
    {KVN_TYPE_LIST, KVN_TYPE_CPT, 0, {2}},
    {KVN_TYPE_LIST, KVN_TYPE_TABLE, 0, {1}},
    {KVN_TYPE_TABLE, KVN_TYPE_CPT, 1, {3, 2}},
    {KVN_TYPE_TABLE, KVN_TYPE_LIST, 1, {}},
    {KVN_TYPE_NOISY_MAX, KVN_TYPE_CPT, 1, {3, 2}},
    {KVN_TYPE_CPT, KVN_TYPE_NOISY_MAX, 1, {3, 2}},
    {KVN_TYPE_LIST, KVN_TYPE_NOISY_MAX, 0, {2}},
    {KVN_TYPE_TABLE, KVN_TYPE_NOISY_ADDER, 1, {3, 2}},
    {KVN_TYPE_NOISY_ADDER, KVN_TYPE_NOISY_MAX, 1, {3, 3}},
};

TEST(Conversion, ParentsStayOrGo) {
  for (const ParentCase& c : kParentCases) {
    SCOPED_TRACE(std::to_string(c.from) + " to " + std::to_string(c.to));
    KVN_network network;
    const int p = AddNodeOf(network, KVN_TYPE_CPT, "p", 3);
    const int x = AddNodeOf(network, c.from, "x");
    AddArcs(network, {p}, x);
    EXPECT_EQ(network.GetNode(x)->ChangeType(c.to), 0);
    EXPECT_EQ(network.GetNumberOfParents(x), c.parents);
    if (!c.sizes.empty()) {
      EXPECT_EQ(ItemsOf(TableOfNode(network, x).GetDimensions()), c.sizes);
    }
  }
}

TEST(Conversion, UtilitiesBecomeSharesOfTheirRange) {
  KVN_network network;
  const int p = AddNodeOf(network, KVN_TYPE_CPT, "p", 3);
  const int x = AddNodeOf(network, KVN_TYPE_TABLE, "x");
  AddArcs(network, {p}, x);
  WriteCells(network, x, {20, 10, 50});
  ASSERT_EQ(network.GetNode(x)->ChangeType(KVN_TYPE_CPT), 0);
  // (u - 10) / 40 and the rest to 1.
  EXPECT_TRUE(CellsNear(TableOfNode(network, x), {0.25, 0.75, 0, 1, 1, 0}, 0.0));

  // All the same: the range counts as 1, so every share is 0.
  const int y = AddNodeOf(network, KVN_TYPE_TABLE, "y");
  WriteCells(network, y, {7});
  ASSERT_EQ(network.GetNode(y)->ChangeType(KVN_TYPE_CPT), 0);
  EXPECT_TRUE(CellsNear(TableOfNode(network, y), {0, 1}, 0.0));
}

// A gate of two outcomes with parents of its own kind has nothing to hand to a table.
TEST(Conversion, BinaryGateWithParentsLeavesTheDefaults) {
  KVN_network network;
  const int p = AddNodeOf(network, KVN_TYPE_CAST, "p");
  const int x = AddNodeOf(network, KVN_TYPE_CAST, "x");
  AddArcs(network, {p}, x);
  EXPECT_EQ(network.GetNode(x)->ChangeType(KVN_TYPE_CPT), KVN_REFUSED);
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"State0", "State1"}));

  const int y = AddNodeOf(network, KVN_TYPE_CAST, "y");
  EXPECT_EQ(network.GetNode(y)->ChangeType(KVN_TYPE_CPT), 0);
  EXPECT_EQ(OutcomesAt(network, y), (Texts{"True", "False"}));
}

TEST(Conversion, NetworkHearsOfTheNewDefinition) {
  for (int to : {KVN_TYPE_LIST, KVN_TYPE_CPT, KVN_TYPE_TRUTHTABLE, KVN_TYPE_NOISY_MAX}) {
    SCOPED_TRACE(to);
    KVN_network network;
    const int from = to == KVN_TYPE_CPT ? KVN_TYPE_TRUTHTABLE : KVN_TYPE_CPT;
    const int x = AddNodeOf(network, from, "x");
    const int child = AddNodeOf(network, KVN_TYPE_CPT, "child");
    AddArcs(network, {x}, child);
    network.ValueOf(child)->SetValueValid();
    EXPECT_EQ(network.GetNode(x)->ChangeType(to), 0);
    EXPECT_FALSE(network.ValueOf(child)->IsValueValid());
  }
}

TEST(Conversion, SourceThatIsNotReadyLeavesTheTargetAlone) {
  KVN_network network;
  // A utility without a node isn't ready.
  const std::unique_ptr<KVN_nodeDefinition> stray(NewDefinition(KVN_TYPE_TABLE, &network, 99));
  ASSERT_NE(stray, nullptr);
  for (int kind : {KVN_TYPE_CPT, KVN_TYPE_LIST, KVN_TYPE_TRUTHTABLE}) {
    const int x = AddNodeOf(network, kind, nullptr, 3);
    EXPECT_EQ(network.DefinitionOf(x)->Assign(*stray), KVN_NOT_READY);
    EXPECT_EQ(network.DefinitionOf(x)->GetNumberOfOutcomes(), 3);
  }
}

}  // namespace
