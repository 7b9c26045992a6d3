#include "definitions/cast.h"

int KVN_cast::SetPositiveWeights(const KVN_doubleArray& values) {
  if (int result = ReplaceNumbers(positiveWeights, values); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_cast::SetNegativeWeights(const KVN_doubleArray& values) {
  if (int result = ReplaceNumbers(negativeWeights, values); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_cast::SetBaseline(double value) {
  if (!(value >= 0.0 && value <= 1.0)) return KVN_REFUSED;
  baseline = value;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_cast::ReorderParents(const KVN_intArray& order) {
  if (int result = positiveWeights.ChangeOrder(order); result < 0) return result;
  if (int result = negativeWeights.ChangeOrder(order); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_cast::ReCreate() {
  positiveWeights.CleanUp();
  negativeWeights.CleanUp();
  const int parentCount = NumberOfParents();
  for (int i = 0; i < parentCount; i++) {
    if (int result = InsertNumbers(i); result < 0) return result;
  }
  if (int result = RebuildTable(); result < 0) return result;
  ComputeTable();
  return KVN_SUCCESS;
}

int KVN_cast::Assign(KVN_nodeDefinition& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  if (source.GetType() != GetType()) return KVN_NOT_APPLICABLE;
  if (int result = CopyNumbers(static_cast<const KVN_cast&>(source)); result < 0) return result;
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  return CheckReadiness(0);
}

void KVN_cast::CopyParametersTo(KVN_nodeDefinition& target) {
  if (target.GetType() != GetType()) return;
  (void)static_cast<KVN_cast&>(target).CopyNumbers(*this);  // the slot has no result
}

void KVN_cast::CleanUp(int deep) {
  if (deep != 0) {
    table.CleanUp();
    positiveWeights.CleanUp();
    negativeWeights.CleanUp();
  }
  (void)CheckReadiness(0);
}

int KVN_cast::InsertNumbers(int position) {
  if (int result = positiveWeights.Insert(position, 0.0); result < 0) return result;
  const int result = negativeWeights.Insert(position, 0.0);
  if (result < 0) (void)positiveWeights.Delete(position);
  return result;
}

int KVN_cast::DeleteNumbers(int position) {
  if (position >= positiveWeights.GetNumItems()) return KVN_REFUSED;
  if (int result = positiveWeights.Delete(position); result < 0) return result;
  return negativeWeights.Delete(position);
}

double KVN_cast::RowProbability(const int* coordinates, int parentCount) const {
  double a = 1;
  double b = 1;
  for (int i = 0; i < parentCount; i++) {
    const double w = coordinates[i] == 0 ? positiveWeights[i] : negativeWeights[i];
    if (w < 0) {
      a = a * (1 + w);
    } else {
      b = b * (1 - w);
    }
  }
  double r = 0;
  if (a + b == 0) {
    r = 0;
  } else if (b < a) {
    r = 1 - b / a;
  } else {
    r = a / b - 1;
  }
  return r >= 0 ? r * (1 - baseline) + baseline : r * baseline + baseline;
}

int KVN_cast::CopyNumbers(const KVN_cast& source) {
  KVN_Dmatrix newTable;
  KVN_doubleArray newPositive;
  KVN_doubleArray newNegative;
  if (int result = newTable.Assign(source.table); result < 0) return result;
  if (int result = newPositive.Assign(source.positiveWeights); result < 0) return result;
  if (int result = newNegative.Assign(source.negativeWeights); result < 0) return result;
  table.Swap(newTable);
  positiveWeights.Swap(newPositive);
  negativeWeights.Swap(newNegative);
  baseline = source.baseline;
  return KVN_SUCCESS;
}
