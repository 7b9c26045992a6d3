#include "definitions/table.h"

#include <algorithm>

#include "definitions/parentDimensions.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "values/utilityScale.h"

int KVN_table::Init() {
  const int result = ReCreate();
  (void)CheckReadiness(/*deep=*/1);
  return result;
}

void KVN_table::CleanUp(int deep) {
  if (deep != 0) table.CleanUp();
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_table::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Add(parent));
}

int KVN_table::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Remove(parent));
}

int KVN_table::AbsorbParentEvidence(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).AbsorbEvidence(parent));
}

int KVN_table::MarginalizeParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Marginalize(parent));
}

int KVN_table::ParentOutcomeInserted(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(
      KVN_parentDimensions(network, handle, table).InsertOutcome(parent, position));
}

int KVN_table::ParentOutcomeRemoved(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(
      KVN_parentDimensions(network, handle, table).RemoveOutcome(parent, position));
}

int KVN_table::ParentOutcomesReordered(int parent, const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(
      KVN_parentDimensions(network, handle, table).ReorderOutcomes(parent, order));
}

int KVN_table::ReorderParents(const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Reorder(order));
}

int KVN_table::FinishParentEdit(int result) {
  if (result < 0) return result;
  (void)CheckReadiness(/*deep=*/0);
  return KVN_SUCCESS;
}

int KVN_table::ReCreate() {
  table.CleanUp();
  if (int result = table.AppendDimension(1); result < 0) return result;
  (void)CheckReadiness(/*deep=*/0);  // AddParent asks for it
  return AddAllParents();
}

int KVN_table::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return KVN_SUCCESS;
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  CleanUp(/*deep=*/1);  // after the copy of the node's place, on which its readiness depends
  if (source.GetType() != KVN_TYPE_NONE) {
    if (int result = Convert(source); result < 0) return result;
  }
  NumbersReplaced(KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

int KVN_table::Convert(KVN_nodeDefinition& source) {
  switch (source.GetType()) {
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
      return ReCreate();
    case KVN_TYPE_TABLE:
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER: {
      if (int result = ReCreate(); result < 0) return result;
      KVN_Dmatrix* cells = nullptr;
      if (int result = source.GetDefinition(cells); result < 0) return result;
      // The cells only: the shape is the one that the parents ask for, whatever the source's is.
      if (cells->GetSize() == table.GetSize()) table.GetItems().CopyItems(cells->GetItems());
      return KVN_SUCCESS;
    }
    case KVN_TYPE_LIST:
    case KVN_TYPE_MAU:
      DropAllParents();
      return ReCreate();
    default:
      return KVN_REFUSED;
  }
}

void KVN_table::NumbersReplaced(int changeCode) {
  (void)CheckReadiness(/*deep=*/1);
  (void)CheckConsistency(/*deep=*/1);
  Notify(changeCode);
}

int KVN_table::GetDefinition(KVN_doubleArray*& out) {
  out = &table.GetItems();
  return KVN_SUCCESS;
}

int KVN_table::GetDefinition(KVN_Dmatrix*& out) {
  out = &table;
  return KVN_SUCCESS;
}

int KVN_table::SetDefinition(const KVN_Dmatrix& source) { return table.Assign(source); }

int KVN_table::SetDefinition(const KVN_doubleArray& source) {
  const int count = std::min(table.GetSize(), UsedCount(source));
  std::copy_n(source.GetItems(), count, table.GetData());
  return KVN_SUCCESS;
}

void KVN_table::CopyParametersTo(KVN_nodeDefinition& target) {
  if (auto* other = dynamic_cast<KVN_table*>(&target); other != nullptr && other != this) {
    (void)other->table.Assign(table);  // without memory the target keeps its numbers
  }
}

int KVN_table::SetUtilities(const KVN_doubleArray& values) {
  if (!IsReady()) return KVN_NOT_READY;
  if (UsedCount(values) != table.GetSize()) return KVN_REFUSED;
  std::copy_n(values.GetItems(), table.GetSize(), table.GetData());
  NumbersReplaced(KVN_CHANGE_NUMBERS);
  return KVN_SUCCESS;
}

double KVN_table::GetMinimum() const { return RangeOfCells(table).low; }

double KVN_table::GetMaximum() const { return RangeOfCells(table).high; }

int KVN_table::Rescale(double fromLow, double fromHigh, double toLow, double toHigh) {
  if (!IsReady()) return KVN_NOT_READY;
  if (RescaleCells(table, {fromLow, fromHigh}, {toLow, toHigh})) Notify(KVN_CHANGE_NUMBERS);
  return KVN_SUCCESS;
}
