#pragma once

#include <algorithm>
#include <vector>

#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"

/// What plain renderings of samplers need, to hold the engine's against on the same stream where
/// the documented estimator and not the truth is what counts.

using Row = std::vector<double>;
using Table = std::vector<Row>;  // by configuration of the parents, the last fastest

struct PlainNode {
  int evidence;
  std::vector<int> parents;
  Table table;
  Table importance, score;
  Row weights;
};

inline void Scale(Row& row) {
  double sum = 0.0;
  for (double cell : row) sum += cell;
  for (double& cell : row) cell = sum == 0.0 ? 1.0 / static_cast<double>(row.size()) : cell / sum;
}

inline Row Flat(const Table& table) {
  Row cells;
  for (const Row& row : table) cells.insert(cells.end(), row.begin(), row.end());
  return cells;
}

/// One part, of which the reduction takes nothing: each node has a parent or a child, no table has
/// zeros, and only nodes without children are observed.
inline std::vector<PlainNode> MakePlainNodes(RandomSource& random, bool observe) {
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
    const bool isSeen = isLeaf[i] && (i == kNodes - 1 || random.Chance(0.5));
    nodes[i].evidence = observe && isSeen ? random.Below(outcomes[i]) : -1;
  }
  return nodes;
}

inline void BuildPlain(KVN_network& network, const std::vector<PlainNode>& nodes) {
  for (const PlainNode& node : nodes) {
    AddCpt(network, nullptr, static_cast<int>(node.table[0].size()), node.parents,
           Flat(node.table));
  }
  for (int i = 0; i < static_cast<int>(nodes.size()); i++) {
    if (nodes[i].evidence < 0) continue;
    EXPECT_EQ(network.ValueOf(i)->SetEvidence(nodes[i].evidence), 0);
  }
}

class PlainSampler {
 public:
  std::vector<PlainNode> nodes;

  void ExpectPosteriors(KVN_network& network) const {
    for (int i = 0; i < static_cast<int>(nodes.size()); i++) {
      Row posterior = nodes[i].weights;
      for (double& weight : posterior) weight /= total;
      EXPECT_TRUE(CellsNear(MatrixOf(network, i), posterior, 1e-12)) << i;
    }
  }

 protected:
  void Start() {
    for (PlainNode& node : nodes) {
      node.importance = node.table;
      node.score.assign(node.table.size(), Row(node.table[0].size(), 0.0));
      node.weights.assign(node.table[0].size(), 0.0);
    }
    states.assign(nodes.size(), -1);
  }
  int Configuration(std::size_t i) const {
    int configuration = 0;
    for (int parent : nodes[i].parents) {
      configuration = configuration * static_cast<int>(nodes[parent].table[0].size());
      configuration += states[parent];
    }
    return configuration;
  }
  void Count(double weight) {
    total += weight;
    for (std::size_t i = 0; i < nodes.size(); i++) nodes[i].weights[states[i]] += weight;
  }

  std::vector<int> states;
  double total = 0.0;
};
