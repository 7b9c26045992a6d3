// What a change at one node makes stale. The walks are of the kind known as Bayes ball (Shachter,
// "Bayes-Ball: The Rational Pastime", 1998): they follow the active trails of the graph, given the
// evidence, and clear the valid mark of every value that they reach.

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/nodeEntry.h"
#include "network/walkStack.h"
#include "values/nodeValue.h"

namespace {

// Marks that one walk leaves behind and the next one starts without.
constexpr int kWalkMarks =
    KVN_MARK_VISITED | KVN_MARK_EVIDENCE_BELOW | KVN_MARK_FROM_CHILD | KVN_MARK_FROM_PARENT;

// Where a walk still has to go from a node; children are visited before parents.
constexpr int kToChildren = 1;
constexpr int kToParents = 2;

struct SpreadFrame {
  int handle = 0;
  int pending = 0;  // kTo... bits
  int next = 0;     // position in the list that is walked now
};

bool HasEvidence(const KVN_nodeValue* value) { return value != nullptr && value->HasEvidence(); }

void MakeStale(KVN_nodeValue* value) {
  if (value != nullptr) value->ClearValueValid();
}

}  // namespace

int KVN_network::ChangeCascade(int handle) {
  if ((updateFlags & KVN_UPDATE_TRACK_CHANGES) == 0) return KVN_SUCCESS;
  if (!IsLive(handle)) return KVN_REFUSED;
  // Without evidence and valid values there is nothing to derive and nothing to make stale. That is
  // how a network is built by program, and walks over the whole table would make each arc cost time
  // in proportion to the nodes.
  if (!mayHaveCurrentValue) return KVN_SUCCESS;
  ClearAllPropagatedEvidence();
  bool needDecisions = false;
  int result = PropagateAllEvidence();
  if (result == 0 && mayGoStale) {
    // Only now: the ancestors are those of the evidence as the propagation has left it.
    result = MarkEvidenceAncestors();
    if (result == 0) result = CascadeFrom(handle, needDecisions);
  }
  if (result < 0) GiveUpWalk(needDecisions);
  if (needDecisions) InvalidateDecisions();
  mayHaveCurrentValue = HasCurrentValue();
  if (mayGoStale) mayGoStale = HasValueToGoStale();
  return result;
}

bool KVN_network::HasCurrentValue() const {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    const KVN_nodeValue* value = ValueOf(handle);
    if (value != nullptr && value->IsCurrent()) return true;
  }
  return false;
}

bool KVN_network::HasValueToGoStale() const {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    const KVN_nodeValue* value = ValueOf(handle);
    if (value != nullptr && value->CanGoStale()) return true;
  }
  return false;
}

int KVN_network::CascadeFrom(int handle, bool& needDecisions) {
  KVN_nodeEntry& entry = Entry(handle);
  const int type = TypeOf(handle);
  const bool isEvidence = HasEvidence(ValueOf(handle));
  entry.marks |= KVN_MARK_VISITED;
  if (!isEvidence) {
    MakeStale(ValueOf(handle));
    if (type & KVN_TYPE_BIT_UTILITY) needDecisions = true;
    if (int result = Spread(handle, kToChildren, needDecisions); result < 0) return result;
  }
  const bool upward =
      isEvidence || (entry.marks & (KVN_MARK_EVIDENCE_BELOW | KVN_MARK_VALUE_CHANGE)) != 0;
  if ((type & KVN_TYPE_BIT_DECISION) != 0 || !upward) return KVN_SUCCESS;
  return Spread(handle, kToParents, needDecisions);
}

/// New evidence opens the trails through it as well as ending those that it stands on.
int KVN_network::SpreadEvidence(int handle, bool& needDecisions) {
  int result = MarkEvidenceAncestors();
  if (result == 0) {
    Entry(handle).marks |= KVN_MARK_VISITED;
    result = Spread(handle, kToChildren | kToParents, needDecisions);
  }
  if (result < 0) GiveUpWalk(needDecisions);
  return result;
}

/// What a walk cut short would have reached isn't known, and a stale value must not pass as valid.
void KVN_network::GiveUpWalk(bool& needDecisions) {
  InvalidateAllBeliefs();
  needDecisions = true;
}

int KVN_network::MarkEvidenceAncestors() {
  ClearMarks(kWalkMarks);
  KVN_intArray evidenceNodes;
  if (int result = GetEvidenceNodes(evidenceNodes); result < 0) return result;
  KVN_walkStack<int> stack;
  for (int node : evidenceNodes) {
    if (ValueOf(node)->IsPropagatedEvidence()) continue;
    if (int result = stack.Push(node); result < 0) return result;
    while (!stack.IsEmpty()) {
      const int handle = stack.Top();
      stack.Pop();
      for (int parent : GetParents(handle)) {
        // The ancestors of a marked node are marked or on the stack already.
        if (Entry(parent).marks & KVN_MARK_EVIDENCE_BELOW) continue;
        Entry(parent).marks |= KVN_MARK_EVIDENCE_BELOW;
        if (int result = stack.Push(parent); result < 0) return result;
      }
    }
  }
  return KVN_SUCCESS;
}

/// Walks on from `start` to its children or parents; the start itself isn't looked at.
int KVN_network::Spread(int start, int pending, bool& needDecisions) {
  KVN_walkStack<SpreadFrame> stack;
  if (int result = stack.Push({start, pending, 0}); result < 0) return result;
  while (!stack.IsEmpty()) {
    SpreadFrame& frame = stack.Top();
    if (frame.pending == 0) {
      stack.Pop();
      continue;
    }
    const bool down = (frame.pending & kToChildren) != 0;
    const KVN_intArray& list = down ? GetChildren(frame.handle) : GetParents(frame.handle);
    if (frame.next == list.GetNumItems()) {
      frame.pending &= down ? kToParents : 0;
      frame.next = 0;
      continue;
    }
    const int node = list[frame.next++];
    const int direction = down ? KVN_MARK_FROM_PARENT : KVN_MARK_FROM_CHILD;
    const int onward = EnterSpread(node, direction, needDecisions);
    if (onward == 0) continue;
    if (int result = stack.Push({node, onward, 0}); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// The walk reaches `handle`, moving up (from a child) or down (from a parent). Makes its value
/// stale if the trail is active, and returns where the walk goes on from there.
int KVN_network::EnterSpread(int handle, int direction, bool& needDecisions) {
  KVN_nodeEntry& entry = Entry(handle);
  KVN_nodeValue* value = ValueOf(handle);
  const int type = TypeOf(handle);
  const bool upward = direction == KVN_MARK_FROM_CHILD;
  const bool isEvidence = HasEvidence(value);
  if (type & KVN_TYPE_BIT_DECISION) {
    if (upward && !isEvidence) MakeStale(value);
    return 0;
  }
  // Propagated evidence without user evidence below depends on its ancestors alone.
  const bool evidenceBelow = (entry.marks & KVN_MARK_EVIDENCE_BELOW) != 0;
  if (isEvidence && value->IsPropagatedEvidence() && !evidenceBelow) return 0;

  if (isEvidence || (entry.marks & KVN_MARK_VALUE_CHANGE) != 0) {
    // Evidence stops what passes through, and links its parents to each other.
    if (upward || (entry.marks & KVN_MARK_VISITED) != 0) return 0;
    entry.marks |= KVN_MARK_VISITED;
    return kToParents;
  }
  if (entry.marks & KVN_MARK_VISITED) {
    // Visited from above, its children are done, but its parents still are to come.
    if (!upward || (entry.marks & KVN_MARK_FROM_PARENT) == 0) return 0;
    entry.marks &= ~KVN_MARK_FROM_PARENT;
    return kToParents;
  }
  entry.marks |= direction | KVN_MARK_VISITED;
  MakeStale(value);
  if (type & KVN_TYPE_BIT_UTILITY) needDecisions = true;
  return upward || evidenceBelow ? kToChildren | kToParents : kToChildren;
}

void KVN_network::InvalidateDecisions() {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    KVN_nodeValue* value = ValueOf(handle);
    const bool isDecision = (TypeOf(handle) & KVN_TYPE_BIT_DECISION) != 0;
    if (isDecision && HasEvidence(value)) value->ClearValueValid();
  }
}
