#include "ormel/contradiction.h"

#include <vector>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "network/network.h"
#include "ormel/evidenceInput.h"
#include "values/nodeValue.h"

namespace {

/// The posterior of a discrete node, or null.
const KVN_Dmatrix* PosteriorOf(KVN_network& network, int handle) {
  KVN_nodeValue* const value = network.ValueOf(handle);
  KVN_Dmatrix* posterior = nullptr;
  const bool isKnown = value != nullptr && value->IsValueValid() &&
                       (network.TypeOf(handle) & KVN_TYPE_BIT_DISCRETE) != 0 &&
                       value->GetValue(posterior) == 0 && posterior->GetNumberOfDimensions() == 1;
  return isKnown ? posterior : nullptr;
}

/// The outcome whose posterior is exactly 1, or -1.
int CertainOutcome(KVN_network& network, int handle) {
  const KVN_Dmatrix* const posterior = PosteriorOf(network, handle);
  if (posterior == nullptr) return -1;
  for (int k = 0; k < posterior->GetSize(); k++) {
    if ((*posterior)[k] == 1.0) return k;
  }
  return -1;
}

bool IsExcludedByTable(KVN_network& network, int handle) {
  const int outcome = CertainOutcome(network, handle);
  if (outcome < 0 || (network.TypeOf(handle) & KVN_TYPE_BIT_DECISION) != 0) return false;
  KVN_Dmatrix* table = nullptr;
  if (network.DefinitionOf(handle)->GetDefinition(table) < 0) return false;
  KVN_intArray at;
  for (int parent : network.GetParents(handle)) {
    if (at.Add(CertainOutcome(network, parent)) < 0) return false;
  }
  if (at.Add(outcome) < 0 || at.GetNumItems() != table->GetNumberOfDimensions()) return false;
  return table->IsSliceAllEqualTo(0.0, at) == 1;
}

bool IsExcludedByLikelihood(KVN_network& network, int handle, const std::vector<double>& states) {
  const KVN_Dmatrix* const posterior = PosteriorOf(network, handle);
  if (posterior == nullptr) return false;
  for (int k = 0; k < posterior->GetSize(); k++) {
    if (states[static_cast<std::size_t>(k)] == 0.0 && (*posterior)[k] > 0.0) return true;
  }
  return false;
}

}  // namespace

int FindContradiction(KVN_network& network, const EvidenceInput& input) {
  for (const auto& [id, states] : input.likelihoods) {
    const int handle = network.FindNode(id.c_str());
    if (IsExcludedByLikelihood(network, handle, states)) return handle;
  }
  if (input.findings.empty() && input.likelihoods.empty()) return -1;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (IsExcludedByTable(network, h)) return h;
  }
  return -1;
}
