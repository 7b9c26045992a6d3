// Messages in networks without loops: exactness, what is left where evidence contradicts itself,
// and what isn't reached.

#include "inference/exact/polytree.h"

#include <cmath>

#include "foundation/resultCodes.h"
#include "inference/exact/polytreeGraph.h"
#include "inference/exact/polytreeWalk.h"
#include "inference/exact/sepsetJoinTree.h"
#include "network/network.h"
#include "network/node.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/oracle.h"
#include "tests/support/randomBayes.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"

namespace {

constexpr double kRounding = 1e-12;

std::vector<double> BeliefOf(KVN_network& network, int handle) {
  return ItemsOf(MatrixOf(network, handle).GetItems());
}

void Observe(KVN_network& network, int handle, int outcome) {
  EXPECT_EQ(network.ValueOf(handle)->SetEvidence(outcome), 0);
}

/// Whether the arcs hold the network together in one piece.
bool IsConnected(const KVN_network& network) {
  int arcs = 0;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    arcs += network.GetNumberOfParents(h);
  }
  return arcs == network.GetNumberOfNodes() - 1;  // there are no loops
}

TEST(Polytree, AgreesWithEnumeration) {
  int tried = 0;
  for (std::uint64_t seed = 0; seed < FewerIfSanitized(5000u); seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomBayesOptions options;
    options.nodes = 2 + static_cast<int>(seed % 6);
    options.maxParents = 4;  // so that cutting the loops leaves it in one piece
    options.maxOutcomes = 3;
    options.polytree = true;
    options.gates = seed % 2 == 0;
    options.zeroShare = seed % 5 == 0 ? 0.0 : 0.2;
    KVN_network network;
    FillRandomBayes(network, seed, options);
    if (!IsConnected(network)) continue;
    if (seed % 4 != 0) ObserveAtRandom(network, seed, 0.4, /*possible=*/true);
    if (seed % 3 == 0) SoftenAtRandom(network, seed, 0.3);
    const OracleResult expected = EnumeratePosteriors(network);
    if (!expected.isPossible) continue;  // a zero in the soft evidence
    network.SetDefaultBNAlgorithm(2);
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    ASSERT_TRUE(PosteriorsNear(network, expected, kRounding));
    tried++;
  }
  EXPECT_GT(tried, FewerIfSanitized(1500));
}

// The correction would hide a wrong walk. With two outcomes and no zeros the walk alone goes wrong
// only where an observed node should have told a parent what another parent has learnt since.
TEST(Polytree, WalkAloneSeldomNeedsCorrection) {
  int tried = 0;
  int wrong = 0;
  for (std::uint64_t seed = 0; seed < 1000; seed++) {
    RandomBayesOptions options{.nodes = 2 + static_cast<int>(seed % 5), .maxParents = 4};
    options.maxOutcomes = 2;
    options.zeroShare = options.deterministicShare = 0.0;
    options.gates = false;
    options.polytree = true;
    KVN_network network;
    FillRandomBayes(network, seed, options);
    ObserveAtRandom(network, seed, 0.3, /*possible=*/true);
    if (!IsConnected(network)) continue;
    PolytreeGraph graph(network);
    ASSERT_EQ(graph.Build(), 0);
    ASSERT_EQ(PolytreeWalk(graph).Run(), 0);
    for (int i = 0; i < graph.GetSize(); i++) graph.Node(i).node->Value()->SetValueValid();
    tried++;
    wrong += !PosteriorsNear(network, EnumeratePosteriors(network), kRounding);
  }
  EXPECT_GT(tried, 500);
  EXPECT_GT(wrong, 0);
  EXPECT_LT(wrong, tried / 50);
}

TEST(Polytree, RefusesLoops) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.5, 0.5});
  AddCpt(network, "C", 2, {a, b}, {0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5});
  const LogWatch log;
  EXPECT_EQ(PolytreeUpdate(network), -1);
  EXPECT_EQ(log.Texts(),
            std::vector<std::string>{"PolyTree algorithm can not be applied to this network, "
                                     "because it is not singly connected."});
  EXPECT_EQ(log.Codes(), std::vector<int>{-1});
  for (int h : {a, b}) EXPECT_FALSE(network.ValueOf(h)->IsValueValid());
}

TEST(Polytree, ReachesTheComponentOfTheFirstNodeAndCallsAllValid) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.2, 0.8});
  const int b = AddCpt(network, "B", 3, {a}, {0.5, 0.5, 0, 0.25, 0.25, 0.5});
  const int other = AddCpt(network, "Other", 3, {}, {0.1, 0.2, 0.7});
  ASSERT_EQ(PolytreeUpdate(network), 0);
  // 0.2 * 0.5 + 0.8 * 0.25 = 0.3, 0.8 * 0.5 = 0.4
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.3, 0.3, 0.4}, kRounding));
  EXPECT_EQ(BeliefOf(network, other), (std::vector<double>{0, 0, 0}));
  EXPECT_TRUE(network.ValueOf(other)->IsValueValid());
  // What an earlier run has left stays too.
  MatrixOf(network, other)[1] = 0.75;
  ASSERT_EQ(PolytreeUpdate(network), 0);
  EXPECT_EQ(BeliefOf(network, other), (std::vector<double>{0, 0.75, 0}));
}

TEST(Polytree, ShapesValuesForTheirOutcomes) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.2, 0.8});
  const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.25, 0.75});
  ASSERT_EQ(network.ValueOf(b)->AddIndexingParent(a), 0);
  ASSERT_EQ(MatrixOf(network, b).GetSize(), 4);
  ASSERT_EQ(PolytreeUpdate(network), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.3, 0.7}, kRounding));
  EXPECT_EQ(network.ValueOf(b)->GetIndexingParents().GetNumItems(), 0);
}

// A received message of ones can't be told from one that hasn't come by its cells.
TEST(Polytree, EndsWhereAMessageReadsOne) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.5, 0.5});
  const int c = AddCpt(network, "C", 2, {a}, {0.5, 0.5, 0.5, 0.5});
  Observe(network, b, 0);
  Observe(network, c, 1);
  ASSERT_EQ(PolytreeUpdate(network), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {0.5, 0.5}, kRounding));
}

// Below A, which has three outcomes, S excludes the first and, contradicting it, T the other two.
class ContradictionTest : public testing::Test {
 protected:
  ContradictionTest() {
    network.SetUpdateFlags(0);
    a = AddCpt(network, "A", 3, {}, {0.2, 0.3, 0.5});
    s = AddCpt(network, "S", 2, {a}, {0, 1, 1, 0, 1, 0});
    t = AddCpt(network, "T", 2, {a}, {1, 0, 0, 1, 0, 1});
    Observe(network, s, 0);
    Observe(network, t, 0);
  }

  KVN_network network;
  int a, s, t;
};

TEST_F(ContradictionTest, LeavesAUniformBelief) {
  ASSERT_EQ(PolytreeUpdate(network), 0);
  EXPECT_EQ(BeliefOf(network, a), (std::vector<double>{1.0 / 3, 1.0 / 3, 1.0 / 3}));
  EXPECT_EQ(BeliefOf(network, s), (std::vector<double>{1, 0}));
  EXPECT_TRUE(network.ValueOf(a)->IsValueValid());
}

// V repeats A, and W below it leaves only the last outcome: V tells A (0, 0, 1). The uniform belief
// of A, divided by that, comes back to V as (inf, inf, 1/3), of which it makes 0 * inf.
TEST_F(ContradictionTest, DividesByZeroWithoutAGuard) {
  const int v = AddCpt(network, "V", 3, {a}, {1, 0, 0, 0, 1, 0, 0, 0, 1});
  const int w = AddCpt(network, "W", 2, {v}, {0, 1, 0, 1, 1, 0});
  Observe(network, w, 0);
  ASSERT_EQ(PolytreeUpdate(network), 0);
  EXPECT_EQ(BeliefOf(network, a), (std::vector<double>{1.0 / 3, 1.0 / 3, 1.0 / 3}));
  EXPECT_TRUE(std::isnan(BeliefOf(network, v)[0]));
}

// Each finding has a probability of about 1e-5, and all of them together one of 1e-5000. Those on
// S favour the first outcome of A by a factor of 1.001 each, against a prior of 0.5: the odds are
// 1.001^1000.
TEST(Polytree, DoesNotUnderflow) {
  KVN_network network;
  network.SetUpdateFlags(0);
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  for (int i = 0; i < 1000; i++) {
    const int s = AddCpt(network, nullptr, 2, {a}, {1.001e-5, 1 - 1.001e-5, 1e-5, 1 - 1e-5});
    Observe(network, s, 0);
  }
  ASSERT_EQ(PolytreeUpdate(network), 0);
  const double odds = std::pow(1.001, 1000);
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {odds / (1 + odds), 1 / (1 + odds)}, 1e-10));
}

// A step keeps the state with probability 0.9, so i steps with p(i) = (1 + 0.8^i) / 2. Between
// findings of state 0 at distances i and j, state 0 has the odds p(i) p(j) : (1 - p(i)) (1 - p(j)).
TEST(Polytree, LongChainNeedsLittleStackAndTime) {
  constexpr int kLength = FewerIfSanitized(50000);
  constexpr int kDistance = 10;
  RunInSmallStack([] {
    KVN_network network;
    network.SetUpdateFlags(0);
    std::vector<int> chain;
    for (int i = 0; i <= kLength; i++) {
      chain.push_back(chain.empty()
                          ? AddCpt(network, nullptr, 2, {}, {0.5, 0.5})
                          : AddCpt(network, nullptr, 2, {chain.back()}, {0.9, 0.1, 0.1, 0.9}));
      if (i % kDistance == 0) Observe(network, chain.back(), 0);
    }
    ASSERT_EQ(PolytreeUpdate(network), 0);
    for (int i = 0; i < kLength; i++) {
      const double p = (1 + std::pow(0.8, i % kDistance)) / 2;
      const double q = (1 + std::pow(0.8, kDistance - i % kDistance)) / 2;
      const double expected = p * q / (p * q + (1 - p) * (1 - q));
      ASSERT_NEAR(MatrixOf(network, chain[i])[0], expected, kRounding) << i;
    }
  });
}

// A walk that spreads a thousand findings over ten thousand nodes isn't finished, and needn't be.
TEST(Polytree, LargeTreeAgreesWithTheSepsetTree) {
  constexpr int kNodes = 10000;
  RandomSource random(/*seed=*/1);
  KVN_network network;
  network.SetUpdateFlags(0);
  for (int i = 0; i < kNodes; i++) {
    const int handle = network.AddNode(KVN_TYPE_CPT, nullptr);
    EXPECT_GE(i == 0 ? 0 : network.AddArc(random.Below(handle), handle, /*layer=*/0), 0);
    KVN_Dmatrix& table = TableOfNode(network, handle);
    for (int row = 0; row < table.GetSize(); row += 2) {
      table[row] = 0.1 + 0.8 * random.Unit();
      table[row + 1] = 1 - table[row];
    }
    if (random.Chance(0.1)) Observe(network, handle, random.Below(2));
  }
  ASSERT_EQ(PolytreeUpdate(network), 0);
  std::vector<double> beliefs;
  for (int h = 0; h < kNodes; h++) beliefs.push_back(MatrixOf(network, h)[0]);
  ASSERT_EQ(SepsetJoinTreeUpdate(network), 0);
  for (int h = 0; h < kNodes; h++) ASSERT_NEAR(MatrixOf(network, h)[0], beliefs[h], kRounding);
}

TEST(Polytree, FailingAllocationsLeaveNothingValid) {
  const int failures = FailEachAllocation([](int n) {
    KVN_network network;
    FillRandomBayes(network, /*seed=*/5, {.nodes = 12, .gates = false, .polytree = true});
    ObserveAtRandom(network, /*seed=*/5, 0.3, /*possible=*/true);
    bool failed = false;
    const int result = RunFailing(n, failed, [&] { return PolytreeUpdate(network); });
    EXPECT_EQ(result, failed ? int{KVN_NO_MEMORY} : 0);
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      EXPECT_EQ(network.ValueOf(h)->IsValueValid(), !failed || network.ValueOf(h)->IsEvidence());
    }
    return failed;
  });
  EXPECT_GT(failures, 5);
}

}  // namespace
