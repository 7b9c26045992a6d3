#include <random>
#include <set>

#include "foundation/resultCodes.h"
#include "tests/network/networkTools.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"

namespace {

// a   d     Made in this order: x y a b c d, so that handles don't follow the arcs.
// |\  |
// b c |
//  \|/
//   x -> y
void MakeDiamond(KVN_network& network) {
  AddNodes(network, KVN_TYPE_CPT, {"x", "y", "a", "b", "c", "d"});
  AddArcs(network, {{"d", "x"}, {"c", "x"}, {"b", "x"}, {"a", "b"}, {"a", "c"}, {"x", "y"}});
}

TEST(GraphQueries, OrderFollowsHandlesAndParentLists) {
  KVN_network network;
  MakeDiamond(network);
  // x first, and for it its parents d, c (which wants a) and b.
  EXPECT_EQ(NamesOf(network, network.GetOrderOfNodes()), "d a c b x y");
  EXPECT_EQ(network.ChangeOrderOfParents(0, IntsOf({2, 1, 0})), 0);
  EXPECT_EQ(NamesOf(network, network.GetOrderOfNodes()), "a b c d x y");
}

TEST(GraphQueries, TemporalOrderPutsWhatIsKnownBeforeEachDecision) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"free", "late", "early"});
  AddNodes(network, KVN_TYPE_LIST, {"second", "first"});
  AddNodes(network, KVN_TYPE_TABLE, {"gain"});
  AddArcs(network, {{"late", "second"},
                    {"first", "second"},
                    {"early", "first"},
                    {"second", "gain"},
                    {"free", "gain"}});
  KVN_intArray list = IntsOf({42});
  EXPECT_EQ(network.GetTemporalOrder(list), 0);
  EXPECT_EQ(NamesOf(network, list), "early first late second free gain");
}

/// Recursive versions of the walks, as plain as can be.
struct Recursive {
  const KVN_network& network;
  std::set<int> seen = {};
  std::vector<int> order = {};

  void Visit(int node) {
    if (!seen.insert(node).second) return;
    for (int parent : network.GetParents(node)) Visit(parent);
    order.push_back(node);
  }
  bool IsTree(int node, int from) {
    if (!seen.insert(node).second) return false;
    for (int layerless : {0, 1}) {
      const KVN_intArray& list =
          layerless == 0 ? network.GetParents(node) : network.GetChildren(node);
      for (int next : list) {
        if (next != from && !IsTree(next, node)) return false;
      }
    }
    return true;
  }
};

TEST(GraphQueries, WalksGiveWhatRecursionGives) {
  int trees = 0;
  for (unsigned seed = 1; seed <= 60; seed++) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    KVN_network network;
    constexpr int kNodes = 14;
    for (int i = 0; i < kNodes; i++) EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, nullptr), i);
    const unsigned arcs = random() % 14;
    for (unsigned i = 0; i < arcs; i++) {
      (void)network.AddArc(static_cast<int>(random() % kNodes), static_cast<int>(random() % kNodes),
                           kPlain);
    }
    EXPECT_EQ(network.DeleteNode(static_cast<int>(random() % kNodes)), 0);
    Recursive order{network};
    bool isTree = true;
    Recursive walk{network};
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      order.Visit(h);
      if (walk.seen.count(h) == 0) isTree = walk.IsTree(h, -1) && isTree;
    }
    EXPECT_EQ(ItemsOf(network.GetOrderOfNodes()), order.order);
    EXPECT_EQ(network.IsSinglyConnected(), isTree ? 1 : 0);
    trees += isTree ? 1 : 0;
  }
  EXPECT_GT(trees, 5);
  EXPECT_LT(trees, 55);
}

// Built with all hooks on: what nothing can become stale by must cost nothing, or this never ends.
TEST(GraphQueries, DeepNetworksNeedNoDeepStack) {
  RunInSmallStack([] {
    constexpr int kNodes = FewerIfSanitized(50000);
    KVN_network network;
    for (int i = 0; i < kNodes; i++) ASSERT_EQ(network.AddNode(KVN_TYPE_CPT, nullptr), i);
    for (int i = kNodes - 1; i > 0; i--) ASSERT_EQ(network.AddArc(i, i - 1, kPlain), 0);
    EXPECT_EQ(network.AddArc(0, kNodes - 1, kPlain), KVN_REFUSED);
    EXPECT_EQ(network.GetOrderOfNodes()[0], kNodes - 1);
    EXPECT_EQ(network.IsSinglyConnected(), 1);
    KVN_intArray list;
    EXPECT_EQ(network.GetDescendants(kNodes - 1, list), 0);
    EXPECT_EQ(list.GetNumItems(), kNodes - 1);
    EXPECT_EQ(network.GetTemporalOrder(list), 0);
    EXPECT_EQ(list.GetNumItems(), kNodes);
    const KVN_network copy(network);
    EXPECT_EQ(copy.GetNumberOfNodes(), kNodes);
    const std::string lastId = "Node" + std::to_string(kNodes - 1);
    EXPECT_EQ(copy.FindNode(lastId.c_str()), kNodes - 1);
  });
}

}  // namespace
