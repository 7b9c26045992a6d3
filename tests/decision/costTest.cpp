// How much work an evaluation does.

#include <gtest/gtest.h>

#include <string>

#include "network/network.h"
#include "tests/decision/countingTable.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"

namespace {

/// Four decisions over hidden nodes, each made after three more of twelve tests. The tests with
/// even numbers are those of the hidden nodes that the utilities look at; the others test nothing
/// that matters.
class TwelveTests {
 public:
  /// `others` hidden nodes besides the twelve that have a test.
  explicit TwelveTests(int others) {
    std::vector<int> hidden;
    for (int i = 0; i < others + 12; i++) {
      std::vector<int> parents;
      if (i > 0 && i < others + 6) parents.push_back(hidden[random.Below(i)]);
      hidden.push_back(AddChance("H" + std::to_string(i), parents));
    }
    std::vector<int> known;
    for (int i = 0; i < 4; i++) {
      for (int k = 3 * i; k < 3 * i + 3; k++) {
        const int above = k % 2 == 0 ? hidden[k / 2] : hidden[others + 6 + k / 2];
        known.push_back(AddChance("T" + std::to_string(k), {above}));
      }
      std::vector<int> parents = known;
      if (i > 0) parents.push_back(decisions.back());
      decisions.push_back(
          AddNodeBelow(network, KVN_TYPE_LIST, ("D" + std::to_string(i)).c_str(), 2, parents));
    }
    for (int i = 0; i < 4; i++) {
      const int u = AddNodeBelow(network, KVN_TYPE_TABLE, ("U" + std::to_string(i)).c_str(), 0,
                                 {decisions[i], hidden[i], hidden[i + 2]});
      for (int c = 0; c < 8; c++) TableOfNode(network, u)[c] = random.Between(-9, 9);
    }
  }

  KVN_network network;
  std::vector<int> decisions;

 private:
  int AddChance(const std::string& id, const std::vector<int>& parents) {
    std::vector<double> cells;
    for (std::size_t row = 0; row < (parents.empty() ? 1u : 2u); row++) {
      const double p = 0.1 + 0.8 * random.Unit();
      cells.insert(cells.end(), {p, 1.0 - p});
    }
    return AddCpt(network, id.c_str(), 2, parents, cells);
  }

  RandomSource random{7};
};

TEST(Cost, OneUpdateForEachScenarioOfWhatMatters) {
  TwelveTests diagram(/*others=*/2);
  theUpdateCount = 0;
  ASSERT_EQ(diagram.network.UpdateBeliefs(), 0);
  const KVN_nodeValue& last = *diagram.network.ValueOf(diagram.decisions[3]);
  EXPECT_EQ(last.GetIndexingParents().GetNumItems(), 9) << "6 tests and 3 decisions";
  // In the order T0 T2 D0 T4 D1 T6 T8 D2 T10 D3 there are 2^10 scenarios. Each test is updated once
  // more for its own probabilities in each case of what stands before it: 2^0, 2^1, 2^3, 2^5, 2^6
  // and 2^8 cases.
  EXPECT_EQ(theUpdateCount, 1024 + 1 + 2 + 8 + 32 + 64 + 256);
}

TEST(Cost, NothingToEnumerateTakesOneUpdate) {
  const struct {
    const char* name;
    int utilities;
  } cases[] = {
      {"no utilities", 0},
      {"no decisions", 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
    const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0, 1});
    if (c.utilities == 0) (void)AddNodeBelow(network, KVN_TYPE_LIST, "D", 2, {b});
    std::vector<int> utilities;
    for (int i = 0; i < c.utilities; i++) {
      utilities.push_back(AddNodeBelow(network, KVN_TYPE_TABLE, nullptr, 0, {i == 0 ? a : b}));
      WriteCells(network, utilities.back(), {-4, 4});
    }
    theUpdateCount = 0;
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    EXPECT_EQ(theUpdateCount, 1);
    EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.125, 0.875}, 1e-15));
    EXPECT_TRUE(network.ValueOf(b)->IsValueValid());
    if (c.utilities == 0) continue;
    EXPECT_TRUE(CellsNear(MatrixOf(network, utilities[0]), {2}, 1e-14));  // -1 + 3
    EXPECT_TRUE(CellsNear(MatrixOf(network, utilities[1]), {3}, 1e-14));  // -0.5 + 3.5
  }
}

}  // namespace
