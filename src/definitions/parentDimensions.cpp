#include "definitions/parentDimensions.h"

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "values/nodeValue.h"

int FindParentDimension(const KVN_network* network, int handle, int parent, int& position) {
  if (network == nullptr || !network->IsLive(handle) || !network->IsLive(parent)) {
    return KVN_REFUSED;
  }
  const int type = network->TypeOf(parent);
  if (type == KVN_TYPE_TABLE) return KVN_REFUSED;
  if (!HasTableDimension(type)) return KVN_PARENT_IGNORED;
  position = network->PositionOfParent(parent, handle);
  return position < 0 ? position : KVN_SUCCESS;
}

int KVN_parentDimensions::Add(int parent) {
  int position = 0;
  const int result = FindParentDimension(network, handle, parent, position);
  if (result == KVN_PARENT_IGNORED) return KVN_REFUSED;
  if (result < 0) return result;
  const int outcomes = network->DefinitionOf(parent)->GetNumberOfOutcomes();
  if (outcomes < 1) return KVN_PARENT_IGNORED;
  return table.AddDimension(position, outcomes);
}

// The own dimension must outlast its parents': once a parent was absorbed its arc still stands, and
// the removal of that arc asks for a dimension that is gone.
int KVN_parentDimensions::KeepSlice(int position, int outcome) {
  if (table.GetNumberOfDimensions() < 2) return KVN_REFUSED;
  return table.RemoveDimension(position, outcome);
}

int KVN_parentDimensions::Remove(int parent) {
  int position = 0;
  if (int result = FindParentDimension(network, handle, parent, position); result != 0) {
    return result;
  }
  return KeepSlice(position, /*outcome=*/0);
}

int KVN_parentDimensions::AbsorbEvidence(int parent) {
  int position = 0;
  if (int result = FindParentDimension(network, handle, parent, position); result != 0) {
    return result;
  }
  const KVN_nodeValue* value = network->ValueOf(parent);
  if (value == nullptr || !value->HasEvidence()) return KVN_REFUSED;
  return KeepSlice(position, value->GetEvidence());
}

int KVN_parentDimensions::Marginalize(int parent) {
  int position = 0;
  if (int result = FindParentDimension(network, handle, parent, position); result != 0) {
    return result;
  }
  if (network->TypeOf(parent) == KVN_TYPE_LIST) return KVN_REFUSED;
  const KVN_nodeValue* value = network->ValueOf(parent);
  if (value != nullptr && value->HasEvidence()) return KVN_REFUSED;
  KVN_Dmatrix* prior = nullptr;
  if (int result = network->DefinitionOf(parent)->GetDefinition(prior); result < 0) return result;
  if (table.GetNumberOfDimensions() < 2) return KVN_REFUSED;
  return table.RemoveDimensionWeighted(position, prior->GetItems());
}

int KVN_parentDimensions::InsertOutcome(int parent, int position) {
  int dimension = 0;
  if (int result = FindParentDimension(network, handle, parent, dimension); result != 0) {
    return result;
  }
  // ShiftSlice would refuse the position too, but with the new slice in the table already.
  const bool isDimension = dimension < table.GetNumberOfDimensions();
  if (!isDimension || position < 0 || position > table.GetSizeOfDimension(dimension)) {
    return KVN_REFUSED;
  }
  if (int result = table.PushSlice(dimension); result < 0) return result;
  return table.ShiftSlice(dimension, position, 0.0);
}

int KVN_parentDimensions::RemoveOutcome(int parent, int position) {
  int dimension = 0;
  if (int result = FindParentDimension(network, handle, parent, dimension); result != 0) {
    return result;
  }
  if (int result = table.RemoveSlice(dimension, position); result < 0) return result;
  return table.ShrinkDimension(dimension);
}

int KVN_parentDimensions::ReorderOutcomes(int parent, const KVN_intArray& order) {
  if (network == nullptr || !network->IsLive(handle)) return KVN_REFUSED;
  const int dimension = network->PositionOfParent(parent, handle);
  if (dimension < 0) return dimension;
  return table.ChangeOrderWithinDimension(dimension, order);
}

int KVN_parentDimensions::Reorder(const KVN_intArray& order) {
  const int parentCount = UsedCount(order);
  KVN_intArray extended;
  for (int i = 0; i < parentCount; i++) {
    if (int result = extended.Add(order[i]); result < 0) return result;
  }
  if (int result = extended.Add(parentCount); result < 0) return result;
  return table.ChangeOrderOfDimensions(extended);
}
