#include "definitions/noisyMAX.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "definitions/outcomeNames.h"
#include "definitions/parentDimensions.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

/// `order` as an array of exact size, since others copy the strengths by their slots.
int CopyExact(const KVN_intArray& order, KVN_intArray& made) {
  const int count = UsedCount(order);
  if (int result = made.SetSize(count); result < 0) return result;
  std::copy_n(order.GetItems(), count, made.GetItems());
  made.UseAsList(-1);
  return 0;
}

int MakeIdentity(int count, KVN_intArray& made) {
  if (int result = made.SetSize(count); result < 0) return result;
  for (int i = 0; i < count; i++) made[i] = i;
  made.UseAsList(-1);
  return 0;
}

}  // namespace

void KVN_noisyMAX::CleanUp(int deep) {
  if (deep != 0) strengths.clear();
  KVN_ciDefinition::CleanUp(deep);
}

int KVN_noisyMAX::ReCreate() {
  if (int result = FillOutcomeNames(outcomes, "State", 2); result < 0) return result;
  strengths.clear();
  if (int result = StartParameters(); result < 0) return result;
  parameters.Normalize();
  if (int result = AddAllParents(); result < 0) return result;
  return (ciFlags & KVN_CI_KEEP_CPT) != 0 ? BuildCpt() : 0;
}

int KVN_noisyMAX::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!HasTableDimension(TypeOf(parent))) return KVN_REFUSED;
  const int position = PositionOf(parent);
  if (position < 0) return position;
  const int count = OutcomesOf(parent);
  if (count < 1) return 0;
  KVN_intArray order;
  if (int result = MakeIdentity(count, order); result < 0) return result;
  const int start = BlockStart(position);
  if (int result = InsertRows(start, count); result < 0) return result;
  // At the end whatever the position is: that this differs from the block's place is intended.
  strengths.push_back(std::move(order));
  if (int result = SetConstrainedRow(start + count - 1); result < 0) return result;
  parameters.Normalize();
  return Edited();
}

int KVN_noisyMAX::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  int block = 0;
  const int found = FindParentDimension(network, handle, parent, block);
  if (found < 0) return found;
  if (found != KVN_PARENT_IGNORED) {
    if (block >= BlockCount()) return KVN_REFUSED;
    if (int result = RemoveRows(BlockStart(block), BlockSize(block)); result < 0) return result;
    strengths.erase(strengths.begin() + block);
    MarkCptStale();
    // The parent still stands in the network's list, so the table is cut down, not rebuilt.
    if ((ciFlags & KVN_CI_KEEP_CPT) != 0) {
      if (int result = cpt.RemoveDimension(block, 0); result < 0) return result;
    }
  }
  CheckReadiness(/*deep=*/0);
  return 0;
}

int KVN_noisyMAX::AbsorbParentEvidence(int parent) {
  const KVN_nodeValue* value = network == nullptr ? nullptr : network->ValueOf(parent);
  if (value == nullptr || !value->HasEvidence()) return KVN_REFUSED;
  const int block = BlockOf(parent);
  if (block < 0) return block;
  const int place = strengths[block].FindPosition(value->GetEvidence());
  if (place < 0 || RowCount() <= BlockRows()) return KVN_REFUSED;
  KVN_Dmatrix folded;
  if (int result = folded.Assign(parameters); result < 0) return result;
  Cumulate(folded);
  const int n = ColumnCount();
  double* leak = folded.GetData() + (RowCount() - 1) * n;
  const double* row = folded.GetData() + (BlockStart(block) + place) * n;
  for (int column = 0; column < n; column++) leak[column] *= row[column];
  Decumulate(folded);
  return DropBlock(block, folded);
}

int KVN_noisyMAX::MarginalizeParent(int parent) {
  const KVN_nodeValue* value = network == nullptr ? nullptr : network->ValueOf(parent);
  if (value != nullptr && value->HasEvidence()) return KVN_REFUSED;
  const int type = TypeOf(parent);
  if (type == KVN_TYPE_TABLE) return KVN_REFUSED;
  if (!HasTableDimension(type) || type == KVN_TYPE_LIST) {
    CheckReadiness(/*deep=*/0);
    return 0;
  }
  const int block = BlockOf(parent);
  if (block < 0) return block;
  KVN_doubleArray* prior = nullptr;
  if (int result = network->DefinitionOf(parent)->GetDefinition(prior); result < 0) return result;
  const int count = BlockSize(block);
  if (prior->GetSize() < count || RowCount() <= BlockRows()) return KVN_REFUSED;
  KVN_Dmatrix folded;
  if (int result = folded.Assign(parameters); result < 0) return result;
  Cumulate(folded);
  const int n = ColumnCount();
  double* leak = folded.GetData() + (RowCount() - 1) * n;
  const double* rows = folded.GetData() + BlockStart(block) * n;
  for (int column = 0; column < n; column++) {
    double sum = 0.0;
    for (int place = 0; place < count; place++) {
      sum += (*prior)[strengths[block][place]] * rows[place * n + column];
    }
    leak[column] *= sum;
  }
  Decumulate(folded);
  return DropBlock(block, folded);
}

int KVN_noisyMAX::DropBlock(int block, const KVN_Dmatrix& folded) {
  if (int result = RemoveRows(BlockStart(block), BlockSize(block)); result < 0) return result;
  const int n = ColumnCount();
  std::copy_n(folded.GetData() + folded.GetSize() - n, n, Row(RowCount() - 1));
  strengths.erase(strengths.begin() + block);
  return Edited();
}

int KVN_noisyMAX::ParentOutcomeInserted(int parent, int position) {
  int block = 0;
  const int found = FindParentDimension(network, handle, parent, block);
  if (found < 0) return found;
  if (found == KVN_PARENT_IGNORED) {
    CheckReadiness(/*deep=*/0);
    return 0;
  }
  const int count = OutcomesOf(parent);
  if (block >= BlockCount() || count < 2 || BlockSize(block) != count - 1) return KVN_REFUSED;
  const int place = count - 2;
  const int row = BlockStart(block) + place;
  KVN_intArray widened;
  if (int result = widened.SetSize(count); result < 0) return result;
  if (int result = InsertRows(row, 1); result < 0) return result;
  if (int result = SetConstrainedRow(row); result < 0) return result;
  parameters.Normalize();

  const KVN_intArray& old = strengths[block];
  for (int from = 0, to = 0; to < count; to++) {
    if (to == place) {
      widened[to] = position;
    } else {
      widened[to] = old[from] >= position ? old[from] + 1 : old[from];
      from++;
    }
  }
  widened.UseAsList(-1);
  strengths[block].Swap(widened);
  return Edited();
}

int KVN_noisyMAX::ParentOutcomeRemoved(int parent, int position) {
  // Other than at an insertion, a parent without a dimension is refused.
  if (!HasTableDimension(TypeOf(parent))) return KVN_REFUSED;
  const int block = BlockOf(parent);
  if (block < 0) return block;
  const int place = strengths[block].FindPosition(position);
  const int count = BlockSize(block) - 1;
  if (place < 0 || count < 1) return KVN_REFUSED;
  KVN_intArray narrowed;
  if (int result = narrowed.SetSize(count); result < 0) return result;
  if (int result = RemoveRows(BlockStart(block) + place, 1); result < 0) return result;

  const KVN_intArray& old = strengths[block];
  for (int from = 0, to = 0; from <= count; from++) {
    if (from != place) narrowed[to++] = old[from] > position ? old[from] - 1 : old[from];
  }
  narrowed.UseAsList(-1);
  strengths[block].Swap(narrowed);
  if (int result = SetConstrainedRow(BlockStart(block) + count - 1); result < 0) return result;
  return Edited();
}

int KVN_noisyMAX::ParentOutcomesReordered(int parent, const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  const int block = BlockOf(parent);
  if (block < 0) return block;
  if (int result = strengths[block].ChangeOrder(order); result < 0) return result;
  return Edited();
}

int KVN_noisyMAX::ReorderParents(const KVN_intArray& order) {
  const int count = BlockCount();
  if (int result = CheckPermutation(order, count); result < 0) return result;
  if (RowCount() <= BlockRows()) return KVN_REFUSED;
  KVN_Dmatrix moved;
  if (int result = moved.Assign(parameters); result < 0) return result;  // the leak row stays
  double* to = moved.GetData();
  for (int i = 0; i < count; i++) {
    const int start = BlockStart(order[i]);
    to = std::copy(Row(start), Row(start + BlockSize(order[i])), to);
  }
  std::vector<KVN_intArray> reordered(strengths.size());
  for (int i = 0; i < count; i++) reordered[i].Swap(strengths[order[i]]);
  strengths.swap(reordered);
  parameters.Swap(moved);
  return 0;  // the mark of the table stays: see the header
}

int KVN_noisyMAX::ChangeOrderOfOutcomes(const KVN_intArray& order) {
  if (int result = parameters.ChangeOrderWithinDimension(1, order); result < 0) return result;
  if (int result = outcomes.ChangeOrder(order); result < 0) return result;
  if (int result = ParametersChanged(); result < 0) return result;
  if (int result = OutcomesReordered(order); result < 0) return result;
  KVN_intArray columns;
  if (int result = UnitColumns(columns); result < 0) return result;
  for (int row = 0; row < columns.GetSize(); row++) {
    if (columns[row] >= 0) (void)SetConstrainedRow(row);  // in range by UnitColumns
  }
  return 0;
}

int KVN_noisyMAX::TakeNumbers(KVN_nodeDefinition& source) {
  if (source.GetType() == GetType()) return TakeGate(static_cast<KVN_noisyMAX&>(source));
  return TakeTable(source);
}

int KVN_noisyMAX::TakeTable(KVN_nodeDefinition& source) {
  KVN_Dmatrix* table = nullptr;
  if (int result = source.GetDefinition(table); result < 0) return result;
  if (int result = cpt.Assign(*table); result < 0) return result;
  const int result = FitParameters();
  // A table that has another shape than this node's is not fitted: the default numbers stay.
  return result == KVN_REFUSED ? 0 : result;
}

int KVN_noisyMAX::TakeGate(KVN_noisyMAX& source) {
  ciFlags = source.ciFlags;
  if (parameters.GetSize() == source.parameters.GetSize()) {
    if (int result = parameters.Assign(source.parameters); result < 0) return result;
  }
  if ((source.ciFlags & KVN_CI_KEEP_CPT) != 0) {
    if (int result = cpt.Assign(source.cpt); result < 0) return result;
  }
  strengths = source.strengths;
  return 0;
}

int KVN_noisyMAX::RowOffset(int parentIndex) const {
  if (parentIndex < 0 || parentIndex >= NumberOfParents()) return KVN_REFUSED;
  return BlockStart(parentIndex);
}

const KVN_intArray* KVN_noisyMAX::GetStrengths(int parentIndex) const {
  return parentIndex >= 0 && parentIndex < BlockCount() ? &strengths[parentIndex] : nullptr;
}

int KVN_noisyMAX::SetParentOutcomeStrengths(int parentIndex, const KVN_intArray& order) {
  if (parentIndex < 0 || parentIndex >= BlockCount()) return KVN_REFUSED;
  if (int result = CheckPermutation(order, BlockSize(parentIndex)); result < 0) return result;
  KVN_intArray made;
  if (int result = CopyExact(order, made); result < 0) return result;
  strengths[parentIndex].Swap(made);
  return ParametersChanged();
}

int KVN_noisyMAX::ApplyParentOutcomeStrengths(int parentIndex, const KVN_intArray& order) {
  if (parentIndex < 0 || parentIndex >= BlockCount()) return KVN_REFUSED;
  const int count = BlockSize(parentIndex);
  if (int result = CheckPermutation(order, count); result < 0) return result;
  const int start = BlockStart(parentIndex);
  KVN_intArray rowOrder;
  if (int result = MakeIdentity(RowCount(), rowOrder); result < 0) return result;
  if (start + count > rowOrder.GetSize()) return KVN_REFUSED;
  for (int place = 0; place < count; place++) rowOrder[start + place] = start + order[place];
  if (int result = parameters.ChangeOrderWithinDimension(0, rowOrder); result < 0) return result;
  if (int result = SetConstrainedRow(start + count - 1); result < 0) return result;
  if (int result = strengths[parentIndex].ChangeOrder(order); result < 0) return result;
  return ParametersChanged();
}

int KVN_noisyMAX::BlockOf(int parent) const {
  const int position = PositionOf(parent);
  return position < BlockCount() ? position : KVN_REFUSED;
}

int KVN_noisyMAX::BlockStart(int block) const {
  int row = 0;
  for (int i = 0; i < block && i < BlockCount(); i++) row += BlockSize(i);
  return row;
}
