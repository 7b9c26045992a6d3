#pragma once

#include <cstdint>

#include "tests/support/randomNetwork.h"

/// Random networks and findings for tests of inference.
struct RandomBayesOptions {
  int nodes = 6;
  int maxParents = 3;
  int maxOutcomes = 4;
  double zeroShare = 0.2;           // of the probabilities of tables
  double deterministicShare = 0.1;  // of the rows of tables
  bool gates = true;                // truth tables and causal gates beside plain tables
  bool polytree = false;            // without loops
};

/// Fills an empty network of at least 2 outcomes per node; see FillRandomNetwork. Handles don't
/// follow the arcs and may have holes. The network's reactions to changes are off.
void FillRandomBayes(KVN_network& network, std::uint64_t seed, const RandomBayesOptions& options);

/// Observes about `share` of the nodes. The findings are jointly possible when they are `possible`
/// (drawn from the joint distribution); else each is drawn by itself.
void ObserveAtRandom(KVN_network& network, std::uint64_t seed, double share, bool possible);

/// Gives soft evidence, with zeros here and there, to about `share` of the nodes without evidence.
void SoftenAtRandom(KVN_network& network, std::uint64_t seed, double share);

/// Sets about `share` of the nodes as targets.
void AimAtRandom(KVN_network& network, std::uint64_t seed, double share);
