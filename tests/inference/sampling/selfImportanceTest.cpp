// Self-importance counts the ratio of table to importance twice, so its posteriors aren't those of
// the network: it is held against a plain rendering of the estimator, on the same stream.

#include <cmath>

#include "tests/inference/sampling/plainSampler.h"
#include "tests/inference/sampling/samplers.h"

namespace {

class PlainSelfImportance : public PlainSampler {
 public:
  void Run(int samples, std::uint32_t seed) {
    Start();
    KVN_random random(seed);
    for (int s = 0; s < samples; s++) {
      const double weight = Draw(random);
      if (weight == 0.0) continue;
      Count(weight);
      for (std::size_t i = 0; i < nodes.size(); i++) {
        nodes[i].score[Configuration(i)][states[i]] += weight;
      }
      if (s > 0 && s % 100 == 0) {
        Revise();
        revisions++;
      }
    }
  }

  int revisions = 0;

 private:
  double Draw(KVN_random& random) {
    double weight = 1.0;
    for (std::size_t i = 0; i < nodes.size(); i++) {
      const Row& truth = nodes[i].table[Configuration(i)];
      if (nodes[i].evidence >= 0) {
        states[i] = nodes[i].evidence;
        weight *= truth[states[i]];
        continue;
      }
      const Row& row = nodes[i].importance[Configuration(i)];
      const double r = random.Uniform();
      double sum = 0.0;
      std::size_t k = 0;
      while (k < row.size() && !((sum += row[k]) > r)) k++;
      const bool found = k < row.size();
      if (!found) k--;
      states[i] = static_cast<int>(k);
      weight *= std::pow(truth[k] / row[k], found ? 2 : 1);
    }
    return weight;
  }

  void Revise() {
    for (PlainNode& node : nodes) {
      for (std::size_t j = 0; j < node.table.size(); j++) {
        Scale(node.score[j]);
        for (std::size_t k = 0; k < node.table[j].size(); k++) {
          node.importance[j][k] = node.score[j][k] + node.table[j][k];
        }
        Scale(node.importance[j]);
      }
    }
  }
};

void ExpectEstimates(const std::vector<PlainNode>& plain, int samples, std::uint32_t seed) {
  PlainSelfImportance expected;
  expected.nodes = plain;
  expected.Run(samples, seed);
  KVN_network network;
  BuildPlain(network, plain);
  ASSERT_EQ(RunSampler(network, KVN_ALG_SELF_IMPORTANCE, samples, seed), 0);
  expected.ExpectPosteriors(network);
  EXPECT_EQ(expected.revisions > 0, samples > 100) << "else this shows less than it says";
}

TEST(SelfImportance, FollowsItsEstimator) {
  const std::vector<PlainNode> plain = {
      {-1, {}, {{0.2, 0.8}}, {}, {}, {}},
      {-1, {}, {{0.5, 0.3, 0.2}}, {}, {}, {}},
      {-1,
       {0, 1},
       {{0.9, 0.1}, {0.4, 0.6}, {0.25, 0.75}, {0.3, 0.7}, {0.0, 1.0}, {0.6, 0.4}},
       {},
       {},
       {}},
      {1, {2}, {{0.95, 0.05}, {0.3, 0.7}}, {}, {}, {}},
      {0, {1}, {{0.0, 1.0}, {0.5, 0.5}, {0.9, 0.1}}, {}, {}, {}},
  };
  // 100 samples end before the first revision, 101 with it; 350 have seen three if all counted.
  for (int samples : {100, 101, 350}) {
    SCOPED_TRACE(samples);
    ExpectEstimates(plain, samples, 18);
  }
}

TEST(SelfImportance, FollowsItsEstimatorInRandomNetworks) {
  for (std::uint32_t seed = 0; seed < 12; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSource random(seed);
    ExpectEstimates(MakePlainNodes(random, /*observe=*/seed % 2 == 1), 1000, seed);
  }
}

}  // namespace
