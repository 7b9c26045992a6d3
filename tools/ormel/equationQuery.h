#pragma once

#include <string>
#include <vector>

class KVN_network;
class Output;

/// What the command line asks of an equation network.
struct EquationQuery {
  std::string form;            // "table", "json" or "csv"
  int digits = -1;             // decimals; below 0: the form's own
  bool isDiscretized = false;  // answer over intervals
  bool hasTargets = false;     // the wanted nodes were named
};

/// Updates a network whose evidence is set, and prints the answers for `targets` (handles, in
/// order). An exit code: that of the failed update, or where a wanted node has no answer
/// kExitImpossible for evidence that is impossible, else kExitRefused.
int AnswerEquations(KVN_network& network, std::vector<int> targets, const EquationQuery& query,
                    Output& output);
