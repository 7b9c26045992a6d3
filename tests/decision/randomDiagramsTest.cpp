// Generated diagrams against the whole decision tree.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "foundation/numberText.h"
#include "network/node.h"
#include "tests/decision/decisionTree.h"
#include "tests/decision/randomDiagrams.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/networkComparer.h"

namespace {

// Utilities of up to 200 after weighing, computed on a scale from 0 to 1: 1e-12 of these.
constexpr double kTolerance = 1e-9;

/// A decision's expected utilities after the evaluation, by what was known.
class Solved {
 public:
  Solved(KVN_network& n, const DecisionTree& t) : network(n), tree(t) {}

  /// How far the table of the decision is from the tree, at most, over all possible branches.
  double LargestError(int decision) const {
    double largest = 0.0;
    for (const auto& [known, worth] : tree.GetBranches(decision)) {
      for (std::size_t k = 0; k < worth.size(); k++) {
        if (std::isnan(worth[k])) continue;  // the alternative is impossible
        largest =
            std::max(largest, std::fabs(Cell(decision, known, static_cast<int>(k)) - worth[k]));
      }
    }
    return largest;
  }

  /// What is lost by the alternative that the table calls best.
  double LargestRegret(int decision) const {
    double largest = 0.0;
    for (const auto& [known, worth] : tree.GetBranches(decision)) {
      std::size_t best = 0;
      for (std::size_t k = 1; k < worth.size(); k++) {
        if (Cell(decision, known, static_cast<int>(best)) <
            Cell(decision, known, static_cast<int>(k))) {
          best = k;
        }
      }
      largest = std::max(largest, *std::max_element(worth.begin(), worth.end()) - worth[best]);
    }
    return largest;
  }

 private:
  double Cell(int decision, const std::vector<int>& known, int alternative) const {
    const KVN_nodeValue& value = *network.ValueOf(decision);
    const KVN_Dmatrix& matrix = MatrixOf(network, decision);
    int index = alternative;
    for (int i = 0; i < value.GetIndexingParents().GetNumItems(); i++) {
      const auto place =
          std::find(tree.GetOrder().begin(), tree.GetOrder().end(), value.GetIndexingParents()[i]);
      index += matrix.GetMultipliers()[i] *
               known[static_cast<std::size_t>(place - tree.GetOrder().begin())];
    }
    return matrix[index];
  }

  KVN_network& network;
  const DecisionTree& tree;
};

/// Whether anything depends on the decision: if not, its table is left at zeros.
bool Matters(KVN_network& network, int decision) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if ((network.TypeOf(h) & KVN_TYPE_BIT_UTILITY) == 0) continue;
    if (network.ValueOf(h)->GetIndexingParents().IsInList(decision)) return true;
  }
  return false;
}

TEST(RandomDiagrams, EveryTableIsThatOfTheDecisionTree) {
  int differing = 0;
  for (std::uint64_t seed = 0; seed < 2000; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    FillRandomDiagram(network, seed);
    const std::vector<int> order = PolicyNodesOf(network);
    const DecisionTree tree(network, order);
    (void)network.UserProperties().AddProperty("KVN_POLICY_EFFORT", "1");
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    const Solved solved(network, tree);
    bool differs = false;
    for (int node : order) {
      if (network.TypeOf(node) != KVN_TYPE_LIST || !Matters(network, node)) continue;
      differs = differs || solved.LargestError(node) > kTolerance;
    }
    if (differs) {
      differing++;
      std::printf("seed %d differs\n", static_cast<int>(seed));
    }
  }
  EXPECT_EQ(differing, 0);
}

}  // namespace
