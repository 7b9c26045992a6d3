// Which of the decisions and observations have an influence on which result. The cascade that keeps
// track of stale values answers this: take the evidence from one node, and see which values lose
// their valid mark.

#include "decision/cooperEvaluator.h"
#include "definitions/nodeDefinition.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "values/nodeValue.h"

namespace {

/// One unindexed run of outcomes. Unlike ReCreate it leaves soft evidence alone: the network is the
/// user's.
int ResetValue(KVN_network& network, int handle) {
  KVN_nodeValue* value = network.ValueOf(handle);
  const int outcomes = network.DefinitionOf(handle)->GetNumberOfOutcomes();
  const int cells = outcomes < 0 ? 1 : outcomes;
  value->ClearIndexingParents();
  value->ClearValueValid();
  KVN_Dmatrix* matrix = nullptr;
  if (int result = value->GetValue(matrix); result < 0) return result;
  return matrix->Setup(&cells, 1);
}

int IndexBy(KVN_network& network, int handle, const KVN_intArray& parents) {
  if (int result = ResetValue(network, handle); result < 0) return result;
  for (int parent : parents) {
    if (int result = network.ValueOf(handle)->AddIndexingParent(parent); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// The mark that stays where a scenario turns out to be impossible.
void FillWithMark(KVN_network& network, int handle) {
  KVN_Dmatrix* matrix = nullptr;
  if (network.ValueOf(handle)->GetValue(matrix) == 0) matrix->FillWith(KVN_UNDEFINED_VALUE);
}

}  // namespace

void CooperEvaluator::Forget(int handle) { (void)working.ValueOf(handle)->ClearEvidence(); }

/// Without the hook of new evidence: nothing is to become stale by this.
void CooperEvaluator::Restore(int handle) {
  const int mask = working.GetChangeMask();
  working.SetChangeMask(mask & ~KVN_HOOK_EVIDENCE_SET);
  (void)working.ValueOf(handle)->SetEvidence(0);
  working.SetChangeMask(mask);
}

/// Evidence takes the place of soft evidence, which has its say again when a node's own posterior
/// is computed.
void CooperEvaluator::KeepSoftEvidence() {
  for (int handle : policyNodes) {
    std::vector<double> likelihoods;
    if (working.ValueOf(handle)->GetVirtualEvidence(likelihoods) != 0) continue;
    softEvidence.emplace_back(handle, std::move(likelihoods));
  }
}

void CooperEvaluator::RestoreSoftEvidence(int handle) {
  for (const auto& [node, likelihoods] : softEvidence) {
    if (node == handle) (void)working.ValueOf(node)->SetVirtualEvidence(likelihoods);
  }
}

int CooperEvaluator::FindRelevantScenarios() {
  const int mask = working.GetChangeMask();
  const int flags = working.GetUpdateFlags();
  working.SetChangeMask(0);
  KeepSoftEvidence();
  for (int handle : policyNodes) (void)working.ValueOf(handle)->SetEvidence(0);
  // Changes are followed; nothing is concluded from them, and nothing is computed.
  working.SetUpdateFlags((flags | KVN_UPDATE_TRACK_CHANGES) & ~KVN_UPDATE_PROPAGATE_EVIDENCE);
  working.SetChangeMask(KVN_HOOK_EVIDENCE_SET | KVN_HOOK_EVIDENCE_CLEARED);
  int result = ProbeResults();
  if (result == 0) result = ProbePolicyNodes();
  working.SetChangeMask(0);
  for (int handle : policyNodes) {
    Forget(handle);
    RestoreSoftEvidence(handle);
  }
  working.SetUpdateFlags(flags);
  working.SetChangeMask(mask);
  return result;
}

/// Indexes the main utility by every policy node that it depends on, given all the others, and each
/// other result by those of these that it depends on. All values are watched at once, so that the
/// walks are as many as the policy nodes.
int CooperEvaluator::ProbeResults() {
  KVN_intArray watched;
  if (int result = watched.Add(mainUtility); result < 0) return result;
  for (int handle : working.GetOrderOfNodes()) {
    const KVN_nodeValue* value = working.ValueOf(handle);
    if (handle == mainUtility || value == nullptr || value->HasEvidence()) continue;
    if (int result = watched.Add(handle); result < 0) return result;
  }
  std::vector<KVN_intArray> dependsOn(static_cast<std::size_t>(watched.GetNumItems()));
  for (int policyNode : policyNodes) {
    for (int handle : watched) working.ValueOf(handle)->SetValueValid();
    Forget(policyNode);
    for (int i = 0; i < watched.GetNumItems(); i++) {
      if (working.ValueOf(watched[i])->IsValueValid()) continue;
      // What is of no concern to the main utility isn't enumerated, so nothing is indexed by it.
      if (i > 0 && !dependsOn[0].IsInList(policyNode)) continue;
      if (int result = dependsOn[i].Add(policyNode); result < 0) return result;
    }
    Restore(policyNode);
  }
  if (int result = scenarioNodes.Assign(dependsOn[0]); result < 0) return result;
  for (int i = 0; i < watched.GetNumItems(); i++) {
    if (int result = IndexBy(*model, watched[i], dependsOn[i]); result < 0) return result;
    FillWithMark(*model, watched[i]);
  }
  return KVN_SUCCESS;
}

/// Indexes each policy node by what stands before it: its own probabilities depend on that alone.
int CooperEvaluator::ProbePolicyNodes() {
  for (int i = policyNodes.GetNumItems() - 1; i >= 0; i--) {
    const int handle = policyNodes[i];
    KVN_nodeValue& value = *working.ValueOf(handle);
    KVN_intArray dependsOn;
    Forget(handle);
    for (int k = 0; k < i; k++) {
      if (!scenarioNodes.IsInList(policyNodes[k])) continue;
      value.SetValueValid();
      Forget(policyNodes[k]);
      const bool depends = !value.IsValueValid();
      Restore(policyNodes[k]);
      if (!depends) continue;
      if (int result = dependsOn.Add(policyNodes[k]); result < 0) return result;
    }
    Restore(handle);
    if (int result = IndexBy(*model, handle, dependsOn); result < 0) return result;
  }
  return KVN_SUCCESS;
}
