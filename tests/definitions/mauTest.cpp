#include "definitions/mau.h"

#include <gtest/gtest.h>

#include <map>

#include "definitions/list.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"
#include "tests/support/randomNetwork.h"
#include "values/nodeValue.h"

namespace {

using Ints = std::vector<int>;

/// m below the decisions d (2 alternatives) and e (3) and the utilities u and v; the weight in the
/// run of (d, e) is 100 d + 10 e, plus 0 for u and 1 for v.
class Weights : public testing::Test {
 protected:
  Weights() {
    AddArcs(network, {u, d, v, e}, m);
    for (int i = 0; i < 12; i++) weights()[i] = 100 * (i / 6) + 10 * (i / 2 % 3) + i % 2;
  }
  KVN_Dmatrix& weights() { return TableOfNode(network, m); }
  Ints sizes() { return ItemsOf(weights().GetDimensions()); }

  KVN_network network;
  int d = AddNodeOf(network, KVN_TYPE_LIST, "d", 2);
  int e = AddNodeOf(network, KVN_TYPE_LIST, "e", 3);
  int u = AddNodeOf(network, KVN_TYPE_TABLE, "u");
  int v = AddNodeOf(network, KVN_TYPE_TABLE, "v");
  int m = AddNodeOf(network, KVN_TYPE_MAU, "m");
};

TEST(Mau, StartsAsThePlainSumOfItsParents) {
  KVN_network network;
  const int m = AddNodeOf(network, KVN_TYPE_MAU, "m");
  const int u = AddNodeOf(network, KVN_TYPE_TABLE, "u");
  const int other = AddNodeOf(network, KVN_TYPE_MAU, "other");
  const int d = AddNodeOf(network, KVN_TYPE_LIST, "d", 3);
  const int c = AddNodeOf(network, KVN_TYPE_CPT, "c");
  EXPECT_EQ(network.DefinitionOf(m)->GetSize(), 0);
  EXPECT_EQ(network.DefinitionOf(m)->GetNumberOfOutcomes(), KVN_NOT_APPLICABLE);
  EXPECT_EQ(network.AddArc(c, m, 0), KVN_NOT_APPLICABLE);
  EXPECT_EQ(network.DefinitionOf(m)->AddParent(c), KVN_REFUSED);
  AddArcs(network, {u, other}, m);
  EXPECT_TRUE(CellsNear(TableOfNode(network, m), {1, 1}, 0.0));
  AddArcs(network, {d}, m);
  EXPECT_EQ(ItemsOf(TableOfNode(network, m).GetDimensions()), (Ints{3, 2}));
  EXPECT_TRUE(CellsNear(TableOfNode(network, m), {1, 1, 1, 1, 1, 1}, 0.0));
  ASSERT_EQ(network.RemoveArc(u, m, 0), 0);
  ASSERT_EQ(network.RemoveArc(other, m, 0), 0);
  EXPECT_EQ(ItemsOf(TableOfNode(network, m).GetDimensions()), (Ints{3}));
  ASSERT_EQ(network.RemoveArc(d, m, 0), 0);
  EXPECT_EQ(network.DefinitionOf(m)->GetSize(), 0);
}

TEST_F(Weights, FollowEveryEditOfTheParents) {
  EXPECT_EQ(sizes(), (Ints{2, 3, 2}));
  // New places 0..3 hold e, v, d, u.
  ASSERT_EQ(network.ChangeOrderOfParents(m, IntsOf({3, 2, 1, 0})), 0);
  EXPECT_EQ(sizes(), (Ints{3, 2, 2}));
  EXPECT_TRUE(CellsNear(weights(), {1, 0, 101, 100, 11, 10, 111, 110, 21, 20, 121, 120}, 0.0));
  ASSERT_EQ(network.DefinitionOf(e)->RemoveOutcome(1), 0);
  ASSERT_EQ(network.DefinitionOf(d)->InsertOutcome(1, "new"), 0);
  EXPECT_TRUE(CellsNear(weights(), {1, 0, 1, 1, 101, 100, 21, 20, 1, 1, 121, 120}, 0.0));
  ASSERT_EQ(network.DefinitionOf(e)->ChangeOrderOfOutcomes(IntsOf({1, 0})), 0);
  ASSERT_EQ(network.RemoveArc(v, m, 0), 0);
  EXPECT_TRUE(CellsNear(weights(), {20, 1, 120, 0, 1, 100}, 0.0));
  ASSERT_EQ(network.RemoveArc(e, m, 0), 0);
  EXPECT_TRUE(CellsNear(weights(), {20, 1, 120}, 0.0)) << "those of e's first alternative stay";
}

TEST_F(Weights, AreTakenAsTheyCome) {
  EXPECT_EQ(network.DefinitionOf(m)->SetDefinition(DoublesOf({-7, 1e9})), 0);
  EXPECT_EQ(weights()[0], -7);
  EXPECT_EQ(weights()[2], 10);
  KVN_nodeDefinition& definition = *network.DefinitionOf(m);
  EXPECT_TRUE(DefinitionAs<KVN_mau>(network, m).NumbersFit());
  EXPECT_EQ(definition.SetDefinition(TableOf({2}, {1, 2})), 0);
  EXPECT_FALSE(DefinitionAs<KVN_mau>(network, m).NumbersFit());
}

TEST_F(Weights, ArePartOfACopy) {
  KVN_network copy;
  ASSERT_EQ(copy.Assign(network, 0), 0);
  WriteCells(network, m, std::vector<double>(12, 0.0));
  EXPECT_EQ(TableOfNode(copy, m)[11], 121);
  ASSERT_EQ(copy.RemoveArc(u, m, 0), 0);
  EXPECT_TRUE(CellsNear(TableOfNode(copy, m), {1, 11, 21, 101, 111, 121}, 0.0));
}

TEST(Mau, ConvertsAsFarAsItsParentsAllow) {
  struct {
    int type;
    std::vector<int> sizes;  // of the weights afterwards
  } const cases[] = {
      {KVN_TYPE_TABLE, {2}},  // the chance parent's arc goes
      {KVN_TYPE_LIST, {}},    // all arcs go
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    KVN_network network;
    const int d = AddNodeOf(network, KVN_TYPE_LIST, "d", 2);
    const int chance = AddNodeOf(network, KVN_TYPE_CPT, "c", 3);
    const int node = AddNodeOf(network, c.type, "m");
    AddArcs(network, {chance, d}, node);
    EXPECT_EQ(network.GetNode(node)->ChangeType(KVN_TYPE_MAU), 0);
    EXPECT_EQ(ItemsOf(TableOfNode(network, node).GetDimensions()), c.sizes);
    EXPECT_EQ(network.GetNumberOfParents(node), static_cast<int>(c.sizes.size()));
    EXPECT_EQ(network.ValueOf(node)->GetType(), KVN_VALUE_MAU_EXPECTED_UTILITY);
    // Back: the weights are no utilities.
    EXPECT_EQ(network.GetNode(node)->ChangeType(KVN_TYPE_TABLE), 0);
    EXPECT_TRUE(CellsNear(TableOfNode(network, node), {0}, 0.0));
  }
}

/// A decision that becomes a chance node leaves, and takes its dimension along.
TEST_F(Weights, KeepAShapeWhenAParentBecomesAnotherKind) {
  ASSERT_EQ(network.GetNode(d)->ChangeType(KVN_TYPE_CPT), 0);
  EXPECT_EQ(sizes(), (Ints{3, 2}));
  EXPECT_TRUE(CellsNear(weights(), {1, 1, 1, 1, 1, 1}, 0.0));
  ASSERT_EQ(network.GetNode(v)->ChangeType(KVN_TYPE_CPT), 0);
  EXPECT_EQ(sizes(), (Ints{3, 1}));
  ASSERT_EQ(network.GetNode(e)->ChangeType(KVN_TYPE_TABLE), 0);
  EXPECT_FALSE(DefinitionAs<KVN_mau>(network, m).NumbersFit()) << "no arc went";
}

/// Random edits against weights that are told by names: of the alternatives, and of the utility.
TEST(Mau, WeightsStayWithTheirAlternativesAndUtilities) {
  for (std::uint64_t seed = 0; seed < 60; seed++) {
    SCOPED_TRACE(seed);
    RandomSource random(seed);
    KVN_network network;
    const int m = AddNodeOf(network, KVN_TYPE_MAU, "m");
    Ints decisions;
    Ints utilities;
    for (int i = 0; i < 3; i++) {
      decisions.push_back(AddNodeOf(network, KVN_TYPE_LIST, nullptr, 2 + i % 2));
      utilities.push_back(AddNodeOf(network, KVN_TYPE_TABLE, nullptr));
    }
    for (int handle : {utilities[0], decisions[1], utilities[1], decisions[0]}) {
      AddArcs(network, {handle}, m);
    }
    // Key: the alternatives' names by decision, then the utility.
    const auto keys = [&](auto visit) {
      KVN_Dmatrix& table = TableOfNode(network, m);
      KVN_intArray at;
      for (int cell = 0; cell < table.GetSize(); cell++) {
        ASSERT_EQ(table.CoordinatesOf(cell, at), 0);
        std::map<int, std::string> key;
        int next = 0;
        Ints own;
        for (int parent : network.GetParents(m)) {
          if (network.TypeOf(parent) != KVN_TYPE_LIST) {
            own.push_back(parent);
          } else {
            key[parent] = (*network.DefinitionOf(parent)->GetOutcomesNames())[at[next++]];
          }
        }
        visit(key, own[at[next]], table[cell]);
      }
    };
    std::map<std::pair<std::map<int, std::string>, int>, double> known;
    double fresh = 2;
    for (int step = 0; step < 12; step++) {
      known.clear();
      keys([&](const auto& key, int utility, double& cell) {
        cell = fresh++;
        known[{key, utility}] = cell;
      });
      KVN_nodeDefinition& decision = *network.DefinitionOf(decisions[random.Below(3)]);
      const int count = decision.GetNumberOfOutcomes();
      const int other = random.Below(3);
      switch (random.Below(5)) {
        case 0:
          ASSERT_EQ(decision.InsertOutcome(random.Between(0, count), nullptr), 0);
          break;
        case 1:
          ASSERT_EQ(decision.RemoveOutcome(random.Below(count)), count > 2 ? 0 : KVN_REFUSED);
          break;
        case 2:
          ASSERT_EQ(decision.ChangeOrderOfOutcomes(IntsOf(random.Permutation(count))), 0);
          break;
        case 3:
          ASSERT_EQ(network.ChangeOrderOfParents(
                        m, IntsOf(random.Permutation(network.GetNumberOfParents(m)))),
                    0);
          break;
        default:
          if (other == 0 || network.AddArc(utilities[other], m, 0) == 0) break;
          ASSERT_EQ(network.RemoveArc(utilities[other], m, 0), 0);
          break;
      }
      ASSERT_TRUE(DefinitionAs<KVN_mau>(network, m).NumbersFit());
      keys([&](const auto& key, int utility, double cell) {
        const auto found = known.find({key, utility});
        EXPECT_EQ(cell, found == known.end() ? 1.0 : found->second) << "step " << step;
      });
    }
  }
}

}  // namespace
