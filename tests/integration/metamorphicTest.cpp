// What must not change an answer: the order in which a network is told, and nodes that say nothing
// of the others. And what ties answers together: a marginal is the mixture of its conditionals.
// These hold where a network is too large to be enumerated.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "network/network.h"
#include "network/updateAlgorithm.h"
#include "network/userProperties.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomBayes.h"
#include "values/nodeValue.h"

namespace {

/// Of probabilities, in networks of some ten thousand configurations a clique.
constexpr double kRounding = 1e-12;

/// A node as numbers; the answers depend on nothing else.
struct PlainNode {
  int outcomes;
  std::vector<int> parents;   // positions in the network
  std::vector<double> cells;  // parents first, own outcomes fastest
  int finding = -1;           // an outcome
  std::vector<double> likelihood;
};
using PlainNetwork = std::vector<PlainNode>;
using Beliefs = std::vector<std::vector<double>>;

/// The order in which a network is told. An empty list stands for the order as it is.
struct Telling {
  std::vector<int> nodes;                  // positions in the order of their making
  std::vector<std::vector<int>> parents;   // by node: places of its parents list
  std::vector<std::vector<int>> outcomes;  // by node: the told outcome of each outcome
  std::vector<int> findings;               // positions in the order of their setting
};

struct Method {
  const char* name;
  int algorithm;
  const char* effort;
};
const Method kMethods[] = {
    {"clustering", KVN_ALG_CLUSTERING, "0"},
    {"with effort", KVN_ALG_CLUSTERING, "1"},
    {"sepset join tree", KVN_ALG_SEPSET_JOIN_TREE, "0"},
    {"decomposition", KVN_ALG_RELEVANCE_DECOMPOSITION, "0"},
};

/// A network of ten to fifteen nodes with findings and soft evidence, gates as their tables.
PlainNetwork MakeNetwork(std::uint64_t seed) {
  RandomBayesOptions options;
  options.nodes = 10 + static_cast<int>(seed % 6);
  options.maxParents = 2 + static_cast<int>(seed % 3);
  KVN_network network;
  FillRandomBayes(network, seed, options);
  if (seed % 4 != 0) ObserveAtRandom(network, seed, 0.2, /*possible=*/true);

  std::vector<int> positions(network.GetSize(), -1);
  int count = 0;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) positions[h] = count++;
  PlainNetwork plain;
  RandomSource random(seed);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const KVN_Dmatrix& table = TableOfNode(network, h);
    PlainNode node{network.DefinitionOf(h)->GetNumberOfOutcomes(), {}, {}, -1, {}};
    for (int i = 0; i < network.GetNumberOfParents(h); ++i) {
      node.parents.push_back(positions[network.GetParents(h)[i]]);
    }
    node.cells.assign(table.GetData(), table.GetData() + table.GetSize());
    if (network.ValueOf(h)->IsEvidence()) {
      node.finding = network.ValueOf(h)->GetEvidence();
    } else if (seed % 3 == 0 && random.Chance(0.2)) {
      for (int k = 0; k < node.outcomes; ++k) node.likelihood.push_back(0.1 + random.Unit());
    }
    plain.push_back(std::move(node));
  }
  return plain;
}

std::vector<int> InOrder(std::size_t count) {
  std::vector<int> order(count);
  std::iota(order.begin(), order.end(), 0);
  return order;
}

Telling ToldAsItIs(const PlainNetwork& plain) {
  Telling telling{InOrder(plain.size()), {}, {}, InOrder(plain.size())};
  for (const PlainNode& node : plain) {
    telling.parents.push_back(InOrder(node.parents.size()));
    telling.outcomes.push_back(InOrder(static_cast<std::size_t>(node.outcomes)));
  }
  return telling;
}

Telling ToldAtRandom(const PlainNetwork& plain, RandomSource& random) {
  const int count = static_cast<int>(plain.size());
  Telling telling{random.Permutation(count), {}, {}, random.Permutation(count)};
  for (const PlainNode& node : plain) {
    telling.parents.push_back(random.Permutation(static_cast<int>(node.parents.size())));
    telling.outcomes.push_back(random.Permutation(node.outcomes));
  }
  return telling;
}

/// The table of a node with its dimensions and outcomes in the told order.
std::vector<double> ToldCells(const PlainNetwork& plain, int position, const Telling& telling) {
  const PlainNode& node = plain[position];
  std::vector<int> dimensions = node.parents;
  dimensions.push_back(position);
  std::vector<int> places = telling.parents[position];
  places.push_back(static_cast<int>(node.parents.size()));
  std::vector<double> told(node.cells.size());
  std::vector<int> outcomes(dimensions.size(), 0);
  for (double cell : node.cells) {
    std::size_t index = 0;
    for (int place : places) {
      const int shown = dimensions[place];
      index = index * plain[shown].outcomes + telling.outcomes[shown][outcomes[place]];
    }
    told[index] = cell;
    for (int d = static_cast<int>(dimensions.size()) - 1; d >= 0; --d) {
      if (++outcomes[d] < plain[dimensions[d]].outcomes) break;
      outcomes[d] = 0;
    }
  }
  return told;
}

void Build(const PlainNetwork& plain, const Telling& telling, std::vector<int>& handles,
           KVN_network& network) {
  handles.assign(plain.size(), -1);
  for (int position : telling.nodes) {
    const std::string id = "N" + std::to_string(position);
    handles[position] =
        AddNodeBelow(network, KVN_TYPE_CPT, id.c_str(), plain[position].outcomes, {});
  }
  for (int position : telling.nodes) {
    for (int place : telling.parents[position]) {
      const int parent = handles[plain[position].parents[place]];
      ASSERT_EQ(network.AddArc(parent, handles[position], /*layer=*/0), 0);
    }
    WriteCells(network, handles[position], ToldCells(plain, position, telling));
  }
  for (int position : telling.findings) {
    const PlainNode& node = plain[position];
    const std::vector<int>& told = telling.outcomes[position];
    KVN_nodeValue* value = network.ValueOf(handles[position]);
    if (node.finding >= 0) {
      ASSERT_EQ(value->SetEvidence(told[node.finding]), 0);
    } else if (!node.likelihood.empty()) {
      std::vector<double> likelihood(node.likelihood.size());
      for (int k = 0; k < node.outcomes; ++k) likelihood[told[k]] = node.likelihood[k];
      ASSERT_EQ(value->SetVirtualEvidence(likelihood), 0);
    }
  }
}

/// Beliefs by position, in the network's own order of outcomes. Empty where the evidence is
/// impossible.
Beliefs Ask(const PlainNetwork& plain, const Telling& telling, const Method& method) {
  KVN_network network;
  std::vector<int> handles;
  Build(plain, telling, handles, network);
  network.SetDefaultBNAlgorithm(method.algorithm);
  EXPECT_EQ(network.UserProperties().AddProperty("KVN_CLUSTERING_EFFORT", method.effort), 0);
  EXPECT_EQ(network.UpdateBeliefs(), 0);
  Beliefs beliefs(plain.size());
  for (std::size_t i = 0; i < plain.size(); ++i) {
    if (!network.ValueOf(handles[i])->IsValueValid()) return {};
    const KVN_Dmatrix& told = MatrixOf(network, handles[i]);
    for (int outcome : telling.outcomes[i]) beliefs[i].push_back(told[outcome]);
  }
  return beliefs;
}

/// Of the nodes that both have.
double LargestDifference(const Beliefs& a, const Beliefs& b) {
  double largest = 0.0;
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    for (std::size_t k = 0; k < a[i].size(); ++k) {
      largest = std::max(largest, std::fabs(a[i][k] - b[i][k]));
    }
  }
  return largest;
}

}  // namespace

TEST(Metamorphic, OrderOfTellingChangesNoPosterior) {
  for (std::uint64_t seed = 0; seed < 150; ++seed) {
    const PlainNetwork plain = MakeNetwork(seed);
    RandomSource random(seed + 1);
    for (const Method& method : kMethods) {
      SCOPED_TRACE(testing::Message() << method.name << ", seed " << seed);
      const Beliefs expected = Ask(plain, ToldAsItIs(plain), method);
      ASSERT_FALSE(expected.empty());
      const Beliefs actual = Ask(plain, ToldAtRandom(plain, random), method);
      ASSERT_EQ(actual.size(), expected.size());
      ASSERT_LE(LargestDifference(expected, actual), kRounding);
    }
  }
}

TEST(Metamorphic, BarrenNodeChangesNoPosterior) {
  for (std::uint64_t seed = 0; seed < 100; ++seed) {
    PlainNetwork plain = MakeNetwork(seed);
    const int count = static_cast<int>(plain.size());
    RandomSource random(seed);
    PlainNode barren{3, {}, {}, -1, {}};
    int rows = 1;
    for (int parent : {random.Below(count / 2), count / 2 + random.Below(count / 2)}) {
      barren.parents.push_back(parent);
      rows *= plain[parent].outcomes;
    }
    for (int row = 0; row < rows; ++row) {
      for (double p : random.Distribution(3, /*zeroShare=*/0.1)) barren.cells.push_back(p);
    }
    for (const Method& method : kMethods) {
      SCOPED_TRACE(testing::Message() << method.name << ", seed " << seed);
      const Beliefs without = Ask(plain, ToldAsItIs(plain), method);
      plain.push_back(barren);
      const Beliefs with = Ask(plain, ToldAsItIs(plain), method);
      plain.pop_back();
      ASSERT_EQ(with.size(), without.size() + 1);
      ASSERT_LE(LargestDifference(without, with), kRounding);
    }
  }
}

TEST(Metamorphic, MarginalIsTheMixtureOfItsConditionals) {
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    PlainNetwork plain = MakeNetwork(seed);
    const int condition = static_cast<int>(seed % plain.size());
    if (plain[condition].finding >= 0 || !plain[condition].likelihood.empty()) continue;
    for (const Method& method : kMethods) {
      SCOPED_TRACE(testing::Message() << method.name << ", seed " << seed);
      const Beliefs marginals = Ask(plain, ToldAsItIs(plain), method);
      Beliefs mixture = marginals;
      for (std::vector<double>& belief : mixture) belief.assign(belief.size(), 0.0);
      for (int outcome = 0; outcome < plain[condition].outcomes; ++outcome) {
        const double weight = marginals[condition][outcome];
        if (weight == 0.0) continue;  // nothing is known under what cannot be
        plain[condition].finding = outcome;
        const Beliefs conditionals = Ask(plain, ToldAsItIs(plain), method);
        plain[condition].finding = -1;
        ASSERT_FALSE(conditionals.empty());
        for (std::size_t i = 0; i < mixture.size(); ++i) {
          for (std::size_t k = 0; k < mixture[i].size(); ++k) {
            mixture[i][k] += weight * conditionals[i][k];
          }
        }
      }
      ASSERT_LE(LargestDifference(marginals, mixture), kRounding);
    }
  }
}
