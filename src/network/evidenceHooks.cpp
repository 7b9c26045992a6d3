// Where values, definitions and arcs tell the network that something has changed.

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/nodeEntry.h"
#include "values/nodeValue.h"

int KVN_network::EvidenceChanged(int handle) {
  if ((updateFlags & KVN_UPDATE_TRACK_CHANGES) == 0) return KVN_SUCCESS;
  if ((changeMask & KVN_HOOK_EVIDENCE_SET) == 0) return KVN_SUCCESS;
  if (!IsLive(handle)) return KVN_REFUSED;
  if (int result = CheckPossible(handle); result < 0) return result;

  bool needDecisions = false;
  // The walk makes values stale and does nothing else. Findings that come one after the other, each
  // with all the evidence before it to consider, would cost quadratic time for nothing.
  const bool walks = mayGoStale;
  int result = walks ? SpreadEvidence(handle, needDecisions) : KVN_SUCCESS;
  if (result == 0 && (updateFlags & KVN_UPDATE_PROPAGATE_EVIDENCE) != 0) {
    result = PropagateEvidence(handle);
  }
  if (needDecisions) InvalidateDecisions();
  if (walks) mayGoStale = HasValueToGoStale();
  // After a conflict too: the value then takes the evidence back, which updates once more.
  AutomaticUpdate();
  return result;
}

int KVN_network::EvidenceCleared(int handle) {
  if ((updateFlags & KVN_UPDATE_TRACK_CHANGES) == 0) return KVN_SUCCESS;
  if ((changeMask & KVN_HOOK_EVIDENCE_CLEARED) == 0) return KVN_SUCCESS;
  if (!IsLive(handle)) return KVN_REFUSED;
  // The trails that the evidence had opened are walked once more as if it still stood.
  Entry(handle).marks |= KVN_MARK_VALUE_CHANGE;
  const int result = ChangeCascade(handle);
  Entry(handle).marks &= ~KVN_MARK_VALUE_CHANGE;
  AutomaticUpdate();
  return result;
}

int KVN_network::VirtualEvidenceChanged(int /*handle*/) {
  if ((updateFlags & KVN_UPDATE_TRACK_CHANGES) == 0) return KVN_SUCCESS;
  // No walk is tried: the helpers that stand for soft evidence exist during an update only.
  InvalidateAllBeliefs();
  AutomaticUpdate();
  return KVN_SUCCESS;
}

int KVN_network::NotifyChange(int handle, int code) {
  if ((updateFlags & KVN_UPDATE_TRACK_CHANGES) == 0) return KVN_SUCCESS;
  if ((changeMask & code) == 0) return KVN_SUCCESS;
  int result = KVN_SUCCESS;
  // Any other code with a bit of the mask, KVN_CHANGE_NO_CASCADE above all, still updates.
  if (code == KVN_CHANGE_OUTCOMES || code == KVN_CHANGE_NUMBERS || code == KVN_CHANGE_DEFINITION) {
    result = ChangeCascade(handle);
  }
  AutomaticUpdate();
  return result;
}

int KVN_network::ArcAdded(int /*parent*/, int child) {
  return ArcChanged(child, KVN_HOOK_ARC_ADDED);
}

int KVN_network::ArcRemoved(int /*parent*/, int child) {
  return ArcChanged(child, KVN_HOOK_ARC_REMOVED);
}

int KVN_network::ArcChanged(int child, int hook) {
  if ((updateFlags & KVN_UPDATE_TRACK_CHANGES) == 0) return KVN_SUCCESS;
  if ((changeMask & hook) == 0) return KVN_SUCCESS;
  const int result = ChangeCascade(child);
  AutomaticUpdate();
  return result;
}

void KVN_network::AutomaticUpdate() {
  // Whoever changed the model has succeeded; that the update failed shows in the values.
  if (updateFlags & KVN_UPDATE_AUTOMATIC) (void)UpdateBeliefs();
}

int KVN_network::InvalidateAllBeliefs() {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    KVN_nodeValue* value = ValueOf(handle);
    if (value != nullptr && !value->HasEvidence()) value->ClearValueValid();
  }
  return KVN_SUCCESS;
}

int KVN_network::ClearAllPropagatedEvidence() {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    KVN_nodeValue* value = ValueOf(handle);
    // Most values answer that they have none.
    if (value != nullptr) (void)value->ClearPropagatedEvidence();
  }
  return KVN_SUCCESS;
}
