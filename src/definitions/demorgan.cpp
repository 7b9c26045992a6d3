#include "definitions/demorgan.h"

#include <algorithm>

namespace {

constexpr int kLastType = KVN_DEMORGAN_BARRIER;

bool IsRaising(int type, int coordinate) {
  return coordinate == 0 ? type == KVN_DEMORGAN_CAUSE : type == KVN_DEMORGAN_BARRIER;
}

bool IsLowering(int type, int coordinate) {
  return coordinate == 0 ? type == KVN_DEMORGAN_INHIBITOR : type == KVN_DEMORGAN_REQUIREMENT;
}

}  // namespace

int KVN_demorgan::SetParentTypes(const KVN_intArray& types) {
  if (int result = ReplaceNumbers(parentTypes, types); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_demorgan::SetParentWeights(const KVN_doubleArray& values) {
  if (int result = ReplaceNumbers(weights, values); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_demorgan::SetPriorBelief(double value) {
  if (!(value >= 0.0 && value <= 1.0)) return KVN_REFUSED;
  priorBelief = value;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_demorgan::ReorderParents(const KVN_intArray& order) {
  if (int result = parentTypes.ChangeOrder(order); result < 0) return result;
  if (int result = weights.ChangeOrder(order); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_demorgan::ReCreate() {
  weights.CleanUp();
  int result = KVN_SUCCESS;
  const int parentCount = NumberOfParents();
  for (int i = 0; i < parentCount && result == KVN_SUCCESS; i++) {
    const bool hasType =
        i < parentTypes.GetNumItems() && parentTypes[i] >= 0 && parentTypes[i] <= kLastType;
    result = hasType ? weights.Add(1.0) : KVN_REFUSED;
  }
  if (result < 0) weights.CleanUp();
  if (int built = RebuildTable(); built < 0) return built;
  ComputeTable();
  return result;
}

int KVN_demorgan::Assign(KVN_nodeDefinition& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  if (source.GetType() != GetType()) return KVN_NOT_APPLICABLE;
  if (int result = CopyNumbers(static_cast<const KVN_demorgan&>(source)); result < 0) return result;
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  return CheckReadiness(0);
}

void KVN_demorgan::CopyParametersTo(KVN_nodeDefinition& target) {
  if (target.GetType() != GetType()) return;
  (void)static_cast<KVN_demorgan&>(target).CopyNumbers(*this);  // the slot has no result
}

void KVN_demorgan::CleanUp(int deep) {
  if (deep != 0) {
    table.CleanUp();
    parentTypes.CleanUp();
    weights.CleanUp();
  }
  (void)CheckReadiness(0);
}

int KVN_demorgan::InsertNumbers(int position) {
  if (int result = parentTypes.Insert(position, KVN_DEMORGAN_CAUSE); result < 0) return result;
  const int result = weights.Insert(position, 0.0);
  if (result < 0) (void)parentTypes.Delete(position);
  return result;
}

int KVN_demorgan::DeleteNumbers(int position) {
  if (position >= weights.GetNumItems()) return KVN_REFUSED;
  if (int result = parentTypes.Delete(position); result < 0) return result;
  return weights.Delete(position);
}

double KVN_demorgan::RowProbability(const int* coordinates, int parentCount) const {
  const int count = std::min(parentCount, parentTypes.GetNumItems());
  double p = priorBelief;
  for (int i = 0; i < count; i++) {
    if (IsRaising(parentTypes[i], coordinates[i])) p = p + (1 - p) * weights[i];
  }
  for (int i = 0; i < count; i++) {
    if (IsLowering(parentTypes[i], coordinates[i])) p = p * (1 - weights[i]);
  }
  return p;
}

int KVN_demorgan::CopyNumbers(const KVN_demorgan& source) {
  KVN_Dmatrix newTable;
  KVN_intArray newTypes;
  KVN_doubleArray newWeights;
  if (int result = newTable.Assign(source.table); result < 0) return result;
  if (int result = newTypes.Assign(source.parentTypes); result < 0) return result;
  if (int result = newWeights.Assign(source.weights); result < 0) return result;
  table.Swap(newTable);
  parentTypes.Swap(newTypes);
  weights.Swap(newWeights);
  priorBelief = source.priorBelief;
  return KVN_SUCCESS;
}
