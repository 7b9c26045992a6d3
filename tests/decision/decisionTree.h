#pragma once

#include <map>
#include <vector>

class KVN_network;

/// The whole decision tree of a diagram, folded back by enumeration of the joint distribution:
/// nothing is left out as irrelevant, no observation is forgotten. What the evaluators are held
/// against, and slow.
///
/// Evidence must not stand below a decision that is still to be made.
class DecisionTree {
 public:
  /// `order` are the policy nodes in the order in which they become known or are decided.
  DecisionTree(KVN_network& network, std::vector<int> order);

  /// Expected utility of the best strategy.
  double GetExpectedUtility() const { return expectedUtility; }

  /// What a decision is worth where `known` are the outcomes of all policy nodes before it: one
  /// number for each alternative, with all later decisions made best. Branches that the evidence or
  /// the diagram make impossible are missing.
  using Branches = std::map<std::vector<int>, std::vector<double>>;
  const Branches& GetBranches(int decision) const { return branches.at(decision); }
  const std::vector<int>& GetOrder() const { return order; }

 private:
  struct Weighed {
    double probability = 0.0;
    double utility = 0.0;  // times the probability
  };

  Weighed Fold(std::size_t position);
  Weighed FoldDecision(std::size_t position, int outcomes);
  Weighed SumHidden(std::size_t position);
  double Probability(int handle) const;
  double Utility(int handle) const;
  double TotalUtility() const;

  KVN_network& network;
  std::vector<int> order;
  std::vector<int> hidden;    // chance nodes that are neither observed nor become known
  std::vector<int> topmost;   // utilities that none combines
  std::vector<int> outcomes;  // by handle, -1 where not set
  std::map<int, Branches> branches;
  double expectedUtility = 0.0;
};
