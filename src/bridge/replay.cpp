#include "bridge/replay.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "bridge/diagnosisType.h"
#include "bridge/hostInterface.h"
#include "bridge/hostValues.h"
#include "definitions/noisyMAX.h"
#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"

namespace {

constexpr int kDefaultStep = 10;
constexpr int kMessageSize = 125;

/// How the host calls the kinds of definition that it knows.
enum NodeKind : int { kUnsupported = -1, kProbabilityTable = 0, kNoisyMax = 1, kTruthTable = 2 };

NodeKind KindOf(int definitionType) {
  switch (definitionType) {
    case KVN_TYPE_CPT:
      return kProbabilityTable;
    case KVN_TYPE_NOISY_MAX:
      return kNoisyMax;
    case KVN_TYPE_TRUTHTABLE:
      return kTruthTable;
    default:
      return kUnsupported;
  }
}

void ThrowUnsupported(const BridgeState& state, int definitionType) {
  const char* type = definitionType == KVN_TYPE_LIST    ? "LIST"
                     : definitionType == KVN_TYPE_TABLE ? "TABLE"
                     : definitionType == KVN_TYPE_MAU   ? "MAU"
                                                        : "(null)";
  char message[kMessageSize];
  std::snprintf(message, sizeof message,
                "C++ error: Network contains unsupported KVN node type: %s.", type);
  ThrowToHost(state, message);
}

void ReportBadList(const char* function) {
  char line[160];
  std::snprintf(line, sizeof line,
                "C++ error: %s() called on bad KVN_intArray, either contains invalid node handles "
                "or not initialized to the right length.",
                function);
  WriteHostError(line);
}

bool IsExceptionPending(const BridgeState& state) {
  return state.env->ExceptionCheck() != JNI_FALSE;
}

bool IntListToHost(const BridgeState& state, const KVN_intArray& list, LocalRef<jintArray>& out) {
  return IntsToHost(state, list.GetItems(), list.GetNumItems(), out);
}

int OutcomesOf(const KVN_network& network, int handle) {
  const KVN_nodeDefinition* definition = network.DefinitionOf(handle);
  return definition != nullptr ? std::max(definition->GetNumberOfOutcomes(), 0) : 0;
}

/// The numbers the host gets, all of the array in use; null when there are none. A gate shows its
/// parameters, which are what a user edits, not the table that follows from them.
KVN_doubleArray* NumbersOf(KVN_nodeDefinition& definition, NodeKind kind) {
  KVN_doubleArray* numbers = nullptr;
  if (kind == kNoisyMax) {
    KVN_noisyMAX& gate = static_cast<KVN_noisyMAX&>(definition);
    gate.MarkCptStale();
    numbers = &gate.GetParameters().GetItems();
  } else if (definition.GetDefinition(numbers) < 0) {
    return nullptr;
  }
  if (numbers != nullptr) numbers->UseAsList(-1);
  return numbers;
}

/// The reference stays null for the other kinds.
bool StrengthsToHost(const BridgeState& state, KVN_nodeDefinition& definition, NodeKind kind,
                     const KVN_intArray& parents, LocalRef<jintArray>& out) {
  if (kind != kNoisyMax) return true;
  KVN_intArray strengths;
  const KVN_noisyMAX& gate = static_cast<KVN_noisyMAX&>(definition);
  return MakeStrengthsArray(gate, parents, strengths) == 0 && IntListToHost(state, strengths, out);
}

bool ParentsToHost(const BridgeState& state, const KVN_intArray& parents,
                   LocalRef<jobjectArray>& out) {
  KVN_stringArray ids;
  return MakeNodeIDList(*state.theNet, parents, ids) == 0 && TextsToHost(state, &ids, out);
}

/// One "loadSubmodel". Its children are added to `children`.
int ReplayOneSubmodel(const BridgeState& state, int handle, KVN_intArray& children) {
  KVN_submodel* submodel = state.theSubmodels->GetSubmodel(handle);
  if (submodel == nullptr) {
    WriteHostError("C++ warning: bad submodel handle.");
    return kReplayBadSubmodel;
  }
  if (state.theSubmodels->GetChildren(handle, children) < 0) return kReplayFailed;
  const KVN_rectangle& box = submodel->Screen().position;
  LocalRef<jstring> name;
  LocalRef<jintArray> childHandles;
  if (!TextToHost(state, submodel->Header().GetName(), name) ||
      !IntListToHost(state, children, childHandles)) {
    return kReplayFailed;
  }
  state.env->CallVoidMethod(state.receiver, state.midLoadSubmodel, handle, name.Get(), box.center_X,
                            box.center_Y, childHandles.Get());
  return IsExceptionPending(state) ? kReplayFailed : 0;
}

}  // namespace

bool ReplayNetworkParameters(const BridgeState& state) {
  KVN_userProperties properties;
  if (properties.Assign(state.theNet->UserProperties()) < 0) return false;
  for (int i = 0; i < properties.GetCount(); i++) {
    LocalRef<jstring> key;
    LocalRef<jstring> value;
    if (!TextToHost(state, properties.GetKey(i), key) ||
        !TextToHost(state, properties.GetValue(i), value)) {
      return false;
    }
    state.env->CallVoidMethod(state.receiver, state.midPutNetworkParameterObject, key.Get(),
                              value.Get());
    if (IsExceptionPending(state)) return false;
  }
  return true;
}

int ReplaySubmodels(const BridgeState& state, int handle) {
  // A stack of handles in place of a recursion, whose depth a file could choose: the children go on
  // it in reverse, so that the first one, and all below it, comes off first.
  KVN_intArray waiting;
  KVN_intArray children;
  const int first = ReplayOneSubmodel(state, handle, children);
  int result = first;
  while (result != kReplayFailed) {
    for (int i = children.GetNumItems() - 1; i >= 0; i--) {
      if (waiting.Add(children[i]) < 0) return kReplayFailed;
    }
    const int last = waiting.GetNumItems() - 1;
    if (last < 0) return first;
    const int next = waiting[last];
    waiting.UseAsList(last);
    children.Flush();
    result = ReplayOneSubmodel(state, next, children);
  }
  return kReplayFailed;
}

bool ReplayNodes(const BridgeState& state) {
  KVN_intArray handles;
  if (state.theNet->GetAllNodes(handles) < 0) return false;
  return std::all_of(handles.begin(), handles.end(),
                     [&state](int handle) { return ReplayNode(state, handle); });
}

bool ReplayNode(const BridgeState& state, int handle) {
  KVN_node* node = state.theNet->GetNode(handle);
  if (node == nullptr) return false;
  const NodeKind kind = KindOf(node->GetType());
  if (kind == kUnsupported) {
    ThrowUnsupported(state, node->GetType());
    return false;
  }
  KVN_nodeDefinition& definition = *node->Definition();
  KVN_intArray record;
  if (MakeNodeRecord(*node, kind, record) < 0) return false;
  const KVN_intArray& parents = state.theNet->GetParents(handle);
  const KVN_doubleArray* numbers = NumbersOf(definition, kind);

  LocalRef<jintArray> strengths;
  LocalRef<jobjectArray> keys;
  LocalRef<jobjectArray> values;
  LocalRef<jstring> name;
  LocalRef<jstring> id;
  LocalRef<jintArray> integers;
  LocalRef<jdoubleArray> doubles;
  LocalRef<jobjectArray> outcomes;
  LocalRef<jobjectArray> parentIds;
  const bool converted = StrengthsToHost(state, definition, kind, parents, strengths) &&
                         PropertiesToHost(state, node->UserProperties(), keys, values) &&
                         TextToHost(state, node->Info().Header().GetName(), name) &&
                         TextToHost(state, node->GetId(), id) &&
                         IntListToHost(state, record, integers) &&
                         DoublesToHost(state, numbers, doubles) &&
                         TextsToHost(state, definition.GetOutcomesNames(), outcomes) &&
                         ParentsToHost(state, parents, parentIds);
  if (!converted) return false;
  state.env->CallVoidMethod(state.receiver, state.midLoadNode, name.Get(), id.Get(), outcomes.Get(),
                            integers.Get(), parentIds.Get(), doubles.Get(), strengths.Get(),
                            keys.Get(), values.Get());
  return !IsExceptionPending(state);
}

int MakeNodeRecord(KVN_node& node, int kind, KVN_intArray& record) {
  const KVN_rectangle& box = node.Info().Screen().position;
  const KVN_extraDefinition* extra = node.ExtraDefinition();
  KVN_intArray faults;
  int diagnosisType = KVN_DIAGNOSIS_AUXILIARY;
  int mandatory = 0;
  int ranked = 0;
  int defaultOutcome = -1;
  if (extra != nullptr) {
    diagnosisType =
        CheckedDiagnosisType(extra->GetDiagnosisType(), "KVN_extraDefinition::troubleType");
    mandatory = extra->GetMandatory();
    ranked = extra->GetRanked();
    if (extra->GetSetAsDefault() != 0) defaultOutcome = extra->GetDefaultOutcome();
    const KVN_intArray& flags = extra->GetFaultStates();
    for (int outcome = 0; outcome < flags.GetNumItems(); outcome++) {
      // Files may hold any number; exactly 1 marks a fault.
      if (flags[outcome] == 1 && faults.Add(outcome) < 0) return KVN_NO_MEMORY;
    }
  }
  const int head[] = {box.center_X,
                      box.center_Y,
                      box.width,
                      box.height,
                      kind,
                      diagnosisType,
                      mandatory,
                      ranked,
                      defaultOutcome,
                      node.GetSubmodel() | KVN_SUBMODEL_BIT,
                      faults.GetNumItems()};
  const int headCount = static_cast<int>(std::size(head));
  if (record.SetSize(headCount + faults.GetNumItems()) < 0) return KVN_NO_MEMORY;
  std::copy_n(head, headCount, record.GetItems());
  std::copy_n(faults.GetItems(), faults.GetNumItems(), record.GetItems() + headCount);
  record.UseAsList(-1);
  return KVN_SUCCESS;
}

int MakeNodeIDList(const KVN_network& network, const KVN_intArray& handles, KVN_stringArray& ids) {
  ids = KVN_stringArray(kDefaultStep);
  if (int result = ids.SetSize(handles.GetNumItems()); result < 0) return result;
  for (int i = 0; i < handles.GetNumItems(); i++) {
    const KVN_node* node = network.GetNode(handles[i]);
    if (node == nullptr) {
      ReportBadList("MakeNodeIDList");
      break;
    }
    if (int result = ids.SetString(i, node->GetId()); result < 0) return result;
  }
  ids.UseAsList(-1);
  return KVN_SUCCESS;
}

int MakeStrengthsArray(const KVN_noisyMAX& gate, const KVN_intArray& parents,
                       KVN_intArray& strengths) {
  const KVN_network& network = *gate.GetNetwork();
  int total = 0;
  int parentCount = 0;
  for (; parentCount < parents.GetNumItems(); parentCount++) {
    if (network.GetNode(parents[parentCount]) == nullptr) {
      ReportBadList("MakeStrengthsArray");
      break;
    }
    total += OutcomesOf(network, parents[parentCount]);
  }
  if (int result = strengths.SetSize(total); result < 0) return result;
  int filled = 0;
  for (int i = 0; i < parentCount; i++) {
    const KVN_intArray* own = gate.GetStrengths(i);
    if (own == nullptr) continue;
    // A list and the parent's outcomes may differ in length after edits that were refused halfway.
    const int count = std::min(own->GetSize(), OutcomesOf(network, parents[i]));
    std::copy_n(own->GetItems(), count, strengths.GetItems() + filled);
    filled += count;
  }
  strengths.UseAsList(-1);
  return KVN_SUCCESS;
}
