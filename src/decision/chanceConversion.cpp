#include "decision/chanceConversion.h"

#include "decision/policyOrder.h"
#include "definitions/table.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"

namespace {

constexpr int kCopiedTypes = KVN_TYPE_BIT_DECISION | KVN_TYPE_BIT_DISCRETE | KVN_TYPE_BIT_UTILITY;

int ConvertUtility(KVN_network& network, int handle) {
  auto& utility = static_cast<KVN_table&>(*network.DefinitionOf(handle));
  if (int result = utility.Rescale(0.0, 0.0, 0.0, 1.0); result < 0) return result;
  KVN_Dmatrix* utilities = nullptr;
  if (int result = utility.GetDefinition(utilities); result < 0) return result;
  KVN_Dmatrix scaled;
  if (int result = scaled.Assign(*utilities); result < 0) return result;

  if (int result = network.GetNode(handle)->ChangeType(KVN_TYPE_CPT); result < 0) return result;
  KVN_Dmatrix* table = nullptr;
  if (int result = network.DefinitionOf(handle)->GetDefinition(table); result < 0) return result;
  if (table->GetSize() != 2 * scaled.GetSize()) return KVN_REFUSED;
  for (int i = 0; i < scaled.GetSize(); i++) {
    (*table)[2 * i] = scaled[i];
    (*table)[2 * i + 1] = 1.0 - scaled[i];
  }
  return KVN_SUCCESS;
}

}  // namespace

int CopyNetwork(const KVN_network& source, KVN_network& copy) {
  if (int result = copy.Assign(source, /*skipTemporal=*/0); result < 0) return result;
  for (int h = source.GetFirstNode(); h >= 0; h = source.GetNextNode(h)) {
    const int type = source.TypeOf(h);
    if ((type & kCopiedTypes) == 0) continue;  // some other kinds aren't copied at all
    const bool hasValue = copy.ValueOf(h) != nullptr || source.ValueOf(h) == nullptr;
    if (copy.TypeOf(h) != type || !hasValue) return KVN_NO_MEMORY;
  }
  return KVN_SUCCESS;
}

int ConvertToChance(KVN_network& network) {
  KVN_intArray order;
  if (int result = CopyOrderOfNodes(network, order); result < 0) return result;
  for (int handle : order) {
    int result = KVN_SUCCESS;
    switch (network.TypeOf(handle)) {
      case KVN_TYPE_NONE:
      case KVN_TYPE_CAST:
      case KVN_TYPE_DEMORGAN:
        break;
      case KVN_TYPE_TABLE:
        result = ConvertUtility(network, handle);
        break;
      default:
        result = network.GetNode(handle)->ChangeType(KVN_TYPE_CPT);
        break;
    }
    if (result < 0) return result;
  }
  return KVN_SUCCESS;
}

void PrepareForInference(KVN_network& network) {
  const int wanted = KVN_UPDATE_TRACK_CHANGES | KVN_UPDATE_PROPAGATE_EVIDENCE;
  network.SetUpdateFlags((network.GetUpdateFlags() | wanted) & ~KVN_UPDATE_AUTOMATIC);
  network.SetChangeMask(KVN_HOOK_EVIDENCE_SET | KVN_HOOK_EVIDENCE_CLEARED);
  (void)network.InvalidateAllBeliefs();
}
