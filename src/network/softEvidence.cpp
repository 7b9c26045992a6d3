// Soft evidence becomes ordinary evidence for the time of an update (Pearl, "Probabilistic
// Reasoning in Intelligent Systems", 1988, section 2.2.2: virtual evidence as a dummy child that
// was observed), so that no algorithm needs to know of it.

#include <algorithm>
#include <vector>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

// The one identifier that may repeat: any number of helpers can exist.
constexpr const char* kHelperId = "@";

// Rows are the outcomes of the node; the helper's first outcome, which is the observed one, has the
// likelihood.
void FillHelperTable(const std::vector<double>& likelihoods, KVN_Dmatrix& table) {
  const int rows = std::min(static_cast<int>(likelihoods.size()), table.GetSize() / 2);
  for (int i = 0; i < rows; i++) {
    table[2 * i] = likelihoods[i];
    table[2 * i + 1] = 1.0 - likelihoods[i];
  }
}

}  // namespace

/// Appends the handles of the helpers. KVN_NO_MEMORY leaves those in the network that are in the
/// list.
int KVN_network::InstallSoftEvidence(KVN_intArray& helpers) {
  KVN_intArray softNodes;
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    const KVN_nodeValue* value = ValueOf(handle);
    if (value == nullptr || !value->IsVirtualEvidence()) continue;
    if (int result = softNodes.Add(handle); result < 0) return result;
  }
  const int track = updateFlags & KVN_UPDATE_TRACK_CHANGES;
  updateFlags &= ~KVN_UPDATE_TRACK_CHANGES;  // helpers are no news: nothing becomes stale
  int result = KVN_SUCCESS;
  for (int handle : softNodes) {
    result = AddSoftEvidenceHelper(handle, helpers);
    if (result < 0) break;
  }
  updateFlags |= track;
  return result;
}

int KVN_network::AddSoftEvidenceHelper(int handle, KVN_intArray& helpers) {
  const int helper = AddNode(KVN_TYPE_CPT, kHelperId);
  if (helper < 0) return helper;
  KVN_Dmatrix* table = nullptr;
  std::vector<double> likelihoods;
  // A node that no table can depend on (a gate without a table dimension) refuses the arc; its soft
  // evidence then has no effect.
  if (DefinitionOf(helper) == nullptr || ValueOf(helper) == nullptr ||
      AddArc(handle, helper, /*layer=*/0) != 0 || DefinitionOf(helper)->GetDefinition(table) < 0 ||
      ValueOf(handle)->GetVirtualEvidence(likelihoods) < 0) {
    return DeleteNode(helper);
  }
  FillHelperTable(likelihoods, *table);
  int result = ValueOf(helper)->SetEvidence(0);
  if (result == 0) result = helpers.Add(helper);
  if (result < 0) (void)DeleteNode(helper);  // the reason is on its way already
  return result;
}

void KVN_network::RemoveSoftEvidence(const KVN_intArray& helpers) {
  const int track = updateFlags & KVN_UPDATE_TRACK_CHANGES;
  updateFlags &= ~KVN_UPDATE_TRACK_CHANGES;
  for (int i = helpers.GetNumItems() - 1; i >= 0; i--) (void)DeleteNode(helpers[i]);
  updateFlags |= track;
}
