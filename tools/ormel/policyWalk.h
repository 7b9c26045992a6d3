#pragma once

#include <vector>

class KVN_network;

/// Follows the best strategy through a diagram that policy evaluation has solved: what is observed
/// branches, what is decided takes its best alternative. So every indexed result becomes a single
/// one, which holds under that strategy.
class PolicyWalk {
 public:
  /// `order` are the open nodes in temporal order; those that no result is indexed by are left
  /// out.
  PolicyWalk(KVN_network& network, const std::vector<int>& order);

  const std::vector<int>& GetScenarioNodes() const { return nodes; }
  /// The numbers of a node: the probabilities of its states, or its utility. Empty for a node
  /// without a valid result.
  const std::vector<double>& ResultOf(int handle) const { return results[handle]; }

  /// The best alternative of each row of the decision's table, -1 for a row that can't come about.
  std::vector<int> BestOf(int decision) const;

 private:
  void Follow();
  void Gather(double weight);
  int StartOfRow(int handle) const;
  double ProbabilityOf(int handle, int outcome) const;
  int BestInRow(int decision) const;
  bool IsPossible(int decision) const;

  KVN_network& network;
  std::vector<int> nodes;
  std::vector<int> outcomes;                 // by handle: of the nodes, on the present branch
  std::vector<std::vector<double>> results;  // by handle
};
