#include "decision/policyOrder.h"

#include <cstdio>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "values/nodeValue.h"

namespace {

constexpr int kMessageSize = 1022;

bool IsKnownBeforeADecision(const KVN_network& network, int handle) {
  for (int child : network.GetChildren(handle)) {
    if (network.TypeOf(child) == KVN_TYPE_LIST) return true;
  }
  return false;
}

const char* IdOf(const KVN_network& network, int handle) {
  const char* id = network.GetNode(handle)->GetId();
  return id == nullptr ? "(null)" : id;
}

/// Whether the diagram itself says how the stage stands to decision `d`.
bool HasArcWith(const KVN_network& network, int d, const KVN_intArray& stage) {
  for (int handle : stage) {
    if (network.IsArcEitherWay(d, handle) == 1) return true;
  }
  return false;
}

}  // namespace

int CopyOrderOfNodes(KVN_network& network, KVN_intArray& nodes) {
  const KVN_intArray& order = network.GetOrderOfNodes();
  if (order.GetNumItems() != network.GetNumberOfNodes()) return KVN_NO_MEMORY;
  return nodes.Assign(order);
}

int BuildPolicyNodes(KVN_network& network, KVN_intArray& policyNodes) {
  KVN_intArray order;
  if (int result = network.GetTemporalOrder(order); result < 0) return result;
  for (int handle : order) {
    const KVN_nodeValue* value = network.ValueOf(handle);
    if (value == nullptr || value->HasEvidence()) continue;
    const bool isDecision = network.TypeOf(handle) == KVN_TYPE_LIST;
    if (!isDecision && !IsKnownBeforeADecision(network, handle)) continue;
    if (int result = policyNodes.Add(handle); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int NextStage(const KVN_network& network, const KVN_intArray& policyNodes, int begin,
              KVN_intArray& stage) {
  stage.Flush();
  for (int i = begin; i < policyNodes.GetNumItems(); i++) {
    if (int result = stage.Add(policyNodes[i]); result < 0) return result;
    if (network.TypeOf(policyNodes[i]) == KVN_TYPE_LIST) return i + 1;
  }
  return begin + stage.GetNumItems();
}

int AddTemporalArcs(KVN_network& network, const KVN_intArray& policyNodes,
                    KVN_intArray& addedArcs) {
  KVN_intArray stage;
  int next = NextStage(network, policyNodes, /*begin=*/0, stage);
  while (next > 0 && next < policyNodes.GetNumItems()) {
    const int before = policyNodes[next - 1];
    next = NextStage(network, policyNodes, next, stage);
    if (next < 0) break;
    const int after = policyNodes[next - 1];
    if (HasArcWith(network, before, stage)) continue;
    if (network.AddArc(before, after, /*layer=*/0) != 0) continue;
    if (int result = addedArcs.Add(before); result < 0) return result;
    if (int result = addedArcs.Add(after); result < 0) return result;
    char message[kMessageSize];
    std::snprintf(message, sizeof message, "Temporal order assumed: node [%s] before node [%s]",
                  IdOf(network, before), IdOf(network, after));
    (void)LogError(KVN_REFUSED, message);
  }
  return next < 0 ? next : int{KVN_SUCCESS};
}
