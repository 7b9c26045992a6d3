#include <random>
#include <set>
#include <utility>

#include "foundation/resultCodes.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "tests/network/networkTools.h"
#include "tests/support/failingAllocation.h"

namespace {

TEST(NetworkArcs, RefusesWhatTheGraphCanNotHave) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"a", "b", "c", "free"});
  EXPECT_EQ(network.DeleteNode(3), 0);
  AddArcs(network, {{"a", "b"}, {"b", "c"}});
  const struct {
    const char* name;
    int parent, child, layer;
  } cases[] = {
      {"itself", 0, 0, kPlain},
      {"itself, by cost", 0, 0, kCost},
      {"twice", 0, 1, kPlain},
      {"the reverse", 1, 0, kPlain},
      {"a cycle", 2, 0, kPlain},
      {"free slot", 0, 3, kPlain},
      {"free slot above", 3, 0, kCost},
      {"negative", -1, 0, kPlain},
      {"beyond the table", 0, 99, kPlain},
      {"no such layer", 0, 2, 2},
      {"no such layer, -1", 0, 2, -1},
  };
  const int before = MessageCount();
  for (const auto& c : cases) {
    EXPECT_EQ(network.AddArc(c.parent, c.child, c.layer), KVN_REFUSED) << c.name;
  }
  EXPECT_EQ(network.RemoveArc(1, 0, kPlain), KVN_REFUSED);
  EXPECT_EQ(network.RemoveArc(0, 1, kCost), KVN_REFUSED);
  EXPECT_EQ(MessageCount(), before);
  EXPECT_EQ(network.IsArcEitherWay(1, 0), 1);
  EXPECT_EQ(network.IsArcEitherWay(0, 2), 0);
  EXPECT_EQ(network.GetNumberOfParents(3), KVN_REFUSED);
  ExpectListsInStep(network);
}

TEST(NetworkArcs, TheChildsDefinitionDecides) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_DEMORGAN, {"gate"});
  AddNodes(network, KVN_TYPE_CPT, {"child"});
  AddNodes(network, 0, {"empty"});
  for (int child : {1, 2}) {
    EXPECT_EQ(network.AddArc(0, child, kPlain), KVN_NOT_APPLICABLE);
    EXPECT_STREQ(GetLastErrorMessage(), "Arc rejected by child node");
  }
  EXPECT_EQ(network.AddArc(0, 1, kCost), KVN_REFUSED);
  EXPECT_STREQ(GetLastErrorMessage(), "Arc cannot be added");
  EXPECT_EQ(network.GetNumberOfChildren(0, kPlain), 0);
  EXPECT_EQ(network.GetNumberOfChildren(0, kCost), 0);
  EXPECT_EQ(network.GetNumberOfParents(1, kPlain), 0);
  EXPECT_TRUE(network.TableFits(1));
}

TEST(NetworkArcs, CostArcsMayRepeatAndFormCycles) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"a", "b"});
  for (int i = 0; i < 2; i++) EXPECT_EQ(network.AddArc(0, 1, kCost), 0);
  EXPECT_EQ(network.AddArc(1, 0, kCost), 0);
  EXPECT_EQ(network.GetNumberOfParents(1, kCost), 2);
  EXPECT_EQ(network.GetNode(1)->Cost()->GetCosts().GetSize(), 4);
  EXPECT_EQ(network.RemoveArc(0, 1, kCost), 0);
  EXPECT_EQ(network.GetNumberOfParents(1, kCost), 1);
  ExpectListsInStep(network);
}

TEST(NetworkArcs, LastCostArcEndsTheTestGroup) {
  for (const char* value : {"True", "False"}) {
    KVN_network network;
    AddNodes(network, KVN_TYPE_CPT, {"group", "b", "c"});
    KVN_userProperties& properties = network.GetNode(0)->Info().UserProperties();
    EXPECT_EQ(properties.AddProperty("DIAG_TESTGROUPCOST", value), 0);
    EXPECT_EQ(network.IsTestGroupCost(0), value[0] == 'T' ? 1 : 0);
    for (int child : {1, 2}) EXPECT_EQ(network.AddArc(0, child, kCost), 0);
    EXPECT_EQ(network.RemoveArc(0, 1, kCost), 0);
    EXPECT_EQ(properties.GetCount(), 1);
    EXPECT_EQ(network.RemoveArc(0, 2, kCost), 0);
    EXPECT_EQ(properties.GetCount(), value[0] == 'T' ? 0 : 1);
  }
}

// Row: kind of the parent (plain, anchor, terminal, in plate), column: kind of the child.
const bool kTemporalAllowed[4][4] = {
    {true, true, true, true},
    {true, true, true, true},
    {false, false, true, false},
    {false, false, true, true},
};

TEST(NetworkArcs, OnlyPlatesAndTerminalsAreRestricted) {
  for (int parent = 0; parent < 4; parent++) {
    for (int child = 0; child < 4; child++) {
      KVN_network network;
      AddNodes(network, KVN_TYPE_CPT, {"a", "b"});
      EXPECT_EQ(network.SetTemporalType(0, parent), 0);
      EXPECT_EQ(network.SetTemporalType(1, child), 0);
      EXPECT_EQ(network.AddArc(0, 1, kPlain),
                kTemporalAllowed[parent][child] ? 0 : int{KVN_NOT_APPLICABLE})
          << parent << " -> " << child;
    }
  }
}

TEST(NetworkArcs, OrderOfParentsIsTheOrderOfDimensions) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"a", "b", "c", "x"});
  EXPECT_EQ(network.DefinitionOf(1)->AddOutcome("Third"), 0);
  for (int i = 0; i < 2; i++) EXPECT_EQ(network.DefinitionOf(2)->AddOutcome(nullptr), 0);
  AddArcs(network, {{"a", "x"}, {"b", "x"}, {"c", "x"}});
  // New place k takes old parent order[k]: c, a, b with 4, 2 and 3 outcomes.
  EXPECT_EQ(network.ChangeOrderOfParents(3, IntsOf({2, 0, 1})), 0);
  EXPECT_EQ(NamesOf(network, network.GetParents(3)), "c a b");
  KVN_Dmatrix* table = nullptr;
  ASSERT_EQ(network.DefinitionOf(3)->GetDefinition(table), 0);
  EXPECT_EQ(ItemsOf(table->GetDimensions()), (std::vector<int>{4, 2, 3, 2}));
  EXPECT_TRUE(network.TableFits(3));
  for (const KVN_intArray& bad : {IntsOf({0, 1}), IntsOf({0, 0, 1}), IntsOf({0, 1, 3})}) {
    EXPECT_EQ(network.ChangeOrderOfParents(3, bad), KVN_REFUSED);
  }
  EXPECT_EQ(network.ChangeOrderOfParents(0, KVN_intArray()), 0);
  EXPECT_EQ(NamesOf(network, network.GetParents(3)), "c a b");
  EXPECT_EQ(network.RemoveAllParents(3), 0);
  ASSERT_EQ(network.DefinitionOf(3)->GetDefinition(table), 0);
  EXPECT_EQ(table->GetSize(), 2);
  EXPECT_EQ(network.RemoveAllParents(99), KVN_REFUSED);
}

/// What the operations should give, by the plainest means.
class ReferenceGraph {
 public:
  bool Has(int a, int b) const { return arcs.count({a, b}) > 0; }
  bool Reaches(int from, int to) const {
    if (from == to) return true;
    for (const auto& [a, b] : arcs) {
      if (a == from && Reaches(b, to)) return true;
    }
    return false;
  }
  bool CanAdd(int a, int b) const { return a != b && !Has(a, b) && !Reaches(b, a); }

  std::set<std::pair<int, int>> arcs;
};

TEST(NetworkArcs, RandomEditsKeepTheGraphSound) {
  for (unsigned seed = 1; seed <= 8; seed++) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    constexpr int kNodes = 9;
    KVN_network network;
    for (int i = 0; i < kNodes; i++) EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, nullptr), i);
    for (int i = 0; i < kNodes; i += 2) {
      EXPECT_EQ(network.DefinitionOf(i)->AddOutcome("Third"), 0);
    }
    ReferenceGraph reference;
    for (int step = 0; step < 200; step++) {
      const int a = static_cast<int>(random() % kNodes);
      const int b = static_cast<int>(random() % kNodes);
      if (random() % 3 != 0 && network.GetNumberOfParents(b) < 4) {
        const bool can = reference.CanAdd(a, b);
        ASSERT_EQ(network.AddArc(a, b, kPlain), can ? 0 : int{KVN_REFUSED}) << a << "->" << b;
        if (can) reference.arcs.insert({a, b});
      } else {
        const bool stands = reference.arcs.erase({a, b}) > 0;
        ASSERT_EQ(network.RemoveArc(a, b, kPlain), stands ? 0 : int{KVN_REFUSED});
      }
    }
    ExpectListsInStep(network);
    size_t arcs = 0;
    for (int i = 0; i < kNodes; i++) {
      arcs += static_cast<size_t>(network.GetNumberOfParents(i));
      for (int parent : network.GetParents(i)) EXPECT_TRUE(reference.Has(parent, i));
      EXPECT_TRUE(network.TableFits(i)) << i;
    }
    EXPECT_EQ(arcs, reference.arcs.size());
  }
}

TEST(NetworkArcs, FailedAllocationLeavesTheGraphUnchanged) {
  // The ninth parent is the first that doesn't fit into the list's own storage.
  const int failures = FailEachAllocation([](int n) {
    KVN_network network;
    for (int i = 0; i < 10; i++) EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, nullptr), i);
    for (int i = 0; i < 8; i++) EXPECT_EQ(network.AddArc(i, 9, kPlain), 0);
    network.SetUpdateFlags(0);
    bool failed = false;
    const int result = RunFailing(n, failed, [&] { return network.AddArc(8, 9, kPlain); });
    EXPECT_EQ(result == 0, !failed) << n;
    EXPECT_EQ(network.GetNumberOfParents(9), failed ? 8 : 9);
    EXPECT_TRUE(network.TableFits(9));
    ExpectListsInStep(network);
    return failed;
  });
  EXPECT_GT(failures, 1);
}

}  // namespace
