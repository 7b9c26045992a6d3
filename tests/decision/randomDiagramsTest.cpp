// Generated diagrams against the whole decision tree.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "network/network.h"
#include "tests/decision/decisionTree.h"
#include "tests/decision/randomDiagrams.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/networkComparer.h"
#include "tests/support/sanitized.h"

namespace {

// Utilities of up to 200 after weighing, computed on a scale from 0 to 1: 1e-12 of these.
constexpr double kTolerance = 1e-9;

/// The expected utilities of a decision's alternatives after the evaluation, by what was known.
class Solved {
 public:
  Solved(KVN_network& n, const DecisionTree& t) : network(n), tree(t) {}

  /// How far the table is from the tree, at most, over all possible branches.
  double LargestError(int decision) const {
    double largest = 0.0;
    for (const auto& [known, worth] : tree.GetBranches(decision)) {
      const double* cells = Row(decision, known);
      for (std::size_t k = 0; k < worth.size(); k++) {
        const double error = std::fabs(cells[k] - worth[k]);
        if (std::isnan(error)) return std::numeric_limits<double>::infinity();
        largest = std::max(largest, error);
      }
    }
    return largest;
  }

 private:
  const double* Row(int decision, const std::vector<int>& known) const {
    const KVN_intArray& indexing = network.ValueOf(decision)->GetIndexingParents();
    const KVN_Dmatrix& matrix = MatrixOf(network, decision);
    int start = 0;
    for (int i = 0; i < indexing.GetNumItems(); i++) {
      const auto& order = tree.GetOrder();
      const auto place = std::find(order.begin(), order.end(), indexing[i]) - order.begin();
      start += matrix.GetMultipliers()[i] * known[static_cast<std::size_t>(place)];
    }
    return matrix.GetData() + start;
  }

  KVN_network& network;
  const DecisionTree& tree;
};

bool IsDecision(KVN_network& network, int node) { return network.TypeOf(node) == KVN_TYPE_LIST; }

/// Whether a result depends on the node: if not, a decision's table is left at zeros.
bool IsEnumerated(KVN_network& network, int node) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (network.ValueOf(h)->GetIndexingParents().IsInList(node)) return true;
  }
  return false;
}

/// The largest error of all decisions. One that isn't enumerated must be worth the same with every
/// alternative.
double LargestErrorOf(KVN_network& network, const DecisionTree& tree) {
  double largest = 0.0;
  for (int node : tree.GetOrder()) {
    if (!IsDecision(network, node)) continue;
    if (IsEnumerated(network, node)) {
      largest = std::max(largest, Solved(network, tree).LargestError(node));
      continue;
    }
    for (const auto& [known, worth] : tree.GetBranches(node)) {
      const auto [low, high] = std::minmax_element(worth.begin(), worth.end());
      largest = std::max(largest, *high - *low);
    }
  }
  return largest;
}

void AskForEffort(KVN_network& network) {
  EXPECT_EQ(network.UserProperties().AddProperty("KVN_POLICY_EFFORT", "1"), 0);
}

/// Nothing that the user has set is touched, but for the assumed arcs.
void ExpectUntouched(KVN_network& before, KVN_network& after) {
  NetworkCompareOptions compare;
  compare.ignored = {"node.parents"};
  EXPECT_TRUE(NetworksEqual(before, after, compare));
  EXPECT_EQ(before.GetChangeMask(), after.GetChangeMask());
  EXPECT_EQ(before.GetUpdateFlags(), after.GetUpdateFlags());
  EXPECT_EQ(before.GetNumberOfNodes(), after.GetNumberOfNodes());
  for (int h = before.GetFirstNode(); h >= 0; h = before.GetNextNode(h)) {
    EXPECT_EQ(before.ValueOf(h)->GetEvidence(), after.ValueOf(h)->GetEvidence());
    EXPECT_EQ(before.IsTarget(h), after.IsTarget(h));
  }
}

/// The order that both the evaluators and the tree below go by, against what makes one: each node
/// that is decided or observed for a decision once, and what a decision knows before it.
TEST(RandomDiagrams, OrderHasWhatIsKnownBeforeEachDecision) {
  for (std::uint64_t seed = 0; seed < FewerIfSanitized(500u); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    FillRandomDiagram(network, seed);
    const std::vector<int> order = PolicyNodesOf(network);
    const auto placeOf = [&order](int node) {
      return std::find(order.begin(), order.end(), node) - order.begin();
    };
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      bool isKnown = IsDecision(network, h);
      for (int child : network.GetChildren(h)) isKnown = isKnown || IsDecision(network, child);
      const bool isOpen = !network.ValueOf(h)->HasEvidence();
      ASSERT_EQ(std::count(order.begin(), order.end(), h), isKnown && isOpen ? 1 : 0) << h;
      if (!isOpen || !IsDecision(network, h)) continue;
      for (int parent : network.GetParents(h)) {
        if (!network.ValueOf(parent)->HasEvidence()) {
          ASSERT_LT(placeOf(parent), placeOf(h));
        }
      }
    }
  }
}

TEST(RandomDiagrams, WithEffortEveryTableIsThatOfTheDecisionTree) {
  for (std::uint64_t seed = 0; seed < FewerIfSanitized(2000u); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    FillRandomDiagram(network, seed);
    const DecisionTree tree(network, PolicyNodesOf(network));
    AskForEffort(network);
    // What else the user wants to know must not take anything from the policy.
    if (seed % 3 == 0) (void)network.SetTarget(network.GetFirstNode());
    KVN_network before(network);
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    ASSERT_LE(LargestErrorOf(network, tree), kTolerance);
    if (seed % 10 == 0) ExpectUntouched(before, network);
    if (testing::Test::HasFailure()) return;
  }
}

/// Without effort the tables may fall short of the tree's, but only where the effort goes into
/// further nodes or into finding out what these depend on.
TEST(RandomDiagrams, WithoutEffortTheTablesAreThoseOfWhatIsEnumerated) {
  int differing = 0;
  for (std::uint64_t seed = 0; seed < FewerIfSanitized(600u); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network, careful;
    FillRandomDiagram(network, seed);
    FillRandomDiagram(careful, seed);
    AskForEffort(careful);
    const DecisionTree tree(network, PolicyNodesOf(network));
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    if (LargestErrorOf(network, tree) <= kTolerance) continue;
    differing++;
    ASSERT_EQ(careful.UpdateBeliefs(), 0);
    bool isExplained = false;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      const KVN_intArray& one = network.ValueOf(h)->GetIndexingParents();
      const KVN_intArray& other = careful.ValueOf(h)->GetIndexingParents();
      isExplained = isExplained || !std::equal(one.begin(), one.end(), other.begin(), other.end());
    }
    EXPECT_TRUE(isExplained);
  }
  EXPECT_GT(differing, 0) << "nothing takes effort: this shows less than it says";
  EXPECT_LE(differing, 600 / 15);
}

}  // namespace
