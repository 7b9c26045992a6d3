// What best policy search answers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "foundation/resultCodes.h"
#include "network/network.h"
#include "tests/decision/countingTable.h"
#include "tests/decision/decisionTree.h"
#include "tests/decision/randomDiagrams.h"
#include "tests/support/builders.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"

namespace {

using testing::ElementsAre;

constexpr int kBestPolicy = 1;

int CountValid(KVN_network& network) {
  int count = 0;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    count += network.ValueOf(h)->IsValueValid() ? 1 : 0;
  }
  return count;
}

/// D over three alternatives, with two utilities that share it and one more parent, A.
struct Shared {
  KVN_network network;
  int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 3, {});
  int u = AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {d, a});
  int v = AddNodeBelow(network, KVN_TYPE_TABLE, "V", 0, {d});

  Shared(const std::vector<double>& ofU, const std::vector<double>& ofV) {
    WriteCells(network, u, ofU);
    WriteCells(network, v, ofV);
    network.SetDefaultIDAlgorithm(kBestPolicy);
  }
};

TEST(BestPolicy, AddsUpUtilitiesAndTakesTheFirstOfEquals) {
  const struct {
    const char* name;
    std::vector<double> u, v, choice;
  } cases[] = {
      {"sum", {0, 4, 3, 3, 0, 0}, {0, 0, 2}, {0, 1, 0}},             // 2, 3, 2
      {"tie", {0, 4, 3, 3, 0, 8}, {1, 0, 0}, {0, 0, 1}},             // 3, 3, 4
      {"equal", {0, 4, 3, 3, 0, 6}, {1, 0, 0}, {1, 0, 0}},           // 3, 3, 3
      {"negative", {-9, -9, -1, -3, 0, -8}, {0, -1, 0}, {0, 1, 0}},  // -9, -3, -4
      {"flat", {5, 5, 5, 5, 5, 5}, {0, 0, 0}, {1, 0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Shared s(c.u, c.v);
    ASSERT_EQ(s.network.UpdateBeliefs(), 0);
    EXPECT_TRUE(CellsNear(MatrixOf(s.network, s.d), c.choice, 0.0));
    EXPECT_TRUE(s.network.ValueOf(s.d)->IsValueValid());
    EXPECT_EQ(CountValid(s.network), 1);
    EXPECT_EQ(s.network.GetNumberOfNodes(), 4);
    EXPECT_EQ(s.network.GetChangeMask(), 463);
  }
}

/// The weights of both levels multiply: u counts 6 times, v counts -1 times.
TEST(BestPolicy, WeighsWhatIsCombined) {
  Shared s({0, 0, 1, 1, 2, 2}, {0, 5, 11});
  const int low = AddNodeBelow(s.network, KVN_TYPE_MAU, "Low", 0, {s.u});
  const int top = AddNodeBelow(s.network, KVN_TYPE_MAU, "Top", 0, {s.v, low});
  WriteCells(s.network, low, {2});
  WriteCells(s.network, top, {-1, 3});
  ASSERT_EQ(s.network.UpdateBeliefs(), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(s.network, s.d), {0, 1, 0}, 0.0));  // 0, 1, 1
  WriteCells(s.network, low, {3});
  ASSERT_EQ(s.network.UpdateBeliefs(), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(s.network, s.d), {0, 0, 1}, 0.0));  // 0, 4, 7
  EXPECT_TRUE(CellsNear(TableOfNode(s.network, s.u), {0, 0, 1, 1, 2, 2}, 0.0));
}

TEST(BestPolicy, RefusesWithTheReason) {
  Shared unobserved({0, 1, 2, 3, 4, 5}, {0, 0, 0});
  ASSERT_EQ(unobserved.network.AddArc(unobserved.a, unobserved.d, 0), 0);
  {
    const LogWatch log;
    EXPECT_EQ(unobserved.network.UpdateBeliefs(), KVN_REFUSED);
    EXPECT_THAT(log.Texts(), ElementsAre("Can't solve this network using best policy algorithm"));
  }
  EXPECT_NE(unobserved.network.GetChangeMask(), 0);
  ASSERT_EQ(unobserved.network.ValueOf(unobserved.a)->SetEvidence(0), 0);
  EXPECT_EQ(unobserved.network.UpdateBeliefs(), 0);

  Shared wide({0, 1, 2, 3, 4, 5}, {0, 0, 0});
  for (int i = 0; i < 12; i++) {
    if (i == 11) {
      EXPECT_EQ(wide.network.UpdateBeliefs(), 0) << "13 parents";
    }
    const int node = AddNodeBelow(wide.network, KVN_TYPE_CPT, nullptr, 2, {});
    (void)AddNodeBelow(wide.network, KVN_TYPE_TABLE, nullptr, 0, {node});
  }
  {
    const LogWatch log;
    EXPECT_EQ(wide.network.UpdateBeliefs(), KVN_REFUSED);
    EXPECT_THAT(log.Texts(),
                ElementsAre("Cannot solve this network using SHACHTER's algorithm. Error while "
                            "merging utility nodes (too many parents)"));
  }
  EXPECT_EQ(wide.network.GetChangeMask(), 0) << "as documented";
  EXPECT_EQ(CountValid(wide.network), 0);

  KVN_network none;
  (void)AddNodeBelow(none, KVN_TYPE_TABLE, "U", 0, {});
  none.SetDefaultIDAlgorithm(kBestPolicy);
  const LogWatch log;
  EXPECT_EQ(none.UpdateBeliefs(), KVN_REFUSED);
  EXPECT_THAT(log.Texts(), ElementsAre("Error when running Shachter's algorithm"));
}

/// The second decision has no say; where nothing is known of any alternative, the position of the
/// choice made before in the search stands.
TEST(BestPolicy, CarriesAChoiceOverWhereNothingIsKnown) {
  Shared s({0, 0, 1, 1, 2, 2}, {0, 0, 0});
  ASSERT_EQ(s.network.ValueOf(s.d)->SetEvidence(0), 0);
  const int first = AddNodeBelow(s.network, KVN_TYPE_LIST, "First", 2, {});
  const int second = AddNodeBelow(s.network, KVN_TYPE_LIST, "Second", 2, {first});
  ASSERT_EQ(s.network.AddArc(second, s.v, 0), 0);
  WriteCells(s.network, s.v, {0, 1, 0, 1, 0, 1});
  ASSERT_EQ(s.network.UpdateBeliefs(), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(s.network, first), {1, 0}, 0.0)) << "equal, so the first";
  EXPECT_FALSE(s.network.ValueOf(second)->IsValueValid());
  EXPECT_FALSE(s.network.ValueOf(s.d)->IsValueValid());
  // The later decision is looked at first, and its second alternative is the best. Without a
  // posterior for the first decision that is the answer for it, too.
  theUpdateCount = 0;
  theBlindUpdate = 2;
  EXPECT_EQ(s.network.UpdateBeliefs(), 0);
  theBlindUpdate = 0;
  EXPECT_TRUE(CellsNear(MatrixOf(s.network, first), {0, 1}, 0.0));
}

/// With one decision the answer is exact.
TEST(BestPolicy, OneDecisionAgainstTheDecisionTree) {
  RandomDiagramOptions options;
  options.maxDecisions = 1;
  options.combine = false;
  int solved = 0;
  for (std::uint64_t seed = 0; seed < 1500; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    KVN_network network;
    FillRandomDiagram(network, seed, options);
    network.SetDefaultIDAlgorithm(kBestPolicy);
    const std::vector<int> order = PolicyNodesOf(network);
    // Something is still to be observed, or the decision has been made.
    if (order.size() != 1 || network.TypeOf(order[0]) != KVN_TYPE_LIST) continue;
    const DecisionTree tree(network, order);
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    const KVN_Dmatrix& choice = MatrixOf(network, order[0]);
    for (const auto& [known, worth] : tree.GetBranches(order[0])) {
      for (std::size_t k = 0; k < worth.size(); k++) {
        if (choice[static_cast<int>(k)] == 0.0) continue;
        EXPECT_NEAR(worth[k], *std::max_element(worth.begin(), worth.end()), 1e-9);
        solved++;
      }
    }
  }
  EXPECT_GT(solved, 500);
}

}  // namespace
