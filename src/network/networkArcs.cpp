// The arcs of both layers.

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeEntry.h"
#include "network/temporalEngine.h"

namespace {

constexpr int kCostLayer = 1;

/// Kinds of KVN_nodeEntry::temporalType that the arc rule knows.
constexpr int kTerminal = 2;
constexpr int kInPlate = 3;

/// One side of the search for a path between two nodes: goes through one arc at a time, breadth
/// first, so that two sides can take turns.
class Frontier {
 public:
  enum Step { kGoesOn, kMeets, kExhausted, kNoMemory };

  Frontier(KVN_nodeEntry* entries, KVN_intArray KVN_nodeEntry::*arcs, std::int64_t ownMark,
           std::int64_t otherMark)
      : table(entries), list(arcs), own(ownMark), other(otherMark) {}

  Step Start(int handle) { return Reach(handle); }

  Step Advance() {
    while (head < queue.GetNumItems() && position >= Arcs().GetNumItems()) {
      head++;
      position = 0;
    }
    return head < queue.GetNumItems() ? Reach(Arcs()[position++]) : kExhausted;
  }

 private:
  const KVN_intArray& Arcs() const { return table[queue[head]].*list; }

  Step Reach(int handle) {
    std::int64_t& mark = table[handle].arcTest;
    if (mark == other) return kMeets;
    if (mark == own) return kGoesOn;
    mark = own;
    return queue.Add(handle) < 0 ? kNoMemory : kGoesOn;
  }

  KVN_nodeEntry* table;
  KVN_intArray KVN_nodeEntry::*list;
  std::int64_t own;
  std::int64_t other;
  KVN_intArray queue;
  int head = 0;      // of the queue
  int position = 0;  // in the list of the queue's head
};

/// The last item, which was appended just now.
void TakeBack(KVN_intArray& list) { list.UseAsList(list.GetNumItems() - 1); }

}  // namespace

// --- Reading.

const KVN_intArray& KVN_network::GetParents(int handle, int layer) const {
  return layer == kCostLayer ? Entry(handle).costParents : Entry(handle).parents;
}

const KVN_intArray& KVN_network::GetChildren(int handle, int layer) const {
  return layer == kCostLayer ? Entry(handle).costChildren : Entry(handle).children;
}

int KVN_network::GetNumberOfParents(int handle, int layer) const {
  return IsLive(handle) ? GetParents(handle, layer).GetNumItems() : int{KVN_REFUSED};
}

int KVN_network::GetNumberOfChildren(int handle, int layer) const {
  return IsLive(handle) ? GetChildren(handle, layer).GetNumItems() : int{KVN_REFUSED};
}

int KVN_network::PositionOfParent(int parent, int child, int layer) const {
  return IsLive(child) ? GetParents(child, layer).FindPosition(parent) : int{KVN_REFUSED};
}

/// Looks in the shorter of the two lists that know the arc: a hub has thousands of children, but
/// few nodes have many parents.
bool KVN_network::HasArc(int parent, int child) const {
  const KVN_intArray& children = Entry(parent).children;
  const KVN_intArray& parents = Entry(child).parents;
  return children.GetNumItems() < parents.GetNumItems() ? children.IsInList(child)
                                                        : parents.IsInList(parent);
}

int KVN_network::IsArcEitherWay(int a, int b) const {
  if (!IsLive(a) || !IsLive(b)) return KVN_REFUSED;
  return HasArc(a, b) || HasArc(b, a) ? 1 : 0;
}

bool KVN_network::IsArcPossible(int parent, int child) const {
  return parent != child && IsLive(parent) && IsLive(child);
}

// --- Adding.

int KVN_network::AddArc(int parent, int child, int layer) {
  if (!IsArcPossible(parent, child) || layer < 0 || layer > kCostLayer) return KVN_REFUSED;
  const int result = layer == kCostLayer ? AddCostArc(parent, child) : AddPlainArc(parent, child);
  if (result < 0) return result;
  (void)ArcAdded(parent, child);  // the arc stands, whatever an update says
  return KVN_SUCCESS;
}

int KVN_network::AddPlainArc(int parent, int child) {
  if (HasArc(parent, child) || HasArc(child, parent)) return KVN_REFUSED;
  if ((loadFlags & KVN_LOAD_ANY_ARC_ORDER) == 0) {
    const int reaches = ReachesDownward(child, parent);
    if (reaches != 0) return reaches < 0 ? reaches : int{KVN_REFUSED};
  }
  const int parentKind = Entry(parent).temporalType;
  const int childKind = Entry(child).temporalType;
  // Plain nodes and anchors may lead anywhere (intended): only what leaves a plate or a terminal
  // is restricted.
  const bool leaves = parentKind == kTerminal || (parentKind == kInPlate && childKind != kInPlate);
  if (leaves && childKind != kTerminal) return KVN_NOT_APPLICABLE;

  KVN_intArray& children = Entry(parent).children;
  KVN_intArray& parents = Entry(child).parents;
  if (int result = children.Add(child); result < 0) return result;
  if (int result = parents.Add(parent); result < 0) {
    TakeBack(children);
    return result;
  }
  KVN_nodeDefinition* definition = DefinitionOf(child);
  if (definition == nullptr || definition->AddParent(parent) != 0) {
    (void)Entry(parent).children.DeleteByContent(child);
    (void)Entry(child).parents.DeleteByContent(parent);
    return LogError(KVN_NOT_APPLICABLE, "Arc rejected by child node");
  }
  if (temporal != nullptr) temporal->ArcAdded(parent, child);
  return KVN_SUCCESS;
}

int KVN_network::AddCostArc(int parent, int child) {
  KVN_intArray& children = Entry(parent).costChildren;
  KVN_intArray& parents = Entry(child).costParents;
  if (int result = children.Add(child); result < 0) return result;
  if (int result = parents.Add(parent); result < 0) {
    TakeBack(children);
    return result;
  }
  KVN_nodeCost* cost = GetNode(child)->Cost();
  if (cost == nullptr || cost->AddParent(parent) != 0) {
    TakeBack(children);
    TakeBack(parents);
    return LogError(KVN_REFUSED, "Arc cannot be added");
  }
  return KVN_SUCCESS;
}

/// 1 if there is a directed path between the nodes, 0 if not, or KVN_NO_MEMORY. Searches down from
/// one and up from the other in turns, and ends when either side has seen all it can: when a
/// network is built in any sensible order, one of the two ends has no arcs yet. The entries carry
/// the number of the last search, so nothing has to be cleared.
int KVN_network::ReachesDownward(int from, int to) {
  const std::int64_t downMark = ++arcTests;
  const std::int64_t upMark = ++arcTests;
  Frontier down(nodes, &KVN_nodeEntry::children, downMark, upMark);
  Frontier up(nodes, &KVN_nodeEntry::parents, upMark, downMark);
  Frontier::Step step = down.Start(from);
  if (step == Frontier::kGoesOn) step = up.Start(to);
  for (bool downward = true; step == Frontier::kGoesOn; downward = !downward) {
    step = downward ? down.Advance() : up.Advance();
  }
  if (step == Frontier::kNoMemory) return KVN_NO_MEMORY;
  return step == Frontier::kMeets ? 1 : 0;
}

// --- Removing.

int KVN_network::RemoveArc(int parent, int child, int layer) {
  if (!IsArcPossible(parent, child) || layer < 0 || layer > kCostLayer) return KVN_REFUSED;
  const int result =
      layer == kCostLayer ? RemoveCostArc(parent, child) : RemovePlainArc(parent, child);
  if (result < 0) return result;
  (void)ArcRemoved(parent, child);  // the arc is gone, whatever an update says
  return KVN_SUCCESS;
}

int KVN_network::RemovePlainArc(int parent, int child) {
  if (!HasArc(parent, child)) return KVN_REFUSED;
  if (temporal != nullptr) temporal->ArcRemoved(parent, child);
  KVN_nodeDefinition* definition = DefinitionOf(child);
  // The definition has no say (intended): an arc can always be removed.
  if (definition != nullptr) (void)definition->RemoveParent(parent);
  // By content, and only now: the definition may have removed other arcs of the child meanwhile.
  (void)Entry(parent).children.DeleteByContent(child);
  (void)Entry(child).parents.DeleteByContent(parent);
  return KVN_SUCCESS;
}

int KVN_network::RemoveCostArc(int parent, int child) {
  if (!Entry(child).costParents.IsInList(parent)) return KVN_REFUSED;
  KVN_nodeCost* cost = GetNode(child)->Cost();
  if (cost != nullptr) (void)cost->RemoveParent(parent);
  (void)Entry(parent).costChildren.DeleteByContent(child);
  DropTestGroupCost(parent);
  (void)Entry(child).costParents.DeleteByContent(parent);
  return KVN_SUCCESS;
}

/// Removes the arcs of one list of a node, always the first, until the list is empty.
int KVN_network::RemoveArcsOf(int handle, KVN_intArray KVN_nodeEntry::*list, int layer,
                              bool asParent) {
  // The entry is looked up each time: an update that a hook starts may move the table.
  while ((Entry(handle).*list).GetNumItems() > 0) {
    const int other = (Entry(handle).*list)[0];
    const int result = asParent ? RemoveArc(handle, other, layer) : RemoveArc(other, handle, layer);
    if (result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_network::RemoveAllParents(int handle) {
  if (!IsLive(handle)) return KVN_REFUSED;
  return RemoveArcsOf(handle, &KVN_nodeEntry::parents, /*layer=*/0, /*asParent=*/false);
}

int KVN_network::ChangeOrderOfParents(int handle, const KVN_intArray& newOrder) {
  if (!IsLive(handle)) return KVN_REFUSED;
  KVN_intArray& parents = Entry(handle).parents;
  // An array takes an order of its free slots too when it has no items; there is none to permute.
  if (UsedCount(newOrder) != parents.GetNumItems()) return KVN_REFUSED;
  if (parents.GetNumItems() == 0) return KVN_SUCCESS;
  if (int result = parents.ChangeOrder(newOrder); result < 0) return result;
  KVN_nodeDefinition* definition = DefinitionOf(handle);
  return definition != nullptr ? definition->ReorderParents(newOrder) : int{KVN_SUCCESS};
}
