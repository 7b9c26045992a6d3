#pragma once

#include <vector>

#include "expressions/equationSides.h"
#include "expressions/variableBinding.h"
#include "inference/hybrid/newton.h"

class KVN_network;

/// The equations of nodes whose numbers depend on each other: those of a strongly coupled
/// component, or the one of a node that can't be solved for it.
///
/// Lives for one update. Copies the equations, so the network's are never assigned values.
class EquationSystem : private ResidualSystem {
 public:
  /// `handles` are the unknowns. What an equation mentions besides them is a parent of its node, or
  /// one of `known`; any other variable stays without a value. KVN_REFUSED for a node without
  /// equation; KVN_NO_MEMORY.
  int Setup(const KVN_network& network, const std::vector<int>& handles,
            const std::vector<int>& known);
  /// Finds the numbers of the unknowns from those of other nodes, and writes them beside these; the
  /// vector is indexed by handle. KVN_REFUSED or KVN_NO_MEMORY leaves it unchanged.
  int Solve(std::vector<double>& numbers);

 private:
  struct Member {
    KVN_equationSides sides;
    KVN_variableBinding knownValues;    // by handle
    KVN_variableBinding unknownValues;  // by position among the unknowns
  };

  void ComputeResiduals(const std::vector<double>& x, std::vector<double>& residuals) override;

  std::vector<int> unknowns;
  std::vector<Member> members;
};

/// The equation of a node of either kind; null for any other node.
const KVN_equationSides* EquationOf(const KVN_network& network, int handle);
