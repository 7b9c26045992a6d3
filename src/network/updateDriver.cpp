// Chooses by content how the posteriors of a network are computed.

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/nodeEntry.h"
#include "network/temporalEngine.h"
#include "network/updateAlgorithm.h"
#include "values/nodeValue.h"

namespace {

constexpr int kInPlate = 3;  // temporalType of a node that repeats over time

// The hybrid mode whose rounds of messages can't fail to produce samples.
constexpr int kMessagesOnlyMode = 15;

struct NetworkContent {
  bool decisions = false;
  bool hybrid = false;
  bool continuous = false;

  void Note(int type);
  bool IsNonDiscrete() const { return hybrid || continuous; }
};

void NetworkContent::Note(int type) {
  if (type & (KVN_TYPE_BIT_DECISION | KVN_TYPE_BIT_UTILITY)) decisions = true;
  switch (type) {
    case KVN_TYPE_DCHILD_HPARENT:
    case KVN_TYPE_DISTRIBUTION:
    case KVN_TYPE_H_EQUATION:
      hybrid = true;
      break;
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
      continuous = true;
      break;
    default:
      break;
  }
}

}  // namespace

int KVN_network::UpdateBeliefs() {
  NetworkContent content;
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    if (Entry(handle).temporalType == kInPlate) return UpdateTemporal();
    content.Note(TypeOf(handle));
  }
  if (content.decisions && content.IsNonDiscrete()) {
    return LogError(KVN_REFUSED, "Unable to handle hybrid networks in influence diagrams.");
  }
  if (content.decisions) return UpdateDecisionNetwork();
  // It is meant that equations go before hybrid nodes, and both before the chosen discrete
  // algorithm.
  if (content.continuous) return UpdateEquations();
  if (content.hybrid) return UpdateHybrid();
  return UpdateDiscrete();
}

int KVN_network::UpdateTemporal() {
  if (temporal == nullptr) return KVN_REFUSED;
  const int automatic = updateFlags & KVN_UPDATE_AUTOMATIC;
  updateFlags &= ~KVN_UPDATE_AUTOMATIC;  // the engine's own changes must not start further updates
  const int result = temporal->UpdateBeliefs();
  updateFlags |= automatic;
  return result;
}

int KVN_network::UpdateDiscrete() {
  // A table whose shape isn't that of the parents would be read out of range by every algorithm.
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    if (!TableFits(handle)) return KVN_REFUSED;
  }
  KVN_intArray helpers;
  int result = InstallSoftEvidence(helpers);
  if (result == 0) result = RunDiscreteAlgorithm();
  RemoveSoftEvidence(helpers);
  return result;
}

int KVN_network::RunDiscreteAlgorithm() {
  for (const KVN_updateAlgorithm* row = theUpdateAlgorithms; row->code >= 0; row++) {
    if (row->code == defaultBNAlgorithm) return row->run(*this);
  }
  return KVN_REFUSED;
}

int KVN_network::UpdateHybrid() {
  if (theSpecialUpdates.hybridMode == nullptr) return KVN_REFUSED;
  if (defaultHybridAlgorithm < 13 || defaultHybridAlgorithm > 16) return KVN_REFUSED;
  InvalidateAllBeliefs();
  const int result = theSpecialUpdates.hybridMode(*this, defaultHybridAlgorithm);
  if (result >= 0 || defaultHybridAlgorithm == kMessagesOnlyMode) return result;
  return LogError(KVN_NO_USEFUL_SAMPLES,
                  "No useful samples have been generated for some of nodes.");
}

int KVN_network::UpdateEquations() {
  ClearAllPropagatedEvidence();
  InvalidateAllBeliefs();
  const KVN_specialUpdates& updates = theSpecialUpdates;
  if (equationDiscretized) {
    for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
      if (TypeOf(handle) != KVN_TYPE_EQUATION) continue;
      if (updates.discretize == nullptr) return KVN_REFUSED;
      const int result = updates.discretize(*this, handle);
      if (result != KVN_NOT_APPLICABLE) return result;
    }
    return LogError(KVN_NOT_APPLICABLE,
                    "At least one node with discretization intervals is required.");
  }
  // Evidence below a formula can't be met by solving it forward.
  auto chosen = updates.solveEquations;
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    const KVN_nodeValue* value = ValueOf(handle);
    const bool isEvidence = value != nullptr && value->IsEvidence();
    if (isEvidence && GetNumberOfParents(handle) > 0) chosen = updates.convertToHybrid;
  }
  return chosen == nullptr ? KVN_REFUSED : chosen(*this);
}

int KVN_network::UpdateDecisionNetwork() {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    if (int result = ResetValue(handle); result < 0) return result;
  }
  switch (defaultIDAlgorithm) {
    case 0:
      if (theSpecialUpdates.policyEvaluation == nullptr) return KVN_REFUSED;
      return theSpecialUpdates.policyEvaluation(*this);
    case 1:
      if (theSpecialUpdates.bestPolicySearch == nullptr) return KVN_REFUSED;
      return theSpecialUpdates.bestPolicySearch(*this);
    default:
      return KVN_REFUSED;
  }
}

/// One unindexed run of outcomes (of one cell for a node without), and not valid, evidence or not.
int KVN_network::ResetValue(int handle) {
  KVN_nodeValue* value = ValueOf(handle);
  const KVN_nodeDefinition* definition = DefinitionOf(handle);
  if (value == nullptr || definition == nullptr) return KVN_SUCCESS;
  const int outcomes = definition->GetNumberOfOutcomes();
  const int cells = outcomes < 0 ? 1 : outcomes;
  value->ClearIndexingParents();
  value->ClearValueValid();
  KVN_Dmatrix* matrix = nullptr;
  if (value->GetValue(matrix) < 0) return KVN_SUCCESS;
  if (matrix->GetNumberOfDimensions() == 1 && matrix->GetSize() == cells) return KVN_SUCCESS;
  return matrix->Setup(&cells, 1);
}
