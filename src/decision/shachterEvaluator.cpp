#include "decision/shachterEvaluator.h"

#include "decision/chanceConversion.h"
#include "decision/policyOrder.h"
#include "definitions/mau.h"
#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "foundation/sysCoordinates.h"
#include "network/node.h"
#include "values/nodeValue.h"

namespace {

/// The merged table has a cell for each combination of its parents' outcomes.
constexpr int kMaxMergedParents = 13;
constexpr int kNodeNameSize = 32;

bool HasEvidence(const KVN_network& network, int handle) {
  const KVN_nodeValue* value = network.ValueOf(handle);
  return value != nullptr && value->HasEvidence();
}

}  // namespace

int RunBestPolicySearch(KVN_network& network) { return ShachterEvaluator().Evaluate(network); }

int ShachterEvaluator::Evaluate(KVN_network& network) {
  model = &network;
  if (int result = model->GetTemporalOrder(order); result < 0) return result;
  if (!CheckApplicable()) {
    return LogError(KVN_REFUSED, "Can't solve this network using best policy algorithm");
  }
  const int mask = model->GetChangeMask();
  model->SetChangeMask(0);
  (void)model->InvalidateAllBeliefs();
  int result = BuildPolicyNodes(*model, policyNodes);
  if (result == 0) result = AddTemporalArcs(*model, policyNodes, addedArcs);
  if (result == 0) result = Prepare();
  if (result < 0) {
    model->SetChangeMask(mask);
    return result;
  }
  result = FoldMauNodes();
  if (result == 0) result = MergeUtilities();
  // It is meant that the mask stays at 0 when the utilities can't be merged.
  if (result < 0) return result;
  model->SetChangeMask(mask);
  working.SetUpdateFlags(working.GetUpdateFlags() & ~KVN_UPDATE_AUTOMATIC);
  result = ConvertToChance(working);
  if (result == 0) {
    // What the user has asked for has no say here: every decision is looked at.
    (void)working.ClearAllTargets();
    PrepareForInference(working);
    result = SolveDecisions();
  }
  if (result == 0) return KVN_SUCCESS;
  (void)model->InvalidateAllBeliefs();
  return LogError(result, "Error when running Shachter's algorithm");
}

/// Whether all that the next decision may know is known. Later decisions aren't looked at.
bool ShachterEvaluator::CheckApplicable() const {
  for (int handle : order) {
    if (model->TypeOf(handle) != KVN_TYPE_LIST || HasEvidence(*model, handle)) continue;
    for (int parent : model->GetParents(handle)) {
      if (!HasEvidence(*model, parent)) return false;
    }
    return true;
  }
  return true;
}

int ShachterEvaluator::Prepare() {
  // Anew: an arc may have been added.
  if (int result = model->GetTemporalOrder(order); result < 0) return result;
  for (int handle : order) {
    if (model->TypeOf(handle) != KVN_TYPE_LIST || HasEvidence(*model, handle)) continue;
    if (int result = decisions.Add(handle); result < 0) return result;
  }
  return CopyNetwork(*model, working);
}

/// Children first, so that the weights of a node reach those below it already multiplied. The
/// weights are those of the first row: which alternatives of its decision parents hold isn't known
/// here. A node with expressions counts with the weights that it keeps besides.
int ShachterEvaluator::FoldMauNodes() {
  KVN_intArray nodes;
  if (int result = CopyOrderOfNodes(working, nodes); result < 0) return result;
  for (int i = nodes.GetNumItems() - 1; i >= 0; i--) {
    if (working.TypeOf(nodes[i]) != KVN_TYPE_MAU) continue;
    KVN_Dmatrix* weights = nullptr;
    if (int result = working.DefinitionOf(nodes[i])->GetDefinition(weights); result < 0) {
      return result;
    }
    int position = 0;
    for (int parent : working.GetParents(nodes[i])) {
      if (working.TypeOf(parent) == KVN_TYPE_LIST) continue;
      if (position >= weights->GetSize()) break;
      const double weight = (*weights)[position++];
      KVN_Dmatrix* table = nullptr;
      KVN_nodeDefinition* definition = working.DefinitionOf(parent);
      if (definition == nullptr || definition->GetDefinition(table) < 0) continue;
      for (int k = 0; k < table->GetSize(); k++) (*table)[k] *= weight;
    }
    if (int result = working.DeleteNode(nodes[i]); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int ShachterEvaluator::ListUtilitiesAndParents(KVN_intArray& utilities, KVN_intArray& parents) {
  KVN_intArray nodes;
  if (int result = CopyOrderOfNodes(working, nodes); result < 0) return result;
  for (int handle : nodes) {
    if (handle == mergedUtility || working.TypeOf(handle) != KVN_TYPE_TABLE) continue;
    if (int result = utilities.Add(handle); result < 0) return result;
    for (int parent : working.GetParents(handle)) {
      if (parents.IsInList(parent)) continue;
      if (int result = parents.Add(parent); result < 0) return result;
    }
  }
  return KVN_SUCCESS;
}

int ShachterEvaluator::MergeUtilities() {
  char name[kNodeNameSize];
  working.GetNewNodeName(name);
  mergedUtility = working.AddNode(KVN_TYPE_TABLE, name);
  if (mergedUtility < 0) return KVN_REFUSED;
  KVN_intArray utilities;
  KVN_intArray parents;
  if (int result = ListUtilitiesAndParents(utilities, parents); result < 0) return result;
  if (parents.GetNumItems() > kMaxMergedParents) {
    return LogError(KVN_REFUSED,
                    "Cannot solve this network using SHACHTER's algorithm. Error while merging "
                    "utility nodes (too many parents)");
  }
  for (int parent : parents) {
    if (int result = working.AddArc(parent, mergedUtility, /*layer=*/0); result < 0) return result;
  }
  for (int utility : utilities) {
    if (int result = AddUtility(utility); result < 0) return result;
    if (int result = working.DeleteNode(utility); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// Adds each number of the utility to all cells of the merged table that agree with it.
int ShachterEvaluator::AddUtility(int utility) {
  KVN_sysCoordinates from;
  KVN_sysCoordinates to;
  if (int result = from.Link(*working.DefinitionOf(utility)); result < 0) return result;
  if (int result = to.Link(*working.DefinitionOf(mergedUtility)); result < 0) return result;
  const KVN_intArray& parents = working.GetParents(utility);
  do {
    to.UnlockAll();
    to.GoFirst();
    for (int i = 0; i < parents.GetNumItems(); i++) {
      const int dimension = working.PositionOfParent(parents[i], mergedUtility);
      to[dimension] = from[i];
      if (int result = to.Lock(dimension); result < 0) return result;
    }
    if (int result = to.GoToCurrentPosition(); result < 0) return result;
    do to.Value() += from.Value();
    while (to.Next() == 0);
  } while (from.Next() == 0);
  return KVN_SUCCESS;
}

int ShachterEvaluator::SolveDecisions() {
  // A refusal leaves the decisions equally likely, and the first alternatives are chosen.
  const int entered = working.ValueOf(mergedUtility)->SetEvidence(0);
  if (entered == KVN_NO_MEMORY) return entered;
  if (decisions.GetNumItems() == 0) return KVN_REFUSED;
  // It is meant that this isn't set back for each decision: where nothing speaks for any
  // alternative, the position of the choice before stands.
  int best = 0;
  int outcomes = 0;
  for (int i = decisions.GetNumItems() - 1; i >= 0; i--) {
    (void)working.UpdateDiscrete();  // without result the posterior speaks for nothing
    KVN_Dmatrix* posterior = nullptr;
    KVN_Dmatrix* table = nullptr;
    if (int result = working.ValueOf(decisions[i])->GetValue(posterior); result < 0) return result;
    if (int result = working.DefinitionOf(decisions[i])->GetDefinition(table); result < 0) {
      return result;
    }
    outcomes = working.DefinitionOf(decisions[i])->GetNumberOfOutcomes();
    double highest = 0.0;
    for (int k = 0; k < posterior->GetSize(); k++) {
      if (!((*posterior)[k] > highest)) continue;  // nor may a NaN win
      highest = (*posterior)[k];
      best = k;
    }
    table->FillWith(0.0);
    for (int row = 0; best < outcomes && row < table->GetSize(); row += outcomes) {
      (*table)[row + best] = 1.0;
    }
  }
  KVN_nodeValue& value = *model->ValueOf(decisions[0]);
  KVN_Dmatrix choice;
  if (int result = choice.Setup(&outcomes, 1); result < 0) return result;
  if (best < outcomes) choice[best] = 1.0;
  if (int result = value.SetValue(choice); result < 0) return result;
  value.SetValueValid();
  return KVN_SUCCESS;
}
