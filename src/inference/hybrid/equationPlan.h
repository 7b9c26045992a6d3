#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "expressions/expression.h"
#include "expressions/variableBinding.h"
#include "inference/hybrid/equationSystem.h"

class KVN_network;

/// The order in which the numbers of an equation network are computed, with every formula solved
/// for its node once: a run over samples only assigns and evaluates.
///
/// The order is the network's, parents first, with one addition: what the equations of a component
/// need from outside comes before the first of its nodes.
///
/// Observed nodes keep the number of their evidence, and their equations aren't asked; in a
/// component they are known numbers to the others.
///
/// Lives for one update; the network must not change meanwhile.
class EquationPlan {
 public:
  /// KVN_REFUSED, told to the log, for a component that can't be set up ("Faile in computing SCC.":
  /// a name without a node, or one that needs its own result from outside) or an equation with
  /// random numbers that can't be solved for its node; KVN_NO_MEMORY.
  int Setup(KVN_network& network);
  /// Computes every number anew, drawing new random ones. KVN_REFUSED, told to the log, when a
  /// nonlinear system has no solution to offer.
  int Run();

  /// By handle; KVN_UNDEFINED_VALUE where there is none.
  const std::vector<double>& GetNumbers() const { return numbers; }
  /// Nodes that get a number from a run, in the order of computation.
  const std::vector<int>& GetComputed() const { return computed; }

 private:
  struct Step {
    int handle = -1;                          // of the node, where it has a formula of its own
    std::unique_ptr<KVN_expression> formula;  // null: a system
    KVN_variableBinding binding;              // by handle
    std::unique_ptr<EquationSystem> system;
  };
  struct Unit;
  class Ordering;

  int AddUnit(KVN_network& network, const Unit& unit);
  int AddFormula(KVN_network& network, int handle);
  int AddSystem(KVN_network& network, const std::vector<int>& unknowns,
                const std::vector<int>& known);

  std::vector<Step> steps;
  std::vector<double> numbers;
  std::vector<int> computed;
};
