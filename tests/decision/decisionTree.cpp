#include "tests/decision/decisionTree.h"

#include <algorithm>
#include <limits>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "network/network.h"
#include "values/nodeValue.h"

DecisionTree::DecisionTree(KVN_network& theNetwork, std::vector<int> theOrder)
    : network(theNetwork), order(std::move(theOrder)), outcomes(theNetwork.GetSize(), -1) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const int type = network.TypeOf(h);
    if ((type & KVN_TYPE_BIT_UTILITY) != 0) {
      if (network.GetNumberOfChildren(h) == 0) topmost.push_back(h);
    } else if (network.ValueOf(h)->HasEvidence()) {
      outcomes[h] = network.ValueOf(h)->GetEvidence();
    } else if (std::find(order.begin(), order.end(), h) == order.end()) {
      hidden.push_back(h);
    }
    if (type == KVN_TYPE_LIST) branches[h];
  }
  const Weighed all = Fold(0);
  expectedUtility = all.utility / all.probability;
}

DecisionTree::Weighed DecisionTree::Fold(std::size_t position) {
  if (position == order.size()) return SumHidden(0);
  const int node = order[position];
  const int count = network.DefinitionOf(node)->GetNumberOfOutcomes();
  if (network.TypeOf(node) == KVN_TYPE_LIST) return FoldDecision(position, count);
  Weighed sum;
  for (int k = 0; k < count; k++) {
    outcomes[node] = k;
    const Weighed one = Fold(position + 1);
    sum.probability += one.probability;
    sum.utility += one.utility;
  }
  outcomes[node] = -1;
  return sum;
}

DecisionTree::Weighed DecisionTree::FoldDecision(std::size_t position, int count) {
  const int node = order[position];
  std::vector<int> known;
  for (std::size_t i = 0; i < position; i++) known.push_back(outcomes[order[i]]);
  Weighed best;
  std::vector<double> worth;
  for (int k = 0; k < count; k++) {
    outcomes[node] = k;
    const Weighed one = Fold(position + 1);
    worth.push_back(one.utility / one.probability);
    if (k == 0 || best.utility < one.utility) best = one;
  }
  outcomes[node] = -1;
  if (best.probability > 0.0) branches[node][known] = worth;
  return best;
}

DecisionTree::Weighed DecisionTree::SumHidden(std::size_t position) {
  if (position < hidden.size()) {
    const int node = hidden[position];
    Weighed sum;
    for (int k = 0; k < network.DefinitionOf(node)->GetNumberOfOutcomes(); k++) {
      outcomes[node] = k;
      const Weighed one = SumHidden(position + 1);
      sum.probability += one.probability;
      sum.utility += one.utility;
    }
    outcomes[node] = -1;
    return sum;
  }
  Weighed one{1.0, 0.0};
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if ((network.TypeOf(h) & KVN_TYPE_BIT_UTILITY) != 0 || network.TypeOf(h) == KVN_TYPE_LIST) {
      continue;
    }
    one.probability *= Probability(h);
    if (one.probability == 0.0) return one;
  }
  one.utility = one.probability * TotalUtility();
  return one;
}

double DecisionTree::Probability(int handle) const {
  KVN_Dmatrix* table = nullptr;
  if (network.DefinitionOf(handle)->GetDefinition(table) != 0) return 0.0;
  int index = outcomes[handle];
  const KVN_intArray& parents = network.GetParents(handle);
  for (int i = 0; i < parents.GetNumItems(); i++) {
    index += table->GetMultipliers()[i] * outcomes[parents[i]];
  }
  return (*table)[index];
}

double DecisionTree::TotalUtility() const {
  double sum = 0.0;
  for (int handle : topmost) sum += Utility(handle);
  return sum;
}

/// The depth is that of the utilities above each other: a handful in these tests.
double DecisionTree::Utility(int handle) const {
  KVN_Dmatrix* table = nullptr;
  if (network.DefinitionOf(handle)->GetDefinition(table) != 0) return 0.0;
  const bool combines = network.TypeOf(handle) == KVN_TYPE_MAU;
  int index = 0;
  int dimension = 0;
  std::vector<double> inputs;
  for (int parent : network.GetParents(handle)) {
    if (combines && (network.TypeOf(parent) & KVN_TYPE_BIT_UTILITY) != 0) {
      inputs.push_back(Utility(parent));
    } else {
      index += table->GetMultipliers()[dimension++] * outcomes[parent];
    }
  }
  if (!combines) return (*table)[index];
  double sum = 0.0;
  for (double input : inputs) sum += input * (*table)[index++];
  return sum;
}
