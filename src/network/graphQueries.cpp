// Questions about the graph that change nothing but the marks of the entries. The walks keep
// stacks of their own: the depth of a network isn't bounded, that of a thread's stack is.

#include <algorithm>

#include "definitions/ciDefinition.h"
#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeEntry.h"
#include "network/walkStack.h"
#include "values/nodeValue.h"

namespace {

/// A node, and how many of its parents the walk has been to.
struct OrderFrame {
  int node;
  int visited;
};

/// A node, and the one that it was reached from.
struct Step {
  int node;
  int from;
};

/// Cells of the table along a parent, 0 for one without outcomes.
int OutcomesOf(const KVN_network& network, int handle) {
  const KVN_nodeDefinition* definition = network.DefinitionOf(handle);
  const int count = definition != nullptr ? definition->GetNumberOfOutcomes() : 0;
  return std::max(count, 0);
}

}  // namespace

const KVN_intArray& KVN_network::GetOrderOfNodes() {
  order.Flush();
  ClearMarks(KVN_MARK_ORDERED);
  KVN_walkStack<OrderFrame> path;
  for (int start = GetFirstNode(); start >= 0; start = GetNextNode(start)) {
    if ((Entry(start).marks & KVN_MARK_ORDERED) != 0) continue;
    Entry(start).marks |= KVN_MARK_ORDERED;
    if (path.Push({start, 0}) < 0) return order;
    while (!path.IsEmpty()) {
      OrderFrame& frame = path.Top();
      const KVN_intArray& parents = Entry(frame.node).parents;
      if (frame.visited == parents.GetNumItems()) {
        if (order.Add(frame.node) < 0) return order;
        path.Pop();
        continue;
      }
      const int parent = parents[frame.visited++];
      // Marked on the way up, so that a cycle in a network that is being read ends the walk.
      if ((Entry(parent).marks & KVN_MARK_ORDERED) != 0) continue;
      Entry(parent).marks |= KVN_MARK_ORDERED;
      if (path.Push({parent, 0}) < 0) return order;
    }
  }
  return order;
}

int KVN_network::GetDescendants(int handle, KVN_intArray& list) {
  if (!IsLive(handle)) return KVN_REFUSED;
  ClearMarks(KVN_MARK_DESCENDANT);
  KVN_intArray pending;
  if (int result = pending.Add(handle); result < 0) return result;
  while (pending.GetNumItems() > 0) {
    const int node = pending[pending.GetNumItems() - 1];
    pending.UseAsList(pending.GetNumItems() - 1);
    for (int child : Entry(node).children) {
      if ((Entry(child).marks & KVN_MARK_DESCENDANT) != 0) continue;
      Entry(child).marks |= KVN_MARK_DESCENDANT;
      if (int result = pending.Add(child); result < 0) return result;
    }
  }
  for (int node = GetFirstNode(); node >= 0; node = GetNextNode(node)) {
    if ((Entry(node).marks & KVN_MARK_DESCENDANT) == 0) continue;
    if (int result = list.Add(node); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_network::GetEvidenceNodes(KVN_intArray& list) const {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    const KVN_nodeValue* value = ValueOf(handle);
    if (value == nullptr || !value->HasEvidence()) continue;
    if (int result = list.Add(handle); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_network::FilterByDefinitionType(const KVN_intArray& list, int mask,
                                        KVN_intArray& result) const {
  result.Flush();
  for (int handle : list) {
    if ((TypeOf(handle) & mask) == 0) continue;
    if (int added = result.Add(handle); added < 0) return added;
  }
  return KVN_SUCCESS;
}

int KVN_network::GetDiscreteParents(int handle, KVN_intArray& result, int layer) const {
  if (!IsLive(handle)) return KVN_REFUSED;
  return FilterByDefinitionType(GetParents(handle, layer), KVN_TYPE_BIT_DISCRETE, result);
}

int KVN_network::IsSinglyConnected() {
  ClearMarks(KVN_MARK_VISITED);
  KVN_walkStack<Step> pending;
  for (int start = GetFirstNode(); start >= 0; start = GetNextNode(start)) {
    if ((Entry(start).marks & KVN_MARK_VISITED) != 0) continue;
    if (int result = pending.Push({start, /*from=*/-1}); result < 0) return result;
    while (!pending.IsEmpty()) {
      const auto [node, from] = pending.Top();
      pending.Pop();
      // In a tree every node is reached once.
      if ((Entry(node).marks & KVN_MARK_VISITED) != 0) return 0;
      Entry(node).marks |= KVN_MARK_VISITED;
      for (const KVN_intArray* list : {&Entry(node).parents, &Entry(node).children}) {
        for (int neighbour : *list) {
          if (neighbour == from) continue;
          if (int result = pending.Push({neighbour, node}); result < 0) return result;
        }
      }
    }
  }
  return 1;
}

int KVN_network::ComputeLevels() {
  (void)GetOrderOfNodes();
  int highest = 0;
  for (int i = order.GetNumItems() - 1; i >= 0; i--) {
    KVN_nodeEntry& entry = Entry(order[i]);
    entry.level = 0;
    for (int child : entry.children) entry.level = std::max(entry.level, 1 + Entry(child).level);
    highest = std::max(highest, entry.level);
  }
  return highest;
}

int KVN_network::GetLevel(int handle) const {
  return IsLive(handle) ? Entry(handle).level : int{KVN_REFUSED};
}

int KVN_network::GetTemporalOrder(KVN_intArray& list) {
  list.Flush();
  if (GetOrderOfNodes().GetNumItems() != numNodes) return KVN_NO_MEMORY;
  KVN_intArray places;  // by handle: place in the order, or kListed
  constexpr int kListed = -1;
  if (int result = places.SetSize(size); result < 0) return result;
  for (int i = 0; i < order.GetNumItems(); i++) places[order[i]] = i;

  KVN_intArray known;  // places of the parents of one decision that aren't listed yet
  for (int decision : order) {
    if ((TypeOf(decision) & KVN_TYPE_BIT_DECISION) == 0) continue;
    known.Flush();
    for (int parent : Entry(decision).parents) {
      if (places[parent] == kListed) continue;
      if (int result = known.Add(places[parent]); result < 0) return result;
    }
    std::sort(known.begin(), known.end());
    for (int place : known) {
      if (int result = list.Add(order[place]); result < 0) return result;
      places[order[place]] = kListed;
    }
    if (int result = list.Add(decision); result < 0) return result;
    places[decision] = kListed;
  }
  for (int node : order) {
    if (places[node] == kListed) continue;
    if (int result = list.Add(node); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// Whether a canonical gate has a row of parameters for each outcome of each parent, and one for
/// the leak. The table isn't built for this: gates with many parents never need it.
bool KVN_network::GateFits(const KVN_ciDefinition& gate) const {
  long long rows = 1;
  for (int parent : GetParents(gate.GetHandle())) rows += OutcomesOf(*this, parent);
  const KVN_Dmatrix& parameters = gate.GetParameters();
  return parameters.GetNumberOfDimensions() == 2 && parameters.GetSizeOfDimension(0) == rows &&
         parameters.GetSizeOfDimension(1) == gate.GetNumberOfOutcomes();
}

bool KVN_network::TableFits(int handle) const {
  KVN_nodeDefinition* definition = DefinitionOf(handle);
  if (definition == nullptr) return false;
  const int type = definition->GetType();
  if ((type & KVN_TYPE_BIT_DISCRETE) == 0) return true;
  if (type == KVN_TYPE_NOISY_MAX || type == KVN_TYPE_NOISY_ADDER) {
    const auto& gate = static_cast<const KVN_ciDefinition&>(*definition);
    if (!GateFits(gate)) return false;
    if ((gate.GetCiFlags() & KVN_CI_CPT_CURRENT) == 0) return true;
  }
  KVN_Dmatrix* table = nullptr;
  const int result = definition->GetDefinition(table);
  if (result == KVN_NOT_APPLICABLE) return true;  // decisions have no table
  if (result < 0 || table == nullptr) return false;

  const KVN_intArray& parents = Entry(handle).parents;
  const int rank = parents.GetNumItems();
  if (table->GetNumberOfDimensions() != rank + 1) return false;
  for (int i = 0; i < rank; i++) {
    if (table->GetSizeOfDimension(i) != OutcomesOf(*this, parents[i])) return false;
  }
  return table->GetSizeOfDimension(rank) == definition->GetNumberOfOutcomes();
}
