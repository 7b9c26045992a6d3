#include "decision/cooperEvaluator.h"

#include <algorithm>
#include <cstdio>
#include <limits>

#include "decision/chanceConversion.h"
#include "decision/policyOrder.h"
#include "definitions/nodeDefinition.h"
#include "definitions/table.h"
#include "foundation/errorLog.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "network/quietScope.h"
#include "values/expectedUtility.h"
#include "values/mauExpectedUtility.h"

namespace {

constexpr int kMessageSize = 1022;

/// Keeps a network from updating by itself while it lives.
class NoAutomaticUpdate {
 public:
  explicit NoAutomaticUpdate(KVN_network& theNetwork)
      : network(theNetwork), bit(theNetwork.GetUpdateFlags() & KVN_UPDATE_AUTOMATIC) {
    network.SetUpdateFlags(network.GetUpdateFlags() & ~KVN_UPDATE_AUTOMATIC);
  }
  NoAutomaticUpdate(const NoAutomaticUpdate&) = delete;
  NoAutomaticUpdate& operator=(const NoAutomaticUpdate&) = delete;
  ~NoAutomaticUpdate() { network.SetUpdateFlags(network.GetUpdateFlags() | bit); }

 private:
  KVN_network& network;
  int bit;
};

bool AsksForEffort(KVN_network& network) {
  return network.UserProperties().GetInteger("KVN_POLICY_EFFORT") > 0;
}

KVN_Dmatrix* MatrixOf(KVN_network& network, int handle) {
  KVN_Dmatrix* matrix = nullptr;
  KVN_nodeValue* value = network.ValueOf(handle);
  return value != nullptr && value->GetValue(matrix) == 0 ? matrix : nullptr;
}

const char* IdOf(const KVN_network& network, int handle) {
  const char* id = network.GetNode(handle)->GetId();
  return id == nullptr ? "(null)" : id;
}

const char* OutcomeOf(const KVN_network& network, int handle, int outcome) {
  const KVN_idArray* names = network.DefinitionOf(handle)->GetOutcomesNames();
  const bool isThere = names != nullptr && outcome >= 0 && outcome < names->GetNumItems();
  return isThere && (*names)[outcome] != nullptr ? (*names)[outcome] : "(null)";
}

/// For each combination of the other dimensions the largest cell along the last one, which goes.
/// Undefined cells don't take part: as numbers they would beat every negative utility.
int MaximizeOverLast(KVN_Dmatrix& table) {
  const int last = table.GetNumberOfDimensions() - 1;
  const int size = table.GetSizeOfDimension(last);
  for (int start = 0; start < table.GetSize(); start += size) {
    double best = std::numeric_limits<double>::lowest();
    bool any = false;
    for (int k = 0; k < size; k++) {
      const double cell = table[start + k];
      if (cell == KVN_UNDEFINED_VALUE) continue;
      any = true;
      if (best < cell) best = cell;
    }
    table[start] = any ? best : KVN_UNDEFINED_VALUE;  // RemoveDimension keeps this one
  }
  return table.RemoveDimension(last);
}

}  // namespace

int RunPolicyEvaluation(KVN_network& network) { return CooperEvaluator().Evaluate(network); }

CooperEvaluator::~CooperEvaluator() { DropMainUtility(); }

int CooperEvaluator::Evaluate(KVN_network& network) {
  model = &network;
  hasEffort = AsksForEffort(network);
  const NoAutomaticUpdate quiet(network);
  int result = FindMainUtility();
  if (result < 0 && result != KVN_NO_MEMORY) {
    (void)LogError(result, "Utilities not specified. Policies cannot be evaluated");
    computePolicy = false;
    result = KVN_SUCCESS;
  }
  if (result == 0) result = Prepare();
  if (result == 0) result = EvaluateScenarios();
  if (result == 0) {
    for (int handle = model->GetFirstNode(); handle >= 0; handle = model->GetNextNode(handle)) {
      const KVN_nodeValue* value = model->ValueOf(handle);
      if (value != nullptr && value->GetIndexingParents().GetNumItems() == 0) StoreResult(handle);
    }
    result = FinishValues();
    if (result == 0 && computePolicy) result = FoldBack();
  }
  if (result != 0) {
    (void)model->InvalidateAllBeliefs();
    return LogError(result, "Error when running Cooper's algorithm");
  }
  DropMainUtility();
  MarkValid();
  return KVN_SUCCESS;
}

// --- Before the first scenario.

int CooperEvaluator::FindMainUtility() {
  KVN_intArray nodes;
  if (int result = CopyOrderOfNodes(*model, nodes); result < 0) return result;
  for (int handle : nodes) {
    if ((model->TypeOf(handle) & KVN_TYPE_BIT_UTILITY) == 0) continue;
    if (int result = utilities.Add(handle); result < 0) return result;
  }
  if (utilities.GetNumItems() == 0) return KVN_REFUSED;
  KVN_intArray candidates;
  for (int handle : utilities) {
    if (model->GetNumberOfChildren(handle) > 0) continue;
    if (int result = candidates.Add(handle); result < 0) return result;
  }
  if (candidates.GetNumItems() != 1) return AddMainUtility(candidates);
  mainUtility = candidates[0];
  return KVN_SUCCESS;
}

/// A node that adds up those that nothing else combines, for the time of the evaluation.
int CooperEvaluator::AddMainUtility(const KVN_intArray& candidates) {
  const KVN_quietScope quiet(*model);
  const int added = model->AddNode(KVN_TYPE_MAU, nullptr);
  if (added < 0) return added;
  mainUtility = added;
  mainUtilityCreated = true;
  int result = model->DefinitionOf(added) == nullptr ? KVN_NO_MEMORY : utilities.Add(added);
  for (int i = 0; result == 0 && i < candidates.GetNumItems(); i++) {
    result = model->AddArc(candidates[i], added, /*layer=*/0);
  }
  if (result < 0) DropMainUtility();
  return result;
}

void CooperEvaluator::DropMainUtility() {
  if (!mainUtilityCreated) return;
  const KVN_quietScope quiet(*model);
  (void)model->DeleteNode(mainUtility);  // a node that stands: can't fail
  mainUtility = -1;
  mainUtilityCreated = false;
}

int CooperEvaluator::Prepare() {
  const int mask = model->GetChangeMask();
  model->SetChangeMask(0);
  int result = BuildPolicyNodes(*model, policyNodes);
  if (result == 0) result = AddTemporalArcs(*model, policyNodes, addedArcs);
  if (result == 0) result = CopyNetwork(*model, working);
  model->SetChangeMask(mask);
  if (result < 0) return result;

  working.SetUpdateFlags(working.GetUpdateFlags() & ~KVN_UPDATE_AUTOMATIC);
  scenario.assign(static_cast<std::size_t>(model->GetSize()), 0);
  stored.assign(static_cast<std::size_t>(model->GetSize()), false);
  // Without a utility nothing asks for a policy: one update gives the beliefs.
  if (mainUtility >= 0) {
    if (result = FindRelevantScenarios(); result < 0) return result;
  }
  if (result = DeleteMauNodes(); result < 0) return result;
  if (result = ConvertToChance(working); result < 0) return result;
  WidenTargets();
  PrepareForInference(working);
  return KVN_SUCCESS;
}

/// What they stand for is computed from the values of the other utilities.
int CooperEvaluator::DeleteMauNodes() {
  KVN_intArray all;
  if (int result = working.GetAllNodes(all); result < 0) return result;
  for (int handle : all) {
    if (working.TypeOf(handle) != KVN_TYPE_MAU) continue;
    if (int result = working.DeleteNode(handle); result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// Inference leaves out what no target needs. The policy needs the utilities and the observations,
/// whatever else the user has asked for.
void CooperEvaluator::WidenTargets() {
  if (working.GetNumberOfTargets() == 0) return;
  for (const KVN_intArray* list : {&utilities, &scenarioNodes}) {
    for (int handle : *list) (void)working.SetTarget(handle);  // it may be one, or be deleted
  }
}

// --- The scenarios.

/// Goes through all combinations of outcomes of `scenarioNodes`, the last one fastest. The
/// positions of the walk are kept here instead of on the stack, since a diagram may have any number
/// of observations.
int CooperEvaluator::EvaluateScenarios() {
  const int count = scenarioNodes.GetNumItems();
  KVN_intArray next;  // by position: the outcome to try next
  if (int result = next.SetSize(count + 1); result < 0) return result;
  int position = 0;
  int below = KVN_SUCCESS;  // how the part below `position` has ended
  while (true) {
    const bool isWhole = position == count;
    if (isWhole) {
      below = EvaluateScenario();
    } else {
      const int node = scenarioNodes[position];
      const int outcomes = working.DefinitionOf(node)->GetNumberOfOutcomes();
      // Refused evidence means an impossible outcome.
      for (; next[position] < outcomes; next[position]++) {
        const int entered = working.ValueOf(node)->SetEvidence(next[position]);
        if (entered == KVN_NO_MEMORY) return entered;
        if (entered == 0) break;
      }
      if (next[position] < outcomes) {
        scenario[static_cast<std::size_t>(node)] = next[position]++;
        next[++position] = 0;
        continue;
      }
      below = FinishObservation(node);
    }
    // A scenario that has no samples is passed over, with its place left as it is.
    if (below != 0 && below != KVN_NO_USEFUL_SAMPLES) return below;
    if (--position < 0) return below;
  }
}

int CooperEvaluator::EvaluateScenario() {
  const int result = working.UpdateDiscrete();
  if (result == KVN_NO_USEFUL_SAMPLES) return TellImpossible();
  if (result == 0) StoreIndexedResults();
  return result;
}

/// All outcomes of a node have been tried. One that is observed before a decision also gets its own
/// probabilities, given what stands before it: they are the weights of its outcomes. A decision
/// keeps the last alternative (intended); nothing before it depends on that.
int CooperEvaluator::FinishObservation(int handle) {
  if ((model->TypeOf(handle) & KVN_TYPE_BIT_DECISION) != 0) return KVN_SUCCESS;
  (void)working.ValueOf(handle)->ClearEvidence();  // all outcomes may have been impossible
  RestoreSoftEvidence(handle);
  const int result = working.UpdateDiscrete();
  if (result == 0) StoreResult(handle);
  return result;
}

int CooperEvaluator::TellImpossible() const {
  (void)LogError(KVN_NO_USEFUL_SAMPLES, "The following scenario could not be evaluated:");
  for (int handle : scenarioNodes) {
    char message[kMessageSize];
    std::snprintf(message, sizeof message, "%s = %s", IdOf(*model, handle),
                  OutcomeOf(*model, handle, scenario[static_cast<std::size_t>(handle)]));
    (void)LogError(KVN_NO_USEFUL_SAMPLES, message);
  }
  return KVN_NO_USEFUL_SAMPLES;
}

void CooperEvaluator::StoreIndexedResults() {
  for (int handle = model->GetFirstNode(); handle >= 0; handle = model->GetNextNode(handle)) {
    const KVN_nodeValue* value = model->ValueOf(handle);
    if (value != nullptr && value->GetIndexingParents().GetNumItems() > 0) StoreResult(handle);
  }
}

/// Copies the posterior of the converted node to the cells for the present scenario.
void CooperEvaluator::StoreResult(int handle) {
  KVN_nodeValue* value = model->ValueOf(handle);
  const KVN_nodeValue* result = working.ValueOf(handle);
  if (value == nullptr || result == nullptr) return;
  if (value->IsValueValid() || !result->IsValueValid()) return;
  KVN_Dmatrix* to = MatrixOf(*model, handle);
  const KVN_Dmatrix* from = MatrixOf(working, handle);
  const KVN_intArray& indexing = value->GetIndexingParents();
  if (to == nullptr || from == nullptr) return;
  if (to->GetNumberOfDimensions() != indexing.GetNumItems() + 1) return;
  int start = 0;
  for (int i = 0; i < indexing.GetNumItems(); i++) {
    start += to->GetMultipliers()[i] * scenario[static_cast<std::size_t>(indexing[i])];
  }
  int count = 0;
  switch (model->TypeOf(handle)) {
    case KVN_TYPE_TABLE:
      count = 1;  // the first outcome stands for the utility
      break;
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_CAST:
    case KVN_TYPE_DEMORGAN:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      count = to->GetSizeOfDimension(indexing.GetNumItems());
      break;
    default:
      return;
  }
  if (from->GetSize() < count) return;
  std::copy_n(from->GetData(), count, to->GetData() + start);
  stored[static_cast<std::size_t>(handle)] = true;
}

// --- After the last scenario.

/// Brings the utilities back to their own scale, and combines them where nodes do so.
int CooperEvaluator::FinishValues() {
  for (int handle : utilities) {
    KVN_nodeValue* value = model->ValueOf(handle);
    if (value == nullptr) continue;
    if (value->GetType() == KVN_VALUE_MAU_EXPECTED_UTILITY) {
      // Any other failure leaves undefined cells, which say so.
      const int result = static_cast<KVN_mauExpectedUtility*>(value)->ComputeFromParents();
      if (result == KVN_NO_MEMORY) return result;
    } else if (value->GetType() == KVN_VALUE_EXPECTED_UTILITY) {
      const auto& definition = static_cast<const KVN_table&>(*model->DefinitionOf(handle));
      (void)static_cast<KVN_expectedUtility*>(value)->Rescale(0.0, 1.0, definition.GetMinimum(),
                                                              definition.GetMaximum());
    }
    value->SetValueValid();
  }
  return KVN_SUCCESS;
}

/// From the last decision or observation to the first: what is observed is averaged over, what is
/// decided takes the best alternative. On the way each decision gets the expected utility of its
/// alternatives for each combination of what is known then, all later decisions being made best.
int CooperEvaluator::FoldBack() {
  const KVN_Dmatrix* all = MatrixOf(*model, mainUtility);
  if (all == nullptr) return KVN_REFUSED;
  KVN_Dmatrix expected;
  if (int result = expected.Assign(*all); result < 0) return result;
  if (int result = expected.RemoveDimension(expected.GetNumberOfDimensions() - 1); result < 0) {
    return result;
  }
  for (int i = scenarioNodes.GetNumItems() - 1; i >= 0; i--) {
    int result = KVN_SUCCESS;
    if (model->TypeOf(scenarioNodes[i]) == KVN_TYPE_LIST) {
      result = StoreDecision(scenarioNodes[i], expected, i);
      if (result == 0) result = MaximizeOverLast(expected);
    } else {
      result = AverageOut(scenarioNodes[i], expected);
    }
    if (result < 0) return result;
  }
  return KVN_SUCCESS;
}

/// The matrix of a decision is indexed by all of `scenarioNodes` before it, of which its own probe
/// may have found fewer.
int CooperEvaluator::StoreDecision(int handle, const KVN_Dmatrix& expected, int indexCount) {
  KVN_nodeValue& value = *model->ValueOf(handle);
  value.ClearIndexingParents();
  for (int i = 0; i < indexCount; i++) {
    if (int result = value.AddIndexingParent(scenarioNodes[i]); result < 0) return result;
  }
  if (int result = value.SetValue(expected); result < 0) return result;
  value.SetValueValid();
  return KVN_SUCCESS;
}

/// The expectation along the last dimension, which is that of `handle`. Its probabilities may be
/// indexed by fewer nodes.
int CooperEvaluator::AverageOut(int handle, KVN_Dmatrix& expected) const {
  const KVN_Dmatrix* weights = MatrixOf(*model, handle);
  const KVN_intArray& indexing = model->ValueOf(handle)->GetIndexingParents();
  const int last = expected.GetNumberOfDimensions() - 1;
  const int outcomes = expected.GetSizeOfDimension(last);
  if (weights == nullptr || weights->GetNumberOfDimensions() != indexing.GetNumItems() + 1 ||
      weights->GetSizeOfDimension(indexing.GetNumItems()) != outcomes) {
    return KVN_REFUSED;
  }
  KVN_intArray coordinates;
  if (int result = coordinates.SetSize(last + 1); result < 0) return result;
  coordinates.FillWith(0);
  for (int start = 0; start < expected.GetSize(); start += outcomes) {
    if (int result = expected.CoordinatesOf(start, coordinates); result < 0) return result;
    int row = 0;
    for (int i = 0; i < indexing.GetNumItems(); i++) {
      const int dimension = scenarioNodes.FindPosition(indexing[i]);
      if (dimension < 0 || dimension >= last) return KVN_REFUSED;
      row += weights->GetMultipliers()[i] * coordinates[dimension];
    }
    double sum = 0.0;
    bool any = false;
    for (int k = 0; k < outcomes; k++) {
      any = any || expected[start + k] != KVN_UNDEFINED_VALUE;
      sum += (*weights)[row + k] * expected[start + k];
    }
    // RemoveDimension keeps this cell. As documented, marks count as the tiny numbers they are, so
    // that an impossible scenario is worth 0; with effort it stays marked, and no maximum takes it
    // for a utility that beats the negative ones.
    expected[start] = any || !hasEffort ? sum : KVN_UNDEFINED_VALUE;
  }
  return expected.RemoveDimension(last);
}

void CooperEvaluator::MarkValid() {
  for (int handle = model->GetFirstNode(); handle >= 0; handle = model->GetNextNode(handle)) {
    KVN_nodeValue* value = model->ValueOf(handle);
    const KVN_nodeValue* result = working.ValueOf(handle);
    if (value == nullptr) continue;
    // The last scenario may have been impossible, and other ones not.
    const bool isComputed = stored[static_cast<std::size_t>(handle)];
    if (isComputed || (result != nullptr && result->IsValueValid())) value->SetValueValid();
    if (!computePolicy && model->TypeOf(handle) == KVN_TYPE_LIST) value->ClearValueValid();
  }
}
