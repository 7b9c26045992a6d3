#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "definitions/nodeDefinition.h"

class KVN_network;

/// Numbers that depend on the seed alone: the same on every machine and with every library, unlike
/// the distributions of <random>.
class RandomSource {
 public:
  explicit RandomSource(std::uint64_t seed) : engine(seed) {}

  std::uint64_t Bits() { return engine(); }
  /// 0 to count - 1.
  int Below(int count) { return static_cast<int>(engine() % static_cast<std::uint64_t>(count)); }
  /// `low` to `high`, both included.
  int Between(int low, int high) { return low + Below(high - low + 1); }
  /// [0, 1), a multiple of 2^-53.
  double Unit() { return static_cast<double>(engine() >> 11) * 0x1p-53; }
  bool Chance(double probability) { return Unit() < probability; }
  /// `outcomes` numbers that sum to 1 up to rounding; about `zeroShare` of them are 0.
  std::vector<double> Distribution(int outcomes, double zeroShare);
  /// The numbers 0 to count - 1 in random order.
  std::vector<int> Permutation(int count);

 private:
  std::mt19937_64 engine;
};

struct RandomNetworkOptions {
  int nodes = 10;
  int maxParents = 3;
  int minOutcomes = 2;
  int maxOutcomes = 4;
  /// Kinds of nodes, each drawn with the same chance; one that stands here twice comes twice as
  /// often. CAST and DEMORGAN have two outcomes and parents of their own kind alone; a utility
  /// (TABLE, MAU) has no children but MAU.
  std::vector<int> kinds = {KVN_TYPE_CPT,       KVN_TYPE_TRUTHTABLE,  KVN_TYPE_LIST,
                            KVN_TYPE_TABLE,     KVN_TYPE_CAST,        KVN_TYPE_DEMORGAN,
                            KVN_TYPE_NOISY_MAX, KVN_TYPE_NOISY_ADDER, KVN_TYPE_MAU};
  double zeroShare = 0.1;  // of the probabilities of tables
  /// Names, comments, properties, documents, text boxes, submodels, layout, targets, settings.
  bool descriptions = true;
  bool diagnosis = true;  // diagnosis attributes
  bool costs = true;      // cost arcs and costs
};

/// Chance nodes with tables and nothing else: what tests of inference want.
inline RandomNetworkOptions PlainNetworkOptions(int nodes, int maxParents = 3) {
  RandomNetworkOptions options;
  options.nodes = nodes;
  options.maxParents = maxParents;
  options.kinds = {KVN_TYPE_CPT};
  options.descriptions = options.diagnosis = options.costs = false;
  return options;
}

/// Fills an empty network. The nodes are named N0, N1, ... in an order that parents come first; the
/// handles are in another order. Every definition is consistent; with descriptions there is every
/// kind of text that a file must carry, quotes, line breaks and bytes above 127 included.
/// A step that the network refuses fails the running test.
void FillRandomNetwork(KVN_network& network, std::uint64_t seed,
                       const RandomNetworkOptions& options = {});
