// Adaptive importance and EPIS sampling are unbiased whatever they draw from, so that their
// posteriors alone don't show it: they are held against plain renderings, on the same stream.

#include "tests/inference/sampling/plainSampler.h"
#include "tests/inference/sampling/samplers.h"

namespace {

class PlainAdaptive : public PlainSampler {
 public:
  void RunAis(int samples, std::uint32_t seed) {
    Start();
    KVN_random random(seed);
    for (std::size_t i = 0; i < nodes.size(); i++) {
      if (nodes[i].evidence < 0 && IsAboveEvidence(i)) RaiseSmallCells(nodes[i]);
    }
    for (const PlainNode& node : nodes) {
      for (int parent : node.parents) {
        if (node.evidence < 0) continue;
        for (Row& row : nodes[parent].importance) {
          row.assign(row.size(), 1.0 / static_cast<double>(row.size()));
        }
      }
    }
    double rate = 0.4;
    for (int s = 1; s <= 25000; s++) {
      const double weight = Draw(random);
      for (std::size_t i = 0; i < nodes.size(); i++) {
        const double score = nodes[i].importance[Configuration(i)][states[i]] * weight;
        nodes[i].score[Configuration(i)][states[i]] += score * score;
      }
      if (s % 2500 != 0) continue;
      for (std::size_t i = 0; i < nodes.size(); i++) {
        if (IsAboveEvidence(i)) Learn(nodes[i], rate);
      }
      rate *= 0.9;
    }
    Sample(samples, random);
  }

  /// After one round of propagation a node has heard of its observed children alone, with their
  /// other parents uniform. `cutoffs` by number of outcomes.
  void RunEpis(int samples, std::uint32_t seed, const Row& cutoffs) {
    Start();
    KVN_random random(seed);
    for (std::size_t i = 0; i < nodes.size(); i++) {
      const Row lambda = LambdaOf(i);
      for (Row& row : nodes[i].importance) {
        for (std::size_t k = 0; k < row.size(); k++) row[k] *= lambda[k];
        Scale(row);
        if (nodes[i].evidence < 0 && IsAboveEvidence(i)) CutRow(row, cutoffs[row.size()]);
      }
    }
    Sample(samples, random);
  }

 private:
  /// Parents have the smaller numbers.
  bool IsAboveEvidence(std::size_t i) const {
    std::vector<bool> isBelow(nodes.size(), false);
    isBelow[i] = true;
    for (std::size_t j = i + 1; j < nodes.size(); j++) {
      for (int parent : nodes[j].parents) isBelow[j] = isBelow[j] || isBelow[parent];
      if (isBelow[j] && nodes[j].evidence >= 0) return true;
    }
    return false;
  }

  static void RaiseSmallCells(PlainNode& node) {
    for (std::size_t j = 0; j < node.table.size(); j++) {
      const Row& row = node.table[j];
      const auto largest = std::max_element(row.begin(), row.end()) - row.begin();
      double added = 0.0;
      for (std::size_t k = 0; k < row.size(); k++) {
        node.importance[j][k] = std::max(row[k], 0.1);
        added += node.importance[j][k] - row[k];
      }
      node.importance[j][largest] -= added;
    }
  }

  static void Learn(PlainNode& node, double rate) {
    for (std::size_t j = 0; j < node.table.size(); j++) {
      Row& score = node.score[j];
      double sum = 0.0;
      for (double cell : score) sum += cell;
      for (std::size_t k = 0; k < score.size() && sum > 0.0; k++) {
        node.importance[j][k] = (1 - rate) * node.importance[j][k] + rate * score[k] / sum;
      }
      score.assign(score.size(), 0.0);
    }
  }

  Row LambdaOf(std::size_t i) {
    const std::size_t outcomes = nodes[i].table[0].size();
    Row lambda(outcomes, 1.0);
    for (std::size_t c = 0; c < nodes.size(); c++) {
      const std::vector<int>& parents = nodes[c].parents;
      const auto place = std::find(parents.begin(), parents.end(), static_cast<int>(i));
      if (place == parents.end() || nodes[c].evidence < 0) continue;
      std::size_t inner = 1;
      for (auto later = place + 1; later != parents.end(); ++later) {
        inner *= nodes[*later].table[0].size();
      }
      Row message(outcomes, 0.0);
      for (std::size_t j = 0; j < nodes[c].table.size(); j++) {
        message[j / inner % outcomes] += nodes[c].table[j][nodes[c].evidence];
      }
      for (std::size_t k = 0; k < outcomes; k++) lambda[k] *= message[k];
    }
    return lambda;
  }

  static void CutRow(Row& row, double cutoff) {
    double added = 0.0;
    double others = 0.0;
    for (double& cell : row) {
      added += std::max(0.0, cutoff - cell);
      others += cell >= cutoff ? 1.0 : 0.0;
      cell = std::max(cell, cutoff);
    }
    for (double& cell : row) cell -= cell > cutoff ? added / others : 0.0;
  }

  double Draw(KVN_random& random) {
    double weight = 1.0;
    for (std::size_t i = 0; i < nodes.size(); i++) {
      const Row& truth = nodes[i].table[Configuration(i)];
      states[i] = nodes[i].evidence;
      if (states[i] >= 0) {
        weight *= truth[states[i]];
        continue;
      }
      const Row& row = nodes[i].importance[Configuration(i)];
      const double r = std::clamp(random.Uniform(), 1e-11, 1 - 1e-11);
      double sum = 0.0;
      std::size_t k = 0;
      while (k < row.size() && !(r <= (sum += row[k]))) k++;
      states[i] = static_cast<int>(std::min(k, row.size() - 1));
      weight *= truth[states[i]] / row[states[i]];
    }
    return weight;
  }

  void Sample(int samples, KVN_random& random) {
    for (int s = 0; s < samples; s++) Count(Draw(random));
  }
};

TEST(AdaptiveSamplers, DrawFromTheDocumentedTables) {
  // Counts and cutoffs so small and so large that each is at work in these networks.
  EpisParameters settings;
  settings.proplen = 1;
  settings.numstates1 = 2;
  settings.numstates2 = 3;
  settings.numstates3 = 4;
  settings.eps1 = 0.4;
  settings.eps2 = 0.25;
  settings.eps3 = 0.15;
  for (std::uint32_t seed = 0; seed < 8; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomSource random(seed);
    PlainAdaptive plain;
    plain.nodes = MakePlainNodes(random, /*observe=*/seed != 0);
    KVN_network network;
    BuildPlain(network, plain.nodes);
    ASSERT_EQ(network.SetEpisParams(settings), 0);
    PlainAdaptive ais = plain;
    ais.RunAis(500, seed);
    ASSERT_EQ(RunSampler(network, KVN_ALG_AIS_SAMPLING, 500, seed), 0);
    ais.ExpectPosteriors(network);
    plain.RunEpis(500, seed, {0, 0, 0.4, 0.25, 0.15});
    ASSERT_EQ(RunSampler(network, KVN_ALG_EPIS_SAMPLING, 500, seed), 0);
    plain.ExpectPosteriors(network);
  }
}

}  // namespace
