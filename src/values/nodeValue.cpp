#include "values/nodeValue.h"

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

KVN_nodeValue::KVN_nodeValue(KVN_network* owningNetwork, int nodeHandle)
    : network(owningNetwork), handle(nodeHandle) {}

void KVN_nodeValue::CleanUp(int deep) {
  if (deep) indexingParents.Flush();
  valueFlags = 0;
  (void)CheckReadiness(/*deep=*/0);  // only the flag is wanted
}

int KVN_nodeValue::ConvertFrom(KVN_nodeValue& source) { return Assign(source); }

int KVN_nodeValue::Assign(KVN_nodeValue& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  if (int result = indexingParents.Assign(source.indexingParents); result < 0) return result;
  handle = source.handle;
  network = source.network;
  ChangeFlags(source.valueFlags, ~source.valueFlags);
  (void)CheckReadiness(/*deep=*/1);  // status only
  (void)CheckConsistency(/*deep=*/1);
  return KVN_SUCCESS;
}

int KVN_nodeValue::ReCreate() { return KVN_NOT_APPLICABLE; }

int KVN_nodeValue::GetSize() {
  KVN_Dmatrix* matrix = nullptr;
  if (int result = GetValue(matrix); result < 0) return result;
  return matrix->GetSize();
}

int KVN_nodeValue::AddIndexingParent(int parent) {
  if (network == nullptr || !network->IsLive(parent)) return KVN_REFUSED;
  if (indexingParents.IsInList(parent)) return KVN_SUCCESS;
  const KVN_nodeValue* other = network->ValueOf(parent);
  // Two values that index each other would need each other's posteriors first.
  if (other != nullptr && other->indexingParents.IsInList(handle)) return KVN_SUCCESS;
  const int position = indexingParents.GetNumItems();
  if (int result = indexingParents.Add(parent); result < 0) return result;

  const KVN_nodeDefinition* definition = network->DefinitionOf(parent);
  // A parent without a table dimension stays in the list all the same (intended): it names what
  // the result depends on.
  if (definition == nullptr || !HasTableDimension(definition->GetType())) return KVN_SUCCESS;
  const int outcomes = definition->GetNumberOfOutcomes();
  KVN_Dmatrix* matrix = nullptr;
  if (outcomes < 1 || GetValue(matrix) < 0) return KVN_SUCCESS;
  const int result = matrix->AddDimension(position, outcomes);
  if (result < 0) (void)indexingParents.Delete(position);  // the entry just added: can't fail
  return result;
}

int KVN_nodeValue::GetValue(double& /*out*/) { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::GetEvidence() const { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::SetEvidence(int /*outcome*/) { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::SetEvidence(double /*value*/) { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::ClearEvidence() { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::ClearPropagatedEvidence() { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::SetPropagatedEvidence(double /*value*/) { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::SetPropagatedEvidence(int /*outcome*/) { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::GetVirtualEvidence(std::vector<double>& /*out*/) const {
  return KVN_NOT_APPLICABLE;
}
int KVN_nodeValue::SetVirtualEvidence(const std::vector<double>& /*values*/) {
  return KVN_NOT_APPLICABLE;
}
int KVN_nodeValue::GetValue(KVN_Dmatrix*& /*out*/) { return KVN_NOT_APPLICABLE; }
int KVN_nodeValue::SetValue(const KVN_Dmatrix& /*source*/) { return KVN_NOT_APPLICABLE; }

void KVN_nodeValue::Attach(KVN_network* newNetwork) {
  network = newNetwork;
  TellNetwork();
}

bool KVN_nodeValue::CanGoStale() const {
  return IsValueValid() && (!HasEvidence() || GetType() == KVN_VALUE_LIST_OF_DECISIONS);
}

void KVN_nodeValue::ChangeFlags(unsigned raised, unsigned lowered) {
  valueFlags = (valueFlags & ~lowered) | raised;
  TellNetwork();
}

void KVN_nodeValue::TellNetwork() const {
  if (network != nullptr && IsCurrent()) network->NoteCurrentValue(CanGoStale());
}

int KVN_nodeValue::GetOutcomeCount() const {
  const KVN_nodeDefinition* definition =
      network == nullptr ? nullptr : network->DefinitionOf(handle);
  return definition == nullptr ? KVN_REFUSED : definition->GetNumberOfOutcomes();
}
