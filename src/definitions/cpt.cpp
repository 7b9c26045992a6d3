#include "definitions/cpt.h"

#include <algorithm>

#include "definitions/outcomeNames.h"
#include "definitions/parentDimensions.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr const char* kPrefix = "State";

}  // namespace

KVN_cpt::KVN_cpt(KVN_network* theNetwork, int theHandle)
    : KVN_nodeDefinition(theNetwork, theHandle) {}

int KVN_cpt::Init() {
  const int result = ReCreate();
  (void)CheckReadiness(/*deep=*/1);
  return result;
}

void KVN_cpt::CleanUp(int deep) {
  if (deep != 0) {
    numberOfOutcomes = 0;
    outcomes.CleanUp(deep);
    table.CleanUp();
  }
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_cpt::CheckReadiness(int deep) {
  if (deep != 0) (void)outcomes.CheckReadiness(deep);
  SetReady(outcomes.IsReady() && numberOfOutcomes == outcomes.GetNumItems());
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_cpt::CheckConsistency(int deep) {
  if (deep != 0) (void)outcomes.CheckConsistency(deep);
  SetConsistent(false);
  if (!outcomes.IsConsistent()) return KVN_NOT_CONSISTENT;
  const int rows = GetNumberOfRows();
  const int rowSize = rows == 0 ? 0 : table.GetSizeOfDimension(LastDimension());
  const double* cell = table.GetData();
  for (int row = 0; row < rows; row++) {
    double sum = 0.0;
    for (int i = 0; i < rowSize; i++, cell++) {
      if (*cell < 0.0) return KVN_NOT_CONSISTENT;
      sum += *cell;
    }
    // Written so that a NaN fails.
    if (!(sum >= KVN_ROW_SUM_LOW && sum <= KVN_ROW_SUM_HIGH)) return KVN_NOT_CONSISTENT;
  }
  SetConsistent(true);
  return KVN_SUCCESS;
}

int KVN_cpt::GetNumberOfRows() const {
  const int rowSize = LastDimension() < 0 ? 0 : table.GetSizeOfDimension(LastDimension());
  return rowSize == 0 ? 0 : table.GetSize() / rowSize;
}

int KVN_cpt::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  const int result = KVN_parentDimensions(network, handle, table).Add(parent);
  if (result == KVN_SUCCESS) table.Normalize();
  return FinishParentEdit(result);
}

int KVN_cpt::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Remove(parent));
}

int KVN_cpt::AbsorbParentEvidence(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).AbsorbEvidence(parent));
}

int KVN_cpt::MarginalizeParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Marginalize(parent));
}

int KVN_cpt::ParentOutcomeInserted(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  const int result = KVN_parentDimensions(network, handle, table).InsertOutcome(parent, position);
  if (result == KVN_SUCCESS) CompleteRows();
  return FinishParentEdit(result);
}

// It is meant that the rows are left as they are: none of them changes when another one goes.
int KVN_cpt::ParentOutcomeRemoved(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(
      KVN_parentDimensions(network, handle, table).RemoveOutcome(parent, position));
}

int KVN_cpt::ParentOutcomesReordered(int parent, const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(
      KVN_parentDimensions(network, handle, table).ReorderOutcomes(parent, order));
}

int KVN_cpt::ReorderParents(const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  return FinishParentEdit(KVN_parentDimensions(network, handle, table).Reorder(order));
}

void KVN_cpt::CompleteRows() { table.Normalize(); }

int KVN_cpt::FinishParentEdit(int result) {
  if (result < 0) return result;
  (void)CheckReadiness(/*deep=*/0);
  return KVN_SUCCESS;
}

int KVN_cpt::ReCreate() {
  if (int result = FillOutcomeNames(outcomes, kPrefix, 2); result < 0) return result;
  numberOfOutcomes = outcomes.GetNumItems();
  table.CleanUp();
  if (int result = table.AppendDimension(numberOfOutcomes); result < 0) return result;
  table.Normalize();
  (void)CheckReadiness(/*deep=*/0);  // AddParent asks for it
  return AddAllParents();
}

int KVN_cpt::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return KVN_SUCCESS;
  if (int result = Convert(source); result < 0) return result;
  NumbersReplaced(KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

int KVN_cpt::Convert(KVN_nodeDefinition& source) {
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  switch (source.GetType()) {
    case KVN_TYPE_NONE:
      return KVN_SUCCESS;
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
    case KVN_TYPE_MAU:
      return ReCreate();
    case KVN_TYPE_TABLE: {
      KVN_Dmatrix* utilities = nullptr;
      if (int result = source.GetDefinition(utilities); result < 0) return result;
      return TakeUtilities(*utilities);
    }
    case KVN_TYPE_LIST:
      if (int result = TakeNames(source); result < 0) return result;
      DropAllParents();
      return ReCreate();
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      if (int result = TakeNames(source); result < 0) return result;
      if (int result = ReCreate(); result < 0) return result;
      return TakeTable(source);
    case KVN_TYPE_CAST:
    case KVN_TYPE_DEMORGAN:
      return TakeBinaryGate();
    default:
      return KVN_REFUSED;
  }
}

int KVN_cpt::TakeNames(const KVN_nodeDefinition& source) {
  const KVN_idArray* names = source.GetOutcomesNames();
  return names == nullptr ? KVN_REFUSED : CopyOutcomeNames(outcomes, *names);
}

// A gate's table has the shape that its parents ask for, so it is taken over as a whole. A plain
// table may have lost dimensions (AbsorbParentEvidence); the default stays then.
int KVN_cpt::TakeTable(KVN_nodeDefinition& source) {
  KVN_Dmatrix* cells = nullptr;
  if (int result = source.GetDefinition(cells); result < 0) return result;
  const bool isGate =
      source.GetType() == KVN_TYPE_NOISY_MAX || source.GetType() == KVN_TYPE_NOISY_ADDER;
  if (isGate) return table.Assign(*cells);
  if (cells->GetSize() == table.GetSize()) table.GetItems().CopyItems(cells->GetItems());
  return KVN_SUCCESS;
}

// Each utility becomes a row of two: how far it lies between the worst and the best one.
int KVN_cpt::TakeUtilities(const KVN_Dmatrix& utilities) {
  if (int result = ReCreate(); result < 0) return result;
  table.FillWith(0.0);
  const int count = std::min(utilities.GetSize(), GetNumberOfRows());
  if (count == 0) return KVN_SUCCESS;
  const double* const first = utilities.GetData();
  const double* const last = first + utilities.GetSize();
  const double lowest = *std::min_element(first, last);
  double range = *std::max_element(first, last) - lowest;
  if (range == 0.0) range = 1.0;
  for (int i = 0; i < count; i++) {
    const double share = (utilities[i] - lowest) / range;
    table[2 * i] = share;
    table[2 * i + 1] = 1.0 - share;
  }
  return KVN_SUCCESS;
}

// The table of a gate of that kind depends on parents that get no dimension here.
int KVN_cpt::TakeBinaryGate() {
  if (NumberOfParents() > 0) return KVN_REFUSED;
  for (const char* name : {"True", "False"}) {
    if (int result = outcomes.Add(name); result < 0) return result;
  }
  return ReCreate();
}

void KVN_cpt::NumbersReplaced(int changeCode) {
  (void)CheckReadiness(/*deep=*/1);
  (void)CheckConsistency(/*deep=*/1);
  Notify(changeCode);
}

int KVN_cpt::AddOutcome(const char* name) { return InsertOutcome(numberOfOutcomes, name); }

// The table comes first: it is what may be too large, and the definition then stays as it was.
int KVN_cpt::InsertOutcome(int position, const char* name) {
  if (!IsReady()) return KVN_NOT_READY;
  if (position < 0 || position > numberOfOutcomes) return KVN_REFUSED;
  if (int result = table.PushSlice(LastDimension()); result < 0) return result;
  if (int result = table.ShiftSlice(LastDimension(), position, 0.0); result < 0) return result;
  if (int result = InsertOutcomeName(outcomes, position, name, kPrefix); result < 0) return result;
  numberOfOutcomes++;
  return OutcomeAdded(position);
}

int KVN_cpt::RemoveOutcome(int position) {
  if (!IsReady()) return KVN_NOT_READY;
  if (numberOfOutcomes < 3) return KVN_REFUSED;
  if (int result = table.RemoveSlice(LastDimension(), position); result < 0) return result;
  if (int result = table.ShrinkDimension(LastDimension()); result < 0) return result;
  numberOfOutcomes--;
  return OutcomeRemoved(position, outcomes);
}

int KVN_cpt::RenameOutcome(int position, const char* name) {
  if (!IsReady()) return KVN_NOT_READY;
  return outcomes.SetString(position, name);
}

int KVN_cpt::RenameOutcomes(const KVN_stringArray& names) {
  if (!IsReady() || !names.IsReady()) return KVN_NOT_READY;
  if (int result = ReplaceOutcomeNames(outcomes, names); result < 0) return result;
  (void)CheckReadiness(/*deep=*/0);
  return KVN_SUCCESS;
}

int KVN_cpt::SetNumberOfOutcomes(const KVN_stringArray& names) {
  if (HasNode() && network->GetNumberOfChildren(handle) > 0) return KVN_HAS_CHILDREN;
  if (!names.IsReady()) return KVN_NOT_READY;
  // Made before the old ones go: `names` may be this definition's own list.
  KVN_idArray made;
  const int count = UsedCount(names);
  if (int result = MakeOutcomeNames(made, names); result < 0) {
    return result == KVN_NO_MEMORY ? result : SetNumberOfOutcomes(count);
  }
  CleanUp(/*deep=*/1);
  outcomes.SetAllowEmpty(made.GetAllowEmpty());
  outcomes.Swap(made);
  return RebuildForNewOutcomes();
}

int KVN_cpt::SetNumberOfOutcomes(int count) {
  if (HasNode() && network->GetNumberOfChildren(handle) > 0) return KVN_HAS_CHILDREN;
  CleanUp(/*deep=*/1);
  if (count <= 0) return KVN_REFUSED;
  if (int result = FillOutcomeNames(outcomes, kPrefix, count); result < 0) return result;
  return RebuildForNewOutcomes();
}

int KVN_cpt::RebuildForNewOutcomes() {
  const int result = ReCreate();
  OutcomesReplaced();
  (void)CheckReadiness(/*deep=*/0);
  if (result == KVN_SUCCESS) Notify(KVN_CHANGE_DEFINITION);
  return result;
}

int KVN_cpt::ChangeOrderOfOutcomes(const KVN_intArray& order) {
  if (int result = table.ChangeOrderWithinDimension(NumberOfParents(), order); result < 0) {
    return result;
  }
  if (int result = outcomes.ChangeOrder(order); result < 0) return result;
  return OutcomesReordered(order);
}

int KVN_cpt::GetDefinition(KVN_doubleArray*& out) {
  out = &table.GetItems();
  return KVN_SUCCESS;
}

int KVN_cpt::GetDefinition(KVN_Dmatrix*& out) {
  out = &table;
  return KVN_SUCCESS;
}

int KVN_cpt::SetDefinition(const KVN_Dmatrix& source) { return table.Assign(source); }

int KVN_cpt::SetDefinition(const KVN_doubleArray& source) {
  const int count = std::min(table.GetSize(), UsedCount(source));
  std::copy_n(source.GetItems(), count, table.GetData());
  return KVN_SUCCESS;
}

void KVN_cpt::CopyParametersTo(KVN_nodeDefinition& target) {
  if (auto* other = dynamic_cast<KVN_cpt*>(&target); other != nullptr && other != this) {
    (void)other->table.Assign(table);  // without memory the target keeps its numbers
  }
}

int KVN_cpt::SetProbabilities(const KVN_doubleArray& values) {
  if (!IsReady()) return KVN_NOT_READY;
  if (UsedCount(values) != table.GetSize()) return KVN_REFUSED;
  std::copy_n(values.GetItems(), table.GetSize(), table.GetData());
  NumbersReplaced(KVN_CHANGE_NUMBERS);
  return KVN_SUCCESS;
}
