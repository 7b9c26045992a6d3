// Self-importance counts the ratio of table to importance twice, so its posteriors aren't those of
// the network: it is held against a plain rendering of the estimator, on the same stream.

#include <algorithm>
#include <cmath>

#include "tests/inference/sampling/samplers.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"

namespace {

using Row = std::vector<double>;
using Table = std::vector<Row>;  // by configuration of the parents, the last fastest

struct PlainNode {
  int evidence;
  std::vector<int> parents;
  Table table;
  Table importance, score;
  Row weights;
};

void Scale(Row& row) {
  double sum = 0.0;
  for (double cell : row) sum += cell;
  for (double& cell : row) cell = sum == 0.0 ? 1.0 / static_cast<double>(row.size()) : cell / sum;
}

class PlainSelfImportance {
 public:
  std::vector<PlainNode> nodes;

  void Run(int samples, std::uint32_t seed) {
    for (PlainNode& node : nodes) {
      node.importance = node.table;
      node.score.assign(node.table.size(), Row(node.table[0].size(), 0.0));
      node.weights.assign(node.table[0].size(), 0.0);
    }
    states.assign(nodes.size(), -1);
    KVN_random random(seed);
    for (int s = 0; s < samples; s++) {
      const double weight = Draw(random);
      if (weight == 0.0) continue;
      total += weight;
      for (std::size_t i = 0; i < nodes.size(); i++) {
        nodes[i].weights[states[i]] += weight;
        nodes[i].score[Configuration(i)][states[i]] += weight;
      }
      if (s > 0 && s % 100 == 0) {
        Revise();
        revisions++;
      }
    }
  }

  double total = 0.0;
  int revisions = 0;

 private:
  int Configuration(std::size_t i) const {
    int configuration = 0;
    for (int parent : nodes[i].parents) {
      configuration = configuration * static_cast<int>(nodes[parent].table[0].size());
      configuration += states[parent];
    }
    return configuration;
  }

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

  std::vector<int> states;
};

Row Flat(const Table& table) {
  Row cells;
  for (const Row& row : table) cells.insert(cells.end(), row.begin(), row.end());
  return cells;
}

void ExpectEstimates(const std::vector<PlainNode>& plain, int samples, std::uint32_t seed) {
  PlainSelfImportance expected;
  expected.nodes = plain;
  expected.Run(samples, seed);
  KVN_network network;
  for (const PlainNode& node : plain) {
    AddCpt(network, nullptr, static_cast<int>(node.table[0].size()), node.parents,
           Flat(node.table));
  }
  const int count = static_cast<int>(plain.size());
  for (int i = 0; i < count; i++) {
    if (plain[i].evidence < 0) continue;
    ASSERT_EQ(network.ValueOf(i)->SetEvidence(plain[i].evidence), 0);
  }
  ASSERT_EQ(RunSampler(network, KVN_ALG_SELF_IMPORTANCE, samples, seed), 0);
  for (int i = 0; i < count; i++) {
    for (double& weight : expected.nodes[i].weights) weight /= expected.total;
    EXPECT_TRUE(CellsNear(MatrixOf(network, i), expected.nodes[i].weights, 1e-12)) << i;
  }
  EXPECT_EQ(expected.revisions > 0, samples > 100) << "else this shows less than it says";
}

TEST(SelfImportance, FollowsItsEstimator) {
  const std::vector<PlainNode> plain = {
      {-1, {},  {{0.2, 0.8}},                                                      {}, {}, {}},
      {-1, {},  {{0.5, 0.3, 0.2}},                                                 {}, {}, {}},
      {-1,
       {0, 1},
       {{0.9, 0.1}, {0.4, 0.6}, {0.25, 0.75}, {0.3, 0.7}, {0.0, 1.0}, {0.6, 0.4}},
       {},
       {},
       {}                                                                                    },
      {1,  {2}, {{0.95, 0.05}, {0.3, 0.7}},                                        {}, {}, {}},
      {0,  {1}, {{0.0, 1.0}, {0.5, 0.5}, {0.9, 0.1}},                              {}, {}, {}},
  };
  // 100 samples end before the first revision, 101 with it; 350 have seen three if all counted.
  for (int samples : {100, 101, 350}) {
    SCOPED_TRACE(samples);
    ExpectEstimates(plain, samples, 18);
  }
}

/// One part, of which the reduction takes nothing: each node has a parent or a child, no table has
/// zeros, and only nodes without children are observed.
std::vector<PlainNode> MakePlainNodes(RandomSource& random, bool observe) {
  constexpr int kNodes = 7;
  std::vector<PlainNode> nodes(kNodes);
  std::vector<int> outcomes(kNodes);
  std::vector<bool> isLeaf(kNodes, true);
  for (int i = 0; i < kNodes; i++) {
    outcomes[i] = random.Between(2, 4);
    const std::vector<int> order = random.Permutation(i);
    nodes[i].parents.assign(order.begin(), order.begin() + std::min(i, random.Between(1, 2)));
    int rows = 1;
    for (int parent : nodes[i].parents) {
      rows *= outcomes[parent];
      isLeaf[parent] = false;
    }
    for (int j = 0; j < rows; j++) nodes[i].table.push_back(random.Distribution(outcomes[i], 0.0));
  }
  for (int i = 0; i < kNodes; i++) {
    nodes[i].evidence = observe && isLeaf[i] ? random.Below(outcomes[i]) : -1;
  }
  return nodes;
}

TEST(SelfImportance, FollowsItsEstimatorInRandomNetworks) {
  for (std::uint32_t seed = 0; seed < 12; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSource random(seed);
    ExpectEstimates(MakePlainNodes(random, /*observe=*/seed % 2 == 1), 1000, seed);
  }
}

}  // namespace
