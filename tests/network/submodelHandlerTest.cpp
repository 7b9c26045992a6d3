#include "network/submodelHandler.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/submodel.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"

namespace {

constexpr int kBit = KVN_SUBMODEL_BIT;

/// Root with a and c below it, b and d below a; the indexes are 1 to 4 in the order of creation.
class SubmodelTree : public testing::Test {
 protected:
  SubmodelTree() {
    EXPECT_EQ(tree.Create(KVN_ROOT_SUBMODEL, "a"), 1 + kBit);
    EXPECT_EQ(tree.Create(1 + kBit, "b"), 2 + kBit);
    EXPECT_EQ(tree.Create(KVN_ROOT_SUBMODEL, "c"), 3 + kBit);
    EXPECT_EQ(tree.Create(1 + kBit, "d"), 4 + kBit);
  }

  const char* IdOf(int handle) { return tree.GetSubmodel(handle)->Header().GetId(); }

  KVN_network network;
  KVN_submodelHandler& tree = network.Submodels();
};

}  // namespace

TEST_F(SubmodelTree, WalksGoByTableOrLevelByLevel) {
  KVN_intArray walked;
  for (int i = tree.GetFirst(); i >= 0; i = tree.GetNext(i)) EXPECT_EQ(walked.Add(i - kBit), 0);
  EXPECT_EQ(ItemsOf(walked), (std::vector<int>{0, 1, 2, 3, 4}));

  KVN_intArray levels;
  EXPECT_EQ(tree.GetDescendants(levels), 0);
  EXPECT_EQ(ItemsOf(levels), (std::vector<int>{kBit, 1 + kBit, 3 + kBit, 2 + kBit, 4 + kBit}));

  KVN_intArray children = IntsOf({7});  // what is in the list already stays as it is
  EXPECT_EQ(tree.GetChildren(1 + kBit, children), 0);
  EXPECT_EQ(ItemsOf(children), (std::vector<int>{7, 2 + kBit, 4 + kBit}));
  EXPECT_EQ(tree.GetChildrenIndex(5, children), KVN_REFUSED);

  EXPECT_EQ(tree.IsDescendantIndex(2, 0), 1);
  EXPECT_EQ(tree.IsDescendantIndex(2, 3), 0);
  EXPECT_EQ(tree.IsDescendantIndex(2, 2), 0);
  EXPECT_EQ(tree.IsDescendantIndex(5, 0), KVN_REFUSED);  // grown, but free
}

TEST_F(SubmodelTree, MoveKeepsATree) {
  const struct {
    const char* name;
    int moved, target, result, parentAfter;
  } cases[] = {
      {"the root stays", 0, 1 + kBit, KVN_REFUSED, -8888},
      {"not below itself", 1 + kBit, 1 + kBit, KVN_REFUSED, kBit},
      {"not below its child", 1 + kBit, 2 + kBit, KVN_REFUSED, kBit},
      {"not below a free entry", 2 + kBit, 6 + kBit, KVN_REFUSED, 1 + kBit},
      {"bare indexes will do", 2, 3, 0, 3 + kBit},
      {"with its own children", 1 + kBit, 3 + kBit, 0, 3 + kBit},
      {"now its grandchild", 3 + kBit, 4 + kBit, KVN_REFUSED, kBit},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(tree.Move(c.moved, c.target), c.result);
    EXPECT_EQ(tree.GetParent(c.moved), c.parentAfter);
  }
}

TEST_F(SubmodelTree, CreateTestsAndMakesNames) {
  EXPECT_EQ(tree.Create(KVN_ROOT_SUBMODEL, "a"), KVN_REFUSED);
  EXPECT_EQ(tree.Create(9 + kBit, "e"), KVN_REFUSED);
  EXPECT_EQ(network.AddNode(18, "a"), KVN_REFUSED);  // one namespace with the nodes

  // A generated name looks at submodels alone: index 5 is taken by a node, 6 by a submodel.
  ASSERT_GE(network.AddNode(18, "Sub5"), 0);
  EXPECT_STREQ(IdOf(tree.Create(KVN_ROOT_SUBMODEL, nullptr)), "Sub5");
  EXPECT_EQ(tree.Create(KVN_ROOT_SUBMODEL, "Sub7"), 6 + kBit);
  EXPECT_STREQ(IdOf(tree.Create(KVN_ROOT_SUBMODEL, nullptr)), "Sub8");

  // An illegal identifier leaves a submodel with a name alone.
  const int nameless = tree.Create(KVN_ROOT_SUBMODEL, "1 b");
  ASSERT_EQ(nameless, 8 + kBit);
  EXPECT_EQ(IdOf(nameless), nullptr);
  EXPECT_STREQ(tree.GetSubmodel(nameless)->Header().GetName(), "1 b");
  EXPECT_EQ(tree.Find("1 b"), KVN_REFUSED);
  EXPECT_EQ(tree.Find(nullptr), KVN_REFUSED);
}

TEST_F(SubmodelTree, GrowthKeepsWhatStands) {
  for (int i = 5; i < 40; i++) EXPECT_EQ(tree.Create(i - 1, nullptr), i + kBit);
  EXPECT_EQ(tree.GetParent(39), 38 + kBit);
  EXPECT_EQ(tree.IsDescendantIndex(39, 1), 1);
  EXPECT_STREQ(IdOf(2), "b");
}

TEST_F(SubmodelTree, NodesAreFoundWithOrWithoutTheBit) {
  const int first = network.AddNode(18, "x");
  const int second = network.AddNode(18, "y");
  const int third = network.AddNode(18, "z");
  EXPECT_EQ(network.GetNode(third)->SetSubmodel(2 + kBit), 0);
  EXPECT_EQ(network.GetNode(first)->SetSubmodel(2), 0);
  KVN_intArray nodes;
  EXPECT_EQ(tree.GetNodes(2 + kBit, nodes), 2);
  EXPECT_EQ(tree.GetNodesIndex(0, nodes), 0);
  EXPECT_EQ(ItemsOf(nodes), (std::vector<int>{first, third, second}));
}

TEST_F(SubmodelTree, CopyKeepsIndexesAndTakesTheDefaultsOfNodesAlone) {
  tree.GetSubmodel(2)->SetWindowColor(5);
  ASSERT_EQ(tree.GetSubmodel(2)->TextBoxes().AddTextBox(KVN_rectangle(1, 2, 3, 4), "note"), 0);
  tree.NodeDefaults().color = 1;
  tree.SubmodelDefaults().color = 2;
  ASSERT_EQ(tree.Create(KVN_ROOT_SUBMODEL, "1 b"), 5 + kBit);

  KVN_network other;
  KVN_submodelHandler& copy = other.Submodels();
  ASSERT_EQ(copy.Assign(tree), 0);
  tree.GetSubmodel(2)->SetWindowColor(6);
  EXPECT_EQ(copy.Find("d"), 4 + kBit);
  EXPECT_EQ(copy.GetParent(2), 1 + kBit);
  EXPECT_EQ(copy.GetSubmodel(2)->GetWindowColor(), 5);
  EXPECT_STREQ(copy.GetSubmodel(2)->TextBoxes().GetText(0), "note");
  EXPECT_EQ(copy.GetSubmodel(2)->TextBoxes().GetPosition(0).height, 4);
  EXPECT_STREQ(copy.GetSubmodel(5)->Header().GetName(), "1 b");
  EXPECT_EQ(copy.GetSubmodel(7), nullptr);
  EXPECT_EQ(copy.NodeDefaults().color, 1);
  EXPECT_EQ(copy.SubmodelDefaults().color, 16250597);
}

TEST_F(SubmodelTree, ClearMakesARootWithAGeneratedName) {
  tree.NodeDefaults().color = 1;
  tree.CleanUp(/*deep=*/1);
  KVN_intArray list;
  EXPECT_EQ(tree.GetDescendants(list), KVN_NOT_READY);
  EXPECT_EQ(tree.Create(KVN_ROOT_SUBMODEL, "a"), KVN_NOT_READY);
  EXPECT_EQ(tree.Clear(), 0);
  EXPECT_STREQ(IdOf(KVN_ROOT_SUBMODEL), "Sub0");
  EXPECT_EQ(tree.GetNext(KVN_ROOT_SUBMODEL), KVN_REFUSED);
  EXPECT_EQ(tree.NodeDefaults().color, 16250597);
}

TEST_F(SubmodelTree, WithoutMemoryTheTreeStays) {
  KVN_network source;
  const int failures = FailEachAllocation([&](int n) {
    FailingAllocation failing(n);
    const int result = tree.Create(1 + kBit, "e");
    if (failing.HasFailed()) {
      EXPECT_EQ(result, KVN_NO_MEMORY);
      EXPECT_EQ(tree.Exists("e"), 0);
    }
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 2);
  EXPECT_EQ(tree.Find("e"), 5 + kBit);

  FailEachAllocation([&](int n) {
    FailingAllocation failing(n);
    const int result = tree.Assign(source.Submodels());
    EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : KVN_SUCCESS);
    EXPECT_EQ(tree.Find("e"), result == 0 ? KVN_REFUSED : 5 + kBit);
    return failing.HasFailed();
  });
}
