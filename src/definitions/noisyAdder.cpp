#include "definitions/noisyAdder.h"

#include <algorithm>
#include <cstddef>

#include "definitions/outcomeNames.h"
#include "definitions/parentDimensions.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

int PlaceOf(const KVN_intArray& order, int value) {
  const int* end = order.GetItems() + UsedCount(order);
  const int* found = std::find(order.GetItems(), end, value);
  return found == end ? KVN_REFUSED : static_cast<int>(found - order.GetItems());
}

}  // namespace

/// The rows of the parents' outcomes at one row of the table, which are stepped like the digits of
/// a number, the last parent fastest.
struct KVN_noisyAdder::Walk {
  KVN_intArray first;    // first row of each block, and the end of the last
  KVN_intArray resting;  // row of each parent's distinguished outcome
  KVN_intArray current;

  int Count() const { return current.GetSize(); }
  bool Acts(int cause) const { return current[cause] != resting[cause]; }
  void Step() {
    for (int i = Count() - 1; i >= 0; i--) {
      if (++current[i] < first[i + 1]) return;
      current[i] = first[i];
    }
  }
};

void KVN_noisyAdder::CleanUp(int deep) {
  if (deep != 0) {
    parentDistinguishedStates.CleanUp();
    weights.CleanUp();
  }
  KVN_ciDefinition::CleanUp(deep);
}

int KVN_noisyAdder::ReCreate() {
  function = KVN_ADDER_AVERAGE;
  // A node without names gets three outcomes where other kinds get two: this is intended.
  const int least = GetNumberOfOutcomes() == 0 ? 3 : 2;
  if (int result = FillOutcomeNames(outcomes, "State", least); result < 0) return result;
  if (int result = StartParameters(); result < 0) return result;
  parentDistinguishedStates.CleanUp();
  weights.CleanUp();
  distinguishedState = 1;
  if (int result = weights.Add(1.0); result < 0) return result;
  parameters[1] = 1.0;
  parameters.Normalize();
  if (int result = AddAllParents(); result < 0) return result;
  return (ciFlags & KVN_CI_KEEP_CPT) != 0 ? BuildCpt() : 0;
}

int KVN_noisyAdder::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!HasTableDimension(TypeOf(parent))) return KVN_REFUSED;
  const int position = PositionOf(parent);
  if (position < 0) return position;
  const int count = OutcomesOf(parent);
  if (count < 1) return 0;
  // Both go to the end whatever the position is, and the leak's weight with it: this is intended.
  if (int result = parentDistinguishedStates.Add(count - 1); result < 0) return result;
  if (int result = weights.Add(1.0); result < 0) return result;
  const int start = RowOffset(position);
  if (int result = InsertRows(start, count); result < 0) return result;
  MarkCptStale();
  if (int result = SetUnitRow(start + count - 1, distinguishedState); result < 0) return result;
  parameters.Normalize();
  return Edited();
}

int KVN_noisyAdder::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  int position = 0;
  const int found = FindParentDimension(network, handle, parent, position);
  if (found < 0) return found;
  // A parent of this same class is left in, although it was accepted: this is intended.
  if (found != KVN_PARENT_IGNORED && TypeOf(parent) != KVN_TYPE_NOISY_ADDER) {
    const int count = OutcomesOf(parent);
    if (count < 1) return 0;
    if (int result = RemoveRows(RowOffset(position), count); result < 0) return result;
    if (int result = parentDistinguishedStates.Delete(position); result < 0) return result;
    if (int result = weights.Delete(position); result < 0) return result;
    // An empty list that keeps its slots would pass for a block of that many values.
    if (parentDistinguishedStates.GetNumItems() == 0) parentDistinguishedStates.CleanUp();
    MarkCptStale();
  }
  CheckReadiness(/*deep=*/0);
  return 0;
}

int KVN_noisyAdder::ParentOutcomeInserted(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  int index = 0;
  const int found = FindParentDimension(network, handle, parent, index);
  if (found < 0) return found;
  // A parent of this same class is left as it was: this is intended.
  if (found == KVN_PARENT_IGNORED || TypeOf(parent) == KVN_TYPE_NOISY_ADDER) {
    CheckReadiness(/*deep=*/0);
    return 0;
  }
  if (index >= CauseCount() || position < 0 || position >= OutcomesOf(parent)) return KVN_REFUSED;
  const int row = RowOffset(index) + position;
  if (int result = InsertRows(row, 1); result < 0) return result;
  if (int result = SetUnitRow(row, distinguishedState); result < 0) return result;
  int& state = parentDistinguishedStates[index];
  if (position <= state) state++;
  return Edited();
}

int KVN_noisyAdder::ParentOutcomeRemoved(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  int index = 0;
  const int found = FindParentDimension(network, handle, parent, index);
  if (found < 0) return found;
  if (found == KVN_PARENT_IGNORED) {
    CheckReadiness(/*deep=*/0);
    return 0;
  }
  if (index >= CauseCount() || position < 0 || position > OutcomesOf(parent)) return KVN_REFUSED;
  const int start = RowOffset(index);
  if (int result = RemoveRows(start + position, 1); result < 0) return result;
  int& state = parentDistinguishedStates[index];
  if (position < state) {
    state--;
  } else if (position == state) {
    state = 0;
    if (int result = SetUnitRow(start, distinguishedState); result < 0) return result;
  }
  return Edited();
}

int KVN_noisyAdder::ParentOutcomesReordered(int parent, const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  const int index = PositionOf(parent);
  if (index < 0) return index;
  const int count = OutcomesOf(parent);
  const int start = RowOffset(index);
  if (index >= CauseCount() || start + count > RowCount()) return KVN_REFUSED;
  if (int result = CheckPermutation(order, count); result < 0) return result;
  KVN_intArray rowOrder;
  if (int result = rowOrder.SetSize(RowCount()); result < 0) return result;
  for (int row = 0; row < RowCount(); row++) rowOrder[row] = row;
  for (int k = 0; k < count; k++) rowOrder[start + k] = start + order[k];
  if (int result = parameters.ChangeOrderWithinDimension(0, rowOrder); result < 0) return result;
  int& state = parentDistinguishedStates[index];
  state = std::max(PlaceOf(order, state), 0);
  return Edited();
}

/// The network's list is in the new order already, so the present count of parent k is that of the
/// old block order[k].
int KVN_noisyAdder::ReorderParents(const KVN_intArray& order) {
  const int count = NumberOfParents();
  if (int result = CheckPermutation(order, count); result < 0) return result;
  if (CauseCount() < count || weights.GetNumItems() <= count) return KVN_REFUSED;
  KVN_intArray oldStart;
  if (int result = oldStart.SetSize(count + 1); result < 0) return result;
  for (int k = 0; k < count; k++) oldStart[order[k] + 1] = std::max(OutcomesOf(Parents()[k]), 0);
  for (int k = 0; k < count; k++) oldStart[k + 1] += oldStart[k];
  if (oldStart[count] >= RowCount()) return KVN_REFUSED;

  KVN_Dmatrix moved;
  KVN_intArray states;
  KVN_doubleArray loads;
  if (int result = moved.Assign(parameters); result < 0) return result;
  if (int result = states.Assign(parentDistinguishedStates); result < 0) return result;
  if (int result = loads.Assign(weights); result < 0) return result;
  double* to = moved.GetData();
  for (int k = 0; k < count; k++) {
    to = std::copy(Row(oldStart[order[k]]), Row(oldStart[order[k] + 1]), to);
    states[k] = parentDistinguishedStates[order[k]];
    loads[k] = weights[order[k]];
  }
  parameters.Swap(moved);
  parentDistinguishedStates.Swap(states);
  weights.Swap(loads);
  return Edited();
}

int KVN_noisyAdder::InsertOutcome(int position, const char* name) {
  const int before = GetNumberOfOutcomes();
  const int result = KVN_ciDefinition::InsertOutcome(position, name);
  if (GetNumberOfOutcomes() > before && distinguishedState >= position) distinguishedState++;
  return result;
}

int KVN_noisyAdder::RemoveOutcome(int position) {
  const bool isDistinguished = position == distinguishedState;
  // Before the base operation has had its say: this is intended.
  if (position >= 0 && position < distinguishedState) distinguishedState--;
  if (int result = KVN_ciDefinition::RemoveOutcome(position); result < 0) return result;
  return isDistinguished ? SetDistinguishedState(0) : 0;
}

int KVN_noisyAdder::SetNumberOfOutcomes(int count) {
  if (int result = KVN_ciDefinition::SetNumberOfOutcomes(count); result < 0) return result;
  return SetDistinguishedState(count - 1);
}

int KVN_noisyAdder::ChangeOrderOfOutcomes(const KVN_intArray& order) {
  if (int result = parameters.ChangeOrderWithinDimension(1, order); result < 0) return result;
  if (int result = outcomes.ChangeOrder(order); result < 0) return result;
  distinguishedState = std::max(PlaceOf(order, distinguishedState), 0);
  // The table isn't marked stale, other than by every other edit: this is intended.
  if ((ciFlags & KVN_CI_KEEP_CPT) != 0) {
    if (int result = BuildCpt(); result < 0) return result;
  }
  return OutcomesReordered(order);
}

void KVN_noisyAdder::CopyParametersTo(KVN_nodeDefinition& target) {
  if (&target == this || target.GetType() != GetType()) return;
  KVN_ciDefinition::CopyParametersTo(target);
  auto& gate = static_cast<KVN_noisyAdder&>(target);
  gate.function = function;
  gate.distinguishedState = distinguishedState;
  gate.weights = weights;
  gate.parentDistinguishedStates = parentDistinguishedStates;
}

int KVN_noisyAdder::TakeNumbers(KVN_nodeDefinition& other) {
  if (other.GetType() != GetType()) return 0;
  auto& source = static_cast<KVN_noisyAdder&>(other);
  ciFlags = source.ciFlags;
  if (parameters.GetSize() == source.parameters.GetSize()) {
    if (int result = parameters.Assign(source.parameters); result < 0) return result;
  }
  if ((source.ciFlags & KVN_CI_KEEP_CPT) != 0) {
    if (int result = cpt.Assign(source.cpt); result < 0) return result;
  }
  distinguishedState = source.distinguishedState;
  function = source.function;
  if (int result = weights.Assign(source.weights); result < 0) return result;
  return parentDistinguishedStates.Assign(source.parentDistinguishedStates);
}

int KVN_noisyAdder::BuildCpt() {
  if (function != KVN_ADDER_AVERAGE && function != KVN_ADDER_SINGLE_FAULT) return KVN_REFUSED;
  Walk walk;
  KVN_intArray sizes;
  if (int result = StartWalk(walk, sizes); result < 0) return result;
  if (int result = cpt.Setup(sizes); result < 0) return result;
  const int n = ColumnCount();
  double* const end = cpt.GetData() + cpt.GetSize();
  for (double* cells = cpt.GetData(); cells != end; cells += n, walk.Step()) {
    if (function == KVN_ADDER_AVERAGE) {
      AverageRow(walk, cells);
    } else {
      SingleFaultRow(walk, cells);
    }
  }
  ciFlags |= KVN_CI_CPT_CURRENT;
  return 0;
}

int KVN_noisyAdder::StartWalk(Walk& walk, KVN_intArray& sizes) const {
  const int causes = CauseCount();
  if (RowCount() == 0 || weights.GetNumItems() <= causes) return KVN_REFUSED;
  if (int result = sizes.SetSize(causes + 1); result < 0) return result;
  if (int result = walk.first.SetSize(causes + 1); result < 0) return result;
  if (int result = walk.resting.SetSize(causes); result < 0) return result;
  if (int result = walk.current.SetSize(causes); result < 0) return result;
  walk.first[0] = 0;
  for (int i = 0; i < causes; i++) {
    sizes[i] = OutcomesOf(Parents()[i]);
    if (sizes[i] < 1) return KVN_REFUSED;
    walk.current[i] = walk.first[i];
    walk.resting[i] = walk.first[i] + parentDistinguishedStates[i];
    walk.first[i + 1] = walk.first[i] + sizes[i];
  }
  sizes[causes] = ColumnCount();
  return walk.first[causes] > RowCount() ? KVN_REFUSED : 0;
}

void KVN_noisyAdder::AverageRow(const Walk& walk, double* cells) const {
  const int n = ColumnCount();
  const double* leak = Row(RowCount() - 1);
  double total = weights[walk.Count()];
  for (int j = 0; j < n; j++) cells[j] = leak[j] * total;
  for (int i = 0; i < walk.Count(); i++) {
    if (!walk.Acts(i)) continue;
    const double* row = Row(walk.current[i]);
    for (int j = 0; j < n; j++) cells[j] += row[j] * weights[i];
    total += weights[i];
  }
  for (int j = 0; j < n; j++) cells[j] /= total;
}

void KVN_noisyAdder::SingleFaultRow(const Walk& walk, double* cells) const {
  int acting = 0;
  int row = RowCount() - 1;
  for (int i = 0; i < walk.Count(); i++) {
    if (!walk.Acts(i)) continue;
    acting++;
    row = walk.current[i];
  }
  std::copy_n(Row(acting == 1 ? row : RowCount() - 1), ColumnCount(), cells);
}

int KVN_noisyAdder::FitParameters() { return KVN_REFUSED; }

int KVN_noisyAdder::RowOffset(int parentIndex) const {
  if (parentIndex < 0 || parentIndex >= NumberOfParents()) return KVN_REFUSED;
  int row = 0;
  for (int i = 0; i < parentIndex; i++) row += std::max(OutcomesOf(Parents()[i]), 0);
  return row;
}

int KVN_noisyAdder::SetDistinguishedState(int state) {
  if (state < 0 || state >= GetNumberOfOutcomes()) return KVN_REFUSED;
  if (state == distinguishedState) return 0;
  KVN_intArray columns;
  if (int result = UnitColumns(columns); result < 0) return result;
  for (int row = 0; row < columns.GetSize(); row++) {
    if (columns[row] < 0 || state >= ColumnCount()) continue;
    // The old column may have been removed just now.
    if (distinguishedState < ColumnCount()) Row(row)[distinguishedState] = 0.0;
    Row(row)[state] = 1.0;
  }
  distinguishedState = state;
  return ParametersChanged();
}

int KVN_noisyAdder::SetParentDistinguishedState(int parentIndex, int state) {
  if (parentIndex < 0 || parentIndex >= CauseCount()) return KVN_REFUSED;
  if (state < 0 || state >= OutcomesOf(Parents()[parentIndex])) return KVN_REFUSED;
  if (state == parentDistinguishedStates[parentIndex]) return 0;
  if (int result = SetUnitRow(RowOffset(parentIndex) + state, distinguishedState); result < 0) {
    return result;
  }
  parentDistinguishedStates[parentIndex] = state;
  return ParametersChanged();
}

int KVN_noisyAdder::SetWeights(const KVN_doubleArray& values) {
  const int count = std::min(UsedCount(values), weights.GetNumItems());
  std::copy_n(values.GetItems(), count, weights.GetItems());
  return ParametersChanged();
}

int KVN_noisyAdder::SetFunction(int code) {
  function = code;
  return ParametersChanged();
}

int KVN_noisyAdder::CauseCount() const {
  return std::min(NumberOfParents(), parentDistinguishedStates.GetNumItems());
}

/// For each row of `parameters` the distinguished column if the row is constrained, else -1.
int KVN_noisyAdder::UnitColumns(KVN_intArray& columns) const {
  if (int result = columns.SetSize(RowCount()); result < 0) return result;
  columns.FillWith(-1);
  int start = 0;
  for (int i = 0; i < CauseCount(); i++) {
    const int row = start + parentDistinguishedStates[i];
    if (row >= 0 && row < RowCount()) columns[row] = distinguishedState;
    start += std::max(OutcomesOf(Parents()[i]), 0);
  }
  return 0;
}
