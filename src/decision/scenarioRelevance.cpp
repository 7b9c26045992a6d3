// Which of the decisions and observations have an influence on which result. The cascade that keeps
// track of stale values answers this: take the evidence from one node, and see which values lose
// their valid mark.

#include "decision/cooperEvaluator.h"
#include "decision/policyOrder.h"
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

/// The network is told from here, since a value keeps to itself that its walk lacked memory. Then
/// what depends on the node would pass for what doesn't.
int CooperEvaluator::Forget(int handle) {
  const int mask = working.GetChangeMask();
  working.SetChangeMask(mask & ~KVN_HOOK_EVIDENCE_CLEARED);
  const int cleared = working.ValueOf(handle)->ClearEvidence();
  working.SetChangeMask(mask);
  if (cleared < 0) return KVN_SUCCESS;  // there was none
  return working.EvidenceCleared(handle) == KVN_NO_MEMORY ? KVN_NO_MEMORY : KVN_SUCCESS;
}

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
  KeepSoftEvidence();
  // Changes are followed; nothing is concluded from them, and nothing is computed.
  working.SetUpdateFlags((flags | KVN_UPDATE_TRACK_CHANGES) & ~KVN_UPDATE_PROPAGATE_EVIDENCE);
  working.SetChangeMask(KVN_HOOK_EVIDENCE_SET | KVN_HOOK_EVIDENCE_CLEARED);
  Observe(policyNodes);
  int result = ProbeMainUtility();
  if (result == 0 && hasEffort) result = CompleteScenarios();
  if (result == 0) result = ProbeResults();
  if (result == 0) result = ProbePolicyNodes();
  Observe(KVN_intArray());
  for (int handle : policyNodes) RestoreSoftEvidence(handle);
  working.SetUpdateFlags(flags);
  working.SetChangeMask(mask);
  return result;
}

/// Gives evidence to these policy nodes and to no others, without notice.
void CooperEvaluator::Observe(const KVN_intArray& observed) {
  const int mask = working.GetChangeMask();
  working.SetChangeMask(0);
  for (int handle : policyNodes) {
    KVN_nodeValue& value = *working.ValueOf(handle);
    const bool isWanted = observed.IsInList(handle);
    if (isWanted == value.IsEvidence()) continue;
    (void)(isWanted ? value.SetEvidence(0) : value.ClearEvidence());
  }
  working.SetChangeMask(mask);
}

/// Whether what is believed of `handle` changes with the outcome of `policyNode`, which has
/// evidence.
int CooperEvaluator::Probe(int handle, int policyNode, bool& depends) {
  KVN_nodeValue& value = *working.ValueOf(handle);
  value.SetValueValid();
  if (int result = Forget(policyNode); result < 0) return result;
  depends = !value.IsValueValid();
  Restore(policyNode);
  return KVN_SUCCESS;
}

/// What the main utility depends on, given all other policy nodes.
int CooperEvaluator::ProbeMainUtility() {
  for (int policyNode : policyNodes) {
    bool depends = false;
    if (int result = Probe(mainUtility, policyNode, depends); result < 0) return result;
    if (!depends) continue;
    if (int result = scenarioNodes.Add(policyNode); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// An observation may say nothing about the utility once a later one is known, and yet a decision
/// in between wants it: a weather forecast, before the weather itself is seen. Likewise a decision
/// may act on the utility through a later observation alone. Adds both kinds until all chance nodes
/// of `scenarioNodes` depend on nothing else that comes before them.
int CooperEvaluator::CompleteScenarios() {
  bool isComplete = false;
  while (!isComplete) {
    isComplete = true;
    KVN_intArray known;
    if (int result = known.Assign(scenarioNodes); result < 0) return result;
    for (int handle : known) {
      if (model->TypeOf(handle) == KVN_TYPE_LIST) continue;
      KVN_intArray before;
      if (int result = ListScenarioNodesBefore(handle, before); result < 0) return result;
      bool decided = false;  // whether a decision that matters comes between the two
      for (int i = policyNodes.FindPosition(handle) - 1; i >= 0; i--) {
        const bool isDecision = model->TypeOf(policyNodes[i]) == KVN_TYPE_LIST;
        if (scenarioNodes.IsInList(policyNodes[i])) {
          decided = decided || isDecision;
          continue;
        }
        if (!decided && !isDecision) continue;
        KVN_intArray observed;
        if (int result = observed.Assign(before); result < 0) return result;
        if (int result = observed.Add(policyNodes[i]); result < 0) return result;
        Observe(observed);
        bool depends = false;
        if (int result = Probe(handle, policyNodes[i], depends); result < 0) return result;
        if (!depends) continue;
        if (int result = scenarioNodes.Add(policyNodes[i]); result < 0) return result;
        isComplete = false;
        break;  // the next round starts from what is known now
      }
      if (!isComplete) break;
    }
  }
  KVN_intArray sorted;
  for (int handle : policyNodes) {
    if (!scenarioNodes.IsInList(handle)) continue;
    if (int result = sorted.Add(handle); result < 0) return result;
  }
  scenarioNodes.Swap(sorted);
  return KVN_SUCCESS;
}

int CooperEvaluator::ListScenarioNodesBefore(int policyNode, KVN_intArray& before) const {
  for (int handle : policyNodes) {
    if (handle == policyNode) break;
    if (!scenarioNodes.IsInList(handle)) continue;
    if (int result = before.Add(handle); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// Indexes the main utility by what is enumerated, and each other result by those of these nodes
/// that it depends on. All values are watched at once, so that the walks are as many as the nodes.
int CooperEvaluator::ProbeResults() {
  Observe(hasEffort ? scenarioNodes : policyNodes);
  KVN_intArray watched;
  KVN_intArray nodes;
  if (int result = CopyOrderOfNodes(working, nodes); result < 0) return result;
  for (int handle : nodes) {
    const KVN_nodeValue* value = working.ValueOf(handle);
    if (handle == mainUtility || value == nullptr || value->HasEvidence()) continue;
    if (working.DefinitionOf(handle) == nullptr) continue;
    if (model->TypeOf(handle) == KVN_TYPE_LIST) continue;  // nothing is stored for a decision
    if (int result = watched.Add(handle); result < 0) return result;
  }
  std::vector<KVN_intArray> dependsOn(static_cast<std::size_t>(watched.GetNumItems()));
  for (int node : scenarioNodes) {
    for (int handle : watched) working.ValueOf(handle)->SetValueValid();
    if (int result = Forget(node); result < 0) return result;
    for (int i = 0; i < watched.GetNumItems(); i++) {
      if (working.ValueOf(watched[i])->IsValueValid()) continue;
      if (int result = dependsOn[static_cast<std::size_t>(i)].Add(node); result < 0) return result;
    }
    Restore(node);
  }
  if (int result = IndexBy(*model, mainUtility, scenarioNodes); result < 0) return result;
  FillWithMark(*model, mainUtility);
  for (int i = 0; i < watched.GetNumItems(); i++) {
    const KVN_intArray& by = dependsOn[static_cast<std::size_t>(i)];
    if (int result = IndexBy(*model, watched[i], by); result < 0) return result;
    FillWithMark(*model, watched[i]);
  }
  return KVN_SUCCESS;
}

/// Indexes each policy node by what stands before it: its own probabilities depend on that alone.
/// The later ones count as known here, which makes for more dependences or, where one of them
/// stands between the two, for fewer; with effort they don't.
int CooperEvaluator::ProbePolicyNodes() {
  for (int i = policyNodes.GetNumItems() - 1; i >= 0; i--) {
    const int handle = policyNodes[i];
    const bool isEnumerated = scenarioNodes.IsInList(handle);
    if (hasEffort && !isEnumerated && model->TypeOf(handle) != KVN_TYPE_LIST) {
      continue;  // among the results
    }
    const bool isIdle = hasEffort && !isEnumerated;  // a decision that nothing depends on
    KVN_intArray before;
    if (!isIdle) {
      if (int result = ListScenarioNodesBefore(handle, before); result < 0) return result;
    }
    if (hasEffort) Observe(before);
    const bool wasObserved = working.ValueOf(handle)->IsEvidence();
    if (wasObserved) {
      if (int result = Forget(handle); result < 0) return result;
    }
    KVN_intArray dependsOn;
    for (int node : before) {
      bool depends = false;
      if (int result = Probe(handle, node, depends); result < 0) return result;
      if (!depends) continue;
      if (int result = dependsOn.Add(node); result < 0) return result;
    }
    if (wasObserved) Restore(handle);
    if (int result = IndexBy(*model, handle, dependsOn); result < 0) return result;
  }
  return KVN_SUCCESS;
}
