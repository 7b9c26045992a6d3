// The join tree with explicit separators: its posteriors, the shape of the tree, and its size.

#include "inference/exact/sepsetJoinTree.h"

#include <algorithm>
#include <cmath>

#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "network/network.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomBayes.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"

namespace {

constexpr double kRounding = 1e-12;

bool Holds(const KVN_intArray& sorted, int value) {
  return std::binary_search(sorted.begin(), sorted.end(), value);
}

/// A variable's cliques are connected: going up from each of them, all but one have the variable in
/// the sepset above.
void ExpectRunningIntersection(RelevanceGraph& part, const SepsetJoinTree& tree) {
  for (int v = 0; v < part.GetSize(); v++) {
    if (part.Node(v).HasEvidence()) continue;
    int cliques = 0;
    int sepsets = 0;
    for (int i = 0; i < tree.GetNumberOfCliques(); i++) {
      if (Holds(tree.GetClique(i).variables, v)) cliques++;
      if (i > 0 && Holds(tree.GetSepset(i - 1).open, v)) sepsets++;
    }
    EXPECT_EQ(cliques, sepsets + 1) << "variable " << v;
  }
}

TEST(SepsetJoinTree, HasMaximalCliquesInBreadthFirstOrder) {
  for (std::uint64_t seed = 0; seed < 200; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    FillRandomBayes(network, seed, {.nodes = 30, .maxParents = 3, .maxOutcomes = 3});
    ObserveAtRandom(network, seed, 0.1, /*possible=*/true);
    int result = 0;
    const std::unique_ptr<RelevanceParts> parts = ReduceNetwork(network, true, true, result);
    ASSERT_EQ(result, 0);
    for (int p = 0; p < parts->GetCount(); p++) {
      RelevanceGraph& part = (*parts)[p];
      if (part.GetSize() == 1) continue;
      SepsetJoinTree tree(part);
      ASSERT_EQ(tree.Build(), 0);
      ExpectRunningIntersection(part, tree);
      for (int i = 0; i < tree.GetNumberOfCliques(); i++) {
        const KVN_intArray& clique = tree.GetClique(i).variables;
        for (int j = 0; j < tree.GetNumberOfCliques(); j++) {
          const KVN_intArray& other = tree.GetClique(j).variables;
          EXPECT_TRUE(i == j ||
                      !std::includes(other.begin(), other.end(), clique.begin(), clique.end()));
        }
        if (i == 0) continue;
        const int from = tree.GetSepset(i - 1).fromClique;
        EXPECT_EQ(tree.GetSepset(i - 1).toClique, i);
        EXPECT_LT(from, i);
        EXPECT_LE(i == 1 ? 0 : tree.GetSepset(i - 2).fromClique, from);
      }
    }
  }
}

// Logic alone doesn't see the contradiction: each finding leaves two outcomes of its parent. A and
// B are equal, S and T say that they differ.
TEST(SepsetJoinTree, ContradictionMakesPosteriorsThatAreNoNumbers) {
  KVN_network network;
  network.SetUpdateFlags(0);
  const int a = AddCpt(network, "A", 3, {}, {0.2, 0.3, 0.5});
  const int b = AddCpt(network, "B", 3, {a}, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  const int s = AddCpt(network, "S", 2, {a, b},
                       {0, 1, 1, 0, 1, 0,  //
                        1, 0, 0, 1, 1, 0,  //
                        1, 0, 1, 0, 0, 1});
  ASSERT_EQ(network.ValueOf(s)->SetEvidence(0), 0);
  const int apart = AddCpt(network, "Apart", 2, {}, {0.25, 0.75});
  ASSERT_EQ(SepsetJoinTreeUpdate(network), 0);
  for (int h : {a, b}) {
    EXPECT_TRUE(network.ValueOf(h)->IsValueValid());
    EXPECT_TRUE(std::isnan(MatrixOf(network, h)[0]));
  }
  EXPECT_TRUE(CellsNear(MatrixOf(network, apart), {0.25, 0.75}, 0.0));
}

// With A alone as target, B is written as well: it is in A's part.
TEST(SepsetJoinTree, WritesEveryNodeOfAPart) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {a}, {0.9, 0.1, 0.2, 0.8});
  const int c = AddCpt(network, "C", 2, {b}, {0.6, 0.4, 0.3, 0.7});
  const int barren = AddCpt(network, "D", 2, {b}, {0.5, 0.5, 0.5, 0.5});
  ASSERT_EQ(network.SetTarget(a), 0);
  ASSERT_EQ(network.ValueOf(c)->SetEvidence(0), 0);
  ASSERT_EQ(SepsetJoinTreeUpdate(network), 0);
  // P(B=0, C=0) = 0.55 * 0.6 = 0.33, P(B=1, C=0) = 0.45 * 0.3 = 0.135
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.33 / 0.465, 0.135 / 0.465}, kRounding));
  EXPECT_TRUE(network.ValueOf(b)->IsValueValid());
  EXPECT_FALSE(network.ValueOf(barren)->IsValueValid());
}

// See the same test of the polytree: the odds are 1.001^count.
TEST(SepsetJoinTree, DoesNotUnderflowAndBearsAHub) {
  constexpr int kFindings = 1000;
  constexpr int kLeaves = 5000;
  KVN_network network;
  network.SetUpdateFlags(0);
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  int leaf = -1;
  for (int i = 0; i < kLeaves; i++) {
    leaf = AddCpt(network, nullptr, 2, {a}, {1.001e-5, 1 - 1.001e-5, 1e-5, 1 - 1e-5});
    if (i >= kFindings) continue;
    ASSERT_EQ(network.ValueOf(leaf)->SetEvidence(0), 0);
  }
  ASSERT_EQ(SepsetJoinTreeUpdate(network), 0);
  const double odds = std::pow(1.001, kFindings);
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {odds / (1 + odds), 1 / (1 + odds)}, 1e-10));
  EXPECT_NEAR(MatrixOf(network, leaf)[0], 1e-5 + 1e-8 * odds / (1 + odds), 1e-12);
}

// All 50,000 nodes are in one part. Without findings each state has probability 0.5.
TEST(SepsetJoinTree, LongChainNeedsLittleStackAndTime) {
  RunInSmallStack([] {
    KVN_network network;
    network.SetUpdateFlags(0);
    int first = AddCpt(network, nullptr, 2, {}, {0.5, 0.5});
    int last = first;
    for (int i = 1; i < FewerIfSanitized(50000); i++) {
      last = AddCpt(network, nullptr, 2, {last}, {0.9, 0.1, 0.1, 0.9});
    }
    ASSERT_EQ(network.ValueOf(last)->SetEvidence(0), 0);
    ASSERT_EQ(SepsetJoinTreeUpdate(network), 0);
    EXPECT_NEAR(MatrixOf(network, first)[0], 0.5, kRounding);
    EXPECT_TRUE(CellsNear(MatrixOf(network, last), {1, 0}, 0.0));
    // One step away 0.9, two steps away 0.9^2 + 0.1^2.
    const int before = network.GetParents(last)[0];
    EXPECT_TRUE(CellsNear(MatrixOf(network, before), {0.9, 0.1}, kRounding));
    EXPECT_NEAR(MatrixOf(network, network.GetParents(before)[0])[0], 0.82, kRounding);
  });
}

// Each pair of 8 roots of 16 outcomes has an observed child: the one clique would have 2^32 cells
// at least. The pair beside it is computed all the same.
TEST(SepsetJoinTree, PartTooLargeForMemoryIsNoObstacleToOthers) {
  KVN_network network;
  network.SetUpdateFlags(0);
  std::vector<int> roots;
  std::vector<double> prior(16, 1.0 / 16);
  for (int i = 0; i < 8; i++) roots.push_back(AddCpt(network, nullptr, 16, {}, prior));
  for (int i = 0; i < 8; i++) {
    for (int j = 0; j < i; j++) {
      const int child = AddNodeBelow(network, KVN_TYPE_CPT, nullptr, 2, {roots[j], roots[i]});
      TableOfNode(network, child).FillWith(0.5);
      ASSERT_EQ(network.ValueOf(child)->SetEvidence(0), 0);
    }
  }
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {a}, {0.9, 0.1, 0.2, 0.8});
  EXPECT_EQ(SepsetJoinTreeUpdate(network), KVN_NO_MEMORY);
  EXPECT_FALSE(network.ValueOf(roots[0])->IsValueValid());
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.55, 0.45}, kRounding));
}

TEST(SepsetJoinTree, FailingAllocationsGiveACode) {
  const int failures = FailEachAllocation([](int n) {
    KVN_network network;
    FillRandomBayes(network, /*seed=*/3, {.nodes = 12, .maxParents = 4});
    ObserveAtRandom(network, /*seed=*/3, 0.2, /*possible=*/true);
    FailingAllocation failing(n);
    const int result = SepsetJoinTreeUpdate(network);
    EXPECT_EQ(result, failing.HasFailed() ? int{KVN_NO_MEMORY} : 0);
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 20);
}

}  // namespace
