#pragma once

#include <gtest/gtest.h>

#include <vector>

class KVN_network;

/// All posteriors of a small discrete network by enumeration of its joint distribution, which
/// shares no code with any algorithm of the engine.
struct OracleResult {
  bool isPossible = false;  // whether the evidence has a probability above 0
  double probability = 0.0;
  std::vector<std::vector<double>> posteriors;  // by handle; empty for holes, and if impossible
};

/// Takes account of evidence, propagated evidence and soft evidence. Time is that of the possible
/// configurations: meant for networks of about ten nodes.
OracleResult EnumeratePosteriors(KVN_network& network);

/// Whether every node's value (of the network's targets only, if it has some) is valid and within
/// `tolerance` of the oracle's.
testing::AssertionResult PosteriorsNear(KVN_network& network, const OracleResult& expected,
                                        double tolerance);
