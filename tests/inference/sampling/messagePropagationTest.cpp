// Loopy propagation: exact without loops, and what one round knows.

#include <cmath>

#include "tests/inference/sampling/samplers.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/oracle.h"
#include "tests/support/randomBayes.h"

namespace {

int Propagate(KVN_network& network, int rounds) {
  EpisParameters settings;
  settings.proplen = rounds;
  EXPECT_EQ(network.SetEpisParams(settings), 0);
  network.SetDefaultBNAlgorithm(KVN_ALG_LOOPY_PROPAGATION);
  return network.UpdateBeliefs();
}

TEST(LoopyPropagation, IsExactWithoutLoops) {
  constexpr double kRounding = 1e-12;
  for (std::uint64_t seed = 0; seed < 300; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomBayesOptions options;
    options.nodes = 2 + static_cast<int>(seed % 7);
    options.zeroShare = 0.0;
    options.deterministicShare = 0.0;
    options.gates = false;
    options.polytree = true;
    KVN_network network;
    FillRandomBayes(network, seed, options);
    if (seed % 3 != 0) ObserveAtRandom(network, seed, 0.3, /*possible=*/true);
    const OracleResult exact = EnumeratePosteriors(network);
    ASSERT_EQ(Propagate(network, 10), 0);
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      ASSERT_TRUE(CellsNear(MatrixOf(network, h), exact.posteriors[h], kRounding)) << h;
      EXPECT_EQ(network.ValueOf(h)->IsValueValid(), network.ValueOf(h)->HasEvidence());
    }
  }
}

// A -> B -> C with C observed. In the first round all messages are uniform: A has its own table, B
// the mean of its rows (0.9, 0.1) and (0.2, 0.8). In the second B hears A and C: its belief is in
// proportion to 0.41 * 0.3 and 0.59 * 0.6; A hears B, which hadn't heard of C yet.
TEST(LoopyPropagation, CarriesMessagesOneArcARound) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.3, 0.7});
  const int b = AddCpt(network, "B", 2, {a}, {0.9, 0.1, 0.2, 0.8});
  const int c = AddCpt(network, "C", 2, {b}, {0.3, 0.7, 0.6, 0.4});
  ASSERT_EQ(network.ValueOf(c)->SetEvidence(0), 0);
  ASSERT_EQ(Propagate(network, 1), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {0.3, 0.7}, 1e-15));
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.55, 0.45}, 1e-15));
  ASSERT_EQ(Propagate(network, 2), 0);
  const double sum = 0.41 * 0.3 + 0.59 * 0.6;
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {0.41 * 0.3 / sum, 0.59 * 0.6 / sum}, 1e-15));
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {0.3, 0.7}, 1e-15));
  // In the third A hears what B has heard of C: 0.9 * 0.3 + 0.1 * 0.6 = 0.33 and 0.54.
  ASSERT_EQ(Propagate(network, 3), 0);
  const double both = 0.3 * 0.33 + 0.7 * 0.54;
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {0.3 * 0.33 / both, 0.7 * 0.54 / both}, 1e-15));
}

}  // namespace
