// Evidence that follows from other evidence by certainty: an outcome of a child that its table
// makes sure, and an outcome of a parent that is the only one left. Both tests are exact
// comparisons with 1.0 and 0.0, so no rounding can make a belief a fact.

#include <cstdio>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/walkStack.h"
#include "values/nodeValue.h"

namespace {

constexpr int kMessageSize = 2000;
constexpr int kFree = -1;  // coordinate that runs over its dimension

// Neither a utility nor a decision is ever concluded.
constexpr int kNotConcluded = KVN_TYPE_BIT_DECISION | KVN_TYPE_BIT_UTILITY;

enum LogicStage { kForward, kBackward, kFinished };

const char* TextOf(const char* text) { return text == nullptr ? "(null)" : text; }

KVN_Dmatrix* TableOf(KVN_nodeDefinition* definition) {
  KVN_Dmatrix* table = nullptr;
  if (definition == nullptr || definition->GetDefinition(table) < 0) return nullptr;
  return table;
}

const char* OutcomeName(const KVN_nodeDefinition& definition, int outcome) {
  const KVN_idArray* names = definition.GetOutcomesNames();
  if (names == nullptr || outcome < 0 || outcome >= UsedCount(*names)) return nullptr;
  return (*names)[outcome];
}

// The only outcome of parent number `position` that `table` leaves possible at the coordinates;
// negative when there are none or several. The parent's coordinate is free afterwards.
int OnlyPossibleOutcome(const KVN_Dmatrix& table, int outcomes, int position,
                        KVN_intArray& coordinates) {
  int found = KVN_REFUSED;
  for (int outcome = 0; outcome < outcomes; outcome++) {
    coordinates[position] = outcome;
    const int isImpossible = table.IsSliceAllEqualTo(0.0, coordinates);
    if (isImpossible == 1) continue;
    // A second one, or a table of another shape: nothing can be said.
    if (isImpossible < 0 || found >= 0) {
      found = KVN_REFUSED;
      break;
    }
    found = outcome;
  }
  coordinates[position] = kFree;
  return found;
}

}  // namespace

/// How far the walk has come with one node.
struct KVN_logicFrame {
  int handle = 0;
  int stage = kForward;
  int position = 0;                    // in the children, then in the parents
  int outcome = 0;                     // next outcome of the child to try
  const KVN_Dmatrix* table = nullptr;  // of the child or of the node itself; null: not begun
  KVN_intArray coordinates;            // in that table, as the evidence stood when it was begun
};

/// For each parent its evidence or kFree, and the same for the node itself as last coordinate.
int KVN_network::EvidenceCoordinates(int handle, KVN_intArray& coordinates) const {
  coordinates.Flush();
  for (int parent : GetParents(handle)) {
    const KVN_nodeValue* value = ValueOf(parent);
    const bool isKnown = value != nullptr && value->HasEvidence();
    if (int result = coordinates.Add(isKnown ? value->GetEvidence() : kFree); result < 0) {
      return result;
    }
  }
  const KVN_nodeValue* value = ValueOf(handle);
  const bool isKnown = value != nullptr && value->HasEvidence();
  return coordinates.Add(isKnown ? value->GetEvidence() : kFree);
}

/// KVN_REFUSED, told to the log, when the node's evidence has probability zero in each case that
/// the parents' evidence leaves.
int KVN_network::CheckPossible(int handle) const {
  KVN_nodeDefinition* definition = DefinitionOf(handle);
  const KVN_Dmatrix* table = TableOf(definition);
  if (table == nullptr) return KVN_SUCCESS;
  KVN_intArray coordinates;
  if (int result = EvidenceCoordinates(handle, coordinates); result < 0) return result;
  if (table->IsSliceAllEqualTo(0.0, coordinates) != 1) return KVN_SUCCESS;
  const int outcome = coordinates[coordinates.GetNumItems() - 1];
  char message[kMessageSize];
  std::snprintf(message, sizeof message, "Outcome [%s] of node [%s] is impossible",
                TextOf(OutcomeName(*definition, outcome)), TextOf(GetNode(handle)->GetId()));
  return LogError(KVN_REFUSED, message);
}

int KVN_network::PropagateAllEvidence() {
  KVN_intArray evidenceNodes;
  if (int result = GetEvidenceNodes(evidenceNodes); result < 0) return result;
  if ((updateFlags & KVN_UPDATE_PROPAGATE_EVIDENCE) == 0) return KVN_SUCCESS;
  // A conflict is in the log and nothing more (intended): the evidence was accepted before, and the
  // change that brought the conflict can't be refused here.
  for (int node : evidenceNodes) (void)PropagateEvidence(node);
  return KVN_SUCCESS;
}

/// Derives what follows from the evidence of `handle`, and from that in turn, depth first. The
/// first conflict ends all of it; what was derived up to then stays.
int KVN_network::PropagateEvidence(int handle) {
  KVN_walkStack<KVN_logicFrame> stack;
  int follow = handle;
  do {
    if (follow >= 0) {
      const KVN_nodeValue* value = ValueOf(follow);
      if (value == nullptr || !value->HasEvidence()) return KVN_REFUSED;
      KVN_logicFrame frame;
      frame.handle = follow;
      if (int result = stack.Push(std::move(frame)); result < 0) return result;
      follow = kFree;
    }
    KVN_logicFrame& frame = stack.Top();
    int result = KVN_SUCCESS;
    if (frame.stage == kForward) {
      result = StepForward(frame, follow);
    } else if (frame.stage == kBackward) {
      result = StepBackward(frame, follow);
    } else {
      stack.Pop();
    }
    if (result < 0) return result;
  } while (!stack.IsEmpty());
  return KVN_SUCCESS;
}

/// Goes on with the children until one of them has to be followed, or there are no more.
int KVN_network::StepForward(KVN_logicFrame& frame, int& follow) {
  const KVN_intArray& children = GetChildren(frame.handle);
  for (; frame.position < children.GetNumItems(); frame.position++) {
    const int child = children[frame.position];
    KVN_nodeDefinition* definition = DefinitionOf(child);
    if (frame.table == nullptr) {
      if (TypeOf(child) & kNotConcluded) continue;
      frame.table = TableOf(definition);
      if (frame.table == nullptr) continue;
      frame.outcome = 0;
      if (int result = EvidenceCoordinates(child, frame.coordinates); result < 0) return result;
    }
    const int own = frame.coordinates.GetNumItems() - 1;
    while (frame.outcome < definition->GetNumberOfOutcomes()) {
      const int outcome = frame.outcome++;
      frame.coordinates[own] = outcome;
      if (frame.table->IsSliceAllEqualTo(1.0, frame.coordinates) != 1) continue;
      int result = Conclude(frame.handle, child, outcome, follow);
      if (result < 0 || follow >= 0) return result;
    }
    frame.table = nullptr;
  }
  frame.stage = kBackward;
  frame.position = 0;
  return KVN_SUCCESS;
}

/// Goes on with the parents in the same way.
int KVN_network::StepBackward(KVN_logicFrame& frame, int& follow) {
  const KVN_intArray& parents = GetParents(frame.handle);
  if (frame.table == nullptr) {
    const bool isDecision = (TypeOf(frame.handle) & KVN_TYPE_BIT_DECISION) != 0;
    frame.table = isDecision ? nullptr : TableOf(DefinitionOf(frame.handle));
    if (frame.table == nullptr) {
      frame.stage = kFinished;
      return KVN_SUCCESS;
    }
    if (int result = EvidenceCoordinates(frame.handle, frame.coordinates); result < 0) {
      return result;
    }
  }
  while (frame.position < parents.GetNumItems()) {
    const int position = frame.position++;
    const int parent = parents[position];
    const KVN_nodeDefinition* definition = DefinitionOf(parent);
    if (definition == nullptr || (definition->GetType() & kNotConcluded) != 0) continue;
    // It is meant that the parent's coordinate is free again for the parents after it, whatever has
    // been concluded: siblings get no help from it before a later pass.
    const int outcome = OnlyPossibleOutcome(*frame.table, definition->GetNumberOfOutcomes(),
                                            position, frame.coordinates);
    if (outcome < 0) continue;
    int result = Conclude(frame.handle, parent, outcome, follow);
    if (result < 0 || follow >= 0) return result;
  }
  frame.stage = kFinished;
  return KVN_SUCCESS;
}

/// `other` must have that outcome, says the evidence of `from`. A new fact is noted, and followed
/// (through `follow`): no walk has been there, since all that it leads through has evidence.
int KVN_network::Conclude(int from, int other, int outcome, int& follow) {
  KVN_nodeValue* value = ValueOf(other);
  if (value == nullptr) return KVN_SUCCESS;
  if (!value->HasEvidence()) {
    if (int result = value->SetPropagatedEvidence(outcome); result < 0) return result;
    follow = other;
    return KVN_SUCCESS;
  }
  if (value->GetEvidence() == outcome) return KVN_SUCCESS;
  char message[kMessageSize];
  // The spelling is meant to stay: hosts look for the texts of messages.
  std::snprintf(message, sizeof message, "ERROR: conficting evidence between nodes [%s] and [%s]",
                TextOf(GetNode(from)->GetId()), TextOf(GetNode(other)->GetId()));
  return LogError(KVN_CONFLICTING_EVIDENCE, message);
}
