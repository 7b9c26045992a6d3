#pragma once

#include <string>
#include <vector>

#include "network/network.h"

/// A network file with the evidence and the posteriors that its reference gives.
struct ReferenceCase {
  KVN_network network;
  std::vector<std::vector<double>> expected;  // by handle, empty where unknown
};

/// Reads <name>.net of the folder KVN_NETWORKS and ../posteriors/<name>.evid.json beside it, and
/// sets the evidence. False when a file is missing or doesn't fit.
bool ReadReferenceCase(const std::string& name, ReferenceCase& made);

/// Errors of the posteriors of the nodes without evidence.
struct PosteriorErrors {
  double largest = 0.0;
  double meanSquare = 0.0;  // over all states of all such nodes
  bool isComplete = true;   // every node has a valid posterior
};
PosteriorErrors CompareWithReference(const ReferenceCase& measured);
