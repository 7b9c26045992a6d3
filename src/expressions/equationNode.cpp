#include "expressions/equationNode.h"

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "values/nodeValue.h"

std::string IdentifierOfNode(const KVN_network* network, int handle) {
  const KVN_node* node = network != nullptr ? network->GetNode(handle) : nullptr;
  const char* id = node != nullptr ? node->GetId() : nullptr;
  return id != nullptr ? id : "";
}

std::vector<std::string> IdentifiersOfParents(const KVN_network* network, int handle, int except) {
  std::vector<std::string> names;
  if (network == nullptr || !network->IsLive(handle)) return names;
  for (int parent : network->GetParents(handle)) {
    if (parent != except) names.push_back(IdentifierOfNode(network, parent));
  }
  return names;
}

int CheckEquationParent(int definitionType) {
  if (definitionType == KVN_TYPE_EQUATION || definitionType == KVN_TYPE_EQUATION_SCC) {
    return KVN_SUCCESS;
  }
  return LogError(KVN_REFUSED, "Only KVN_equation or KVN_equationSCC can be the parents.");
}

void ForgetResultsFrom(KVN_network* network, int handle) {
  if (network == nullptr || !network->IsLive(handle)) return;
  if (KVN_nodeValue* own = network->ValueOf(handle)) own->ClearValueValid();
  KVN_intArray affected;
  // Without memory the list is short; an update computes every value anew anyway.
  (void)network->GetDescendants(handle, affected);
  for (int node : affected) {
    if (KVN_nodeValue* value = network->ValueOf(node)) value->ClearValueValid();
  }
}
