#include "ormel/policyWalk.h"

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/numberText.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

KVN_Dmatrix* MatrixOf(KVN_network& network, int handle) {
  KVN_Dmatrix* matrix = nullptr;
  KVN_nodeValue* value = network.ValueOf(handle);
  return value != nullptr && value->GetValue(matrix) == 0 ? matrix : nullptr;
}

bool IsDecision(const KVN_network& network, int handle) {
  return network.TypeOf(handle) == KVN_TYPE_LIST;
}

bool IsIndexing(KVN_network& network, int node) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const KVN_nodeValue* value = network.ValueOf(h);
    if (value != nullptr && value->GetIndexingParents().IsInList(node)) return true;
  }
  return false;
}

int LastSize(const KVN_Dmatrix& matrix) {
  const int rank = matrix.GetNumberOfDimensions();
  return rank == 0 ? 0 : matrix.GetSizeOfDimension(rank - 1);
}

}  // namespace

PolicyWalk::PolicyWalk(KVN_network& theNetwork, const std::vector<int>& order)
    : network(theNetwork),
      outcomes(static_cast<std::size_t>(theNetwork.GetSize()), 0),
      results(static_cast<std::size_t>(theNetwork.GetSize())) {
  for (int node : order) {
    if (IsIndexing(network, node)) nodes.push_back(node);
  }
  Follow();
}

/// Branch by branch, with the position in `nodes` instead of a recursion.
void PolicyWalk::Follow() {
  std::vector<int> next(nodes.size() + 1, 0);
  std::vector<double> weights(nodes.size() + 1, 1.0);  // of the branch up to a position
  std::size_t at = 0;
  while (true) {
    if (at == nodes.size()) {
      Gather(weights[at]);
    } else {
      const int node = nodes[at];
      double probability = 0.0;
      if (IsDecision(network, node)) {
        const int best = next[at] == 0 ? BestInRow(node) : -1;
        next[at] = 1;
        if (best >= 0) {
          outcomes[static_cast<std::size_t>(node)] = best;
          probability = 1.0;
        }
      } else {
        const int count = network.DefinitionOf(node)->GetNumberOfOutcomes();
        while (probability == 0.0 && next[at] < count) {
          outcomes[static_cast<std::size_t>(node)] = next[at];
          probability = ProbabilityOf(node, next[at]++);
        }
      }
      if (probability > 0.0) {
        weights[at + 1] = weights[at] * probability;
        next[++at] = 0;
        continue;
      }
    }
    if (at == 0) return;
    at--;
  }
}

void PolicyWalk::Gather(double weight) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const KVN_Dmatrix* matrix = MatrixOf(network, h);
    if (matrix == nullptr || !network.ValueOf(h)->IsValueValid() || IsDecision(network, h)) {
      continue;
    }
    const int start = StartOfRow(h);
    const int count = LastSize(*matrix);
    if (start < 0) continue;
    std::vector<double>& sums = results[static_cast<std::size_t>(h)];
    sums.resize(static_cast<std::size_t>(count), 0.0);
    for (int k = 0; k < count; k++) {
      sums[static_cast<std::size_t>(k)] += weight * (*matrix)[start + k];
    }
  }
}

/// -1 for a value that isn't shaped by its indexing nodes.
int PolicyWalk::StartOfRow(int handle) const {
  const KVN_Dmatrix* matrix = MatrixOf(network, handle);
  const KVN_intArray& indexing = network.ValueOf(handle)->GetIndexingParents();
  if (matrix == nullptr || matrix->GetNumberOfDimensions() != indexing.GetNumItems() + 1) return -1;
  int start = 0;
  for (int i = 0; i < indexing.GetNumItems(); i++) {
    start += matrix->GetMultipliers()[i] * outcomes[static_cast<std::size_t>(indexing[i])];
  }
  return start;
}

double PolicyWalk::ProbabilityOf(int handle, int outcome) const {
  const int start = StartOfRow(handle);
  const double probability = start < 0 ? 0.0 : (*MatrixOf(network, handle))[start + outcome];
  return probability == KVN_UNDEFINED_VALUE ? 0.0 : probability;
}

int PolicyWalk::BestInRow(int decision) const {
  const int start = StartOfRow(decision);
  if (start < 0) return -1;
  const KVN_Dmatrix& matrix = *MatrixOf(network, decision);
  int best = -1;
  for (int k = 0; k < LastSize(matrix); k++) {
    const double cell = matrix[start + k];
    if (cell == KVN_UNDEFINED_VALUE) continue;
    if (best < 0 || matrix[start + best] < cell) best = k;
  }
  return best;
}

/// Whether the outcomes that stand in `outcomes` can come about up to the decision.
bool PolicyWalk::IsPossible(int decision) const {
  for (int node : nodes) {
    if (node == decision) break;
    if (IsDecision(network, node)) continue;
    if (ProbabilityOf(node, outcomes[static_cast<std::size_t>(node)]) == 0.0) return false;
  }
  return true;
}

std::vector<int> PolicyWalk::BestOf(int decision) const {
  PolicyWalk row(*this);
  std::vector<int> best;
  const KVN_Dmatrix* matrix = MatrixOf(network, decision);
  const KVN_intArray& indexing = network.ValueOf(decision)->GetIndexingParents();
  const int count = matrix == nullptr ? 0 : LastSize(*matrix);
  KVN_intArray at;
  for (int start = 0; count > 0 && start < matrix->GetSize(); start += count) {
    if (matrix->CoordinatesOf(start, at) != 0) break;
    for (int i = 0; i < indexing.GetNumItems(); i++) {
      row.outcomes[static_cast<std::size_t>(indexing[i])] = at[i];
    }
    best.push_back(row.IsPossible(decision) ? row.BestInRow(decision) : -1);
  }
  return best;
}
