#pragma once

#include <cstdint>
#include <vector>

class KVN_network;

struct RandomDiagramOptions {
  int maxDecisions = 3;
  int maxChance = 6;
  int maxUtilities = 2;
  double zeroShare = 0.2;  // of the probabilities
  bool evidence = true;    // on some nodes that no decision to make lies above
  bool combine = true;     // now and then a multi-attribute node on top
};

/// Fills an empty network with a diagram: decisions of 2 or 3 alternatives, chance nodes of 2 or 3
/// outcomes, utilities between -50 and 50, some with all numbers equal. What a decision knows is
/// drawn at random; two decisions may stand without a path between them. The evidence is possible.
void FillRandomDiagram(KVN_network& network, std::uint64_t seed,
                       const RandomDiagramOptions& options = {});

/// What becomes known or is decided in the diagram, in order. To be asked before the evaluation,
/// which may add arcs.
std::vector<int> PolicyNodesOf(KVN_network& network);
