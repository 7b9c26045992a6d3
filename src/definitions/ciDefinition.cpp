#include "definitions/ciDefinition.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "definitions/outcomeNames.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr char kPrefix[] = "State";

int Tell(char* message, int messageSize, const char* text, int result) {
  if (message != nullptr && messageSize > 0) {
    std::snprintf(message, static_cast<std::size_t>(messageSize), "%s", text);
  }
  return result;
}

bool IsRowSum(double sum) { return sum >= KVN_ROW_SUM_LOW && sum <= KVN_ROW_SUM_HIGH; }

}  // namespace

int KVN_ciDefinition::Init() {
  const int result = ReCreate();
  CheckReadiness(/*deep=*/0);
  return result;
}

void KVN_ciDefinition::CleanUp(int deep) {
  if (deep != 0) {
    outcomes.CleanUp(/*deep=*/1);
    cpt.CleanUp();
    parameters.CleanUp();
  }
  ciFlags = 0;
  CheckReadiness(/*deep=*/0);
}

int KVN_ciDefinition::CheckReadiness(int deep) {
  if (deep != 0) outcomes.CheckReadiness(/*deep=*/1);
  SetReady(outcomes.IsReady());
  return IsReady() ? 0 : KVN_NOT_READY;
}

int KVN_ciDefinition::CheckConsistency(int deep) {
  if (deep != 0) outcomes.CheckConsistency(/*deep=*/1);
  char message[64];
  SetConsistent(outcomes.IsConsistent() && IsMatrix() && ColumnCount() == GetNumberOfOutcomes() &&
                CheckParameters(parameters, message, sizeof message) == 0);
  return IsConsistent() ? 0 : KVN_NOT_CONSISTENT;
}

int KVN_ciDefinition::GetSize() {
  if (int result = UpdateCpt(); result < 0) return result;
  return cpt.GetSize();
}

int KVN_ciDefinition::AddOutcome(const char* name) {
  return InsertOutcome(GetNumberOfOutcomes(), name);
}

int KVN_ciDefinition::InsertOutcome(int position, const char* name) {
  if (!IsReady()) return KVN_NOT_READY;
  if (int result = InsertOutcomeName(outcomes, position, name, kPrefix); result < 0) return result;
  if (int result = parameters.PushSlice(1); result < 0) return result;
  if (int result = parameters.ShiftSlice(1, position, 0.0); result < 0) return result;
  if (int result = ParametersChanged(); result < 0) return result;
  return OutcomeAdded(position);
}

int KVN_ciDefinition::RemoveOutcome(int position) {
  if (!IsReady()) return KVN_NOT_READY;
  if (GetNumberOfOutcomes() < 3) return KVN_REFUSED;
  if (int result = parameters.RemoveSlice(1, position); result < 0) return result;
  if (int result = parameters.ShrinkDimension(1); result < 0) return result;
  if (int result = ParametersChanged(); result < 0) return result;
  return OutcomeRemoved(position, outcomes);
}

int KVN_ciDefinition::RenameOutcome(int position, const char* name) {
  if (!IsReady()) return KVN_NOT_READY;
  return outcomes.SetString(position, name);
}

int KVN_ciDefinition::RenameOutcomes(const KVN_stringArray& names) {
  if (!IsReady() || !names.IsReady()) return KVN_NOT_READY;
  if (UsedCount(names) != GetNumberOfOutcomes()) return KVN_REFUSED;
  if (int result = ReplaceOutcomeNames(outcomes, names); result < 0) return result;
  CheckReadiness(/*deep=*/0);
  return 0;
}

int KVN_ciDefinition::SetNumberOfOutcomes(const KVN_stringArray& names) {
  if (HasNode() && network->GetNumberOfChildren(handle) > 0) return KVN_HAS_CHILDREN;
  if (!names.IsReady()) return KVN_NOT_READY;
  // A copy, because `names` may be this gate's own list, which the next call empties.
  KVN_idArray wanted;
  if (int result = CopyOutcomeNames(wanted, names); result < 0) return result;
  if (wanted.CheckConsistency(/*deep=*/1) < 0) return KVN_NOT_READY;
  if (int result = SetNumberOfOutcomes(UsedCount(wanted)); result < 0) return result;
  return RenameOutcomes(wanted);
}

int KVN_ciDefinition::SetNumberOfOutcomes(int count) {
  if (HasNode() && network->GetNumberOfChildren(handle) > 0) return KVN_HAS_CHILDREN;
  if (count < 2) return KVN_REFUSED;
  CleanUp(/*deep=*/1);
  if (int result = FillOutcomeNames(outcomes, kPrefix, count); result < 0) return result;
  if (int result = ReCreate(); result < 0) return result;
  OutcomesReplaced();
  Notify(KVN_CHANGE_DEFINITION);
  return 0;
}

int KVN_ciDefinition::GetDefinition(KVN_doubleArray*& out) {
  out = nullptr;
  if (int result = UpdateCpt(); result < 0) return result;
  out = &cpt.GetItems();
  return 0;
}

int KVN_ciDefinition::GetDefinition(KVN_Dmatrix*& out) {
  out = nullptr;
  if (int result = UpdateCpt(); result < 0) return result;
  out = &cpt;
  return 0;
}

int KVN_ciDefinition::SetDefinition(const KVN_Dmatrix& source) {
  if (int result = parameters.Assign(source); result < 0) return result;
  const int result = ParametersChanged();
  CheckReadiness(/*deep=*/0);
  return result;
}

int KVN_ciDefinition::SetDefinition(const KVN_doubleArray& source) {
  const int count = std::min(UsedCount(source), parameters.GetSize());
  std::copy_n(source.GetItems(), count, parameters.GetData());
  const int result = ParametersChanged();
  CheckReadiness(/*deep=*/0);
  return result;
}

void KVN_ciDefinition::CopyParametersTo(KVN_nodeDefinition& target) {
  if (&target == this || target.GetType() != GetType()) return;
  auto& gate = static_cast<KVN_ciDefinition&>(target);
  gate.ciFlags = ciFlags;
  gate.parameters = parameters;
  gate.cpt = cpt;
}

KVN_Dmatrix* KVN_ciDefinition::GetCpt() {
  (void)UpdateCpt();  // the caller sees the old table, or none, where it can't be built
  return &cpt;
}

int KVN_ciDefinition::SetUnitRow(int row, int column) {
  const int n = ColumnCount();
  if (row < 0 || row >= RowCount() || column < 0 || column >= n) return KVN_REFUSED;
  std::fill_n(Row(row), n, 0.0);
  Row(row)[column] = 1.0;
  return 0;
}

int KVN_ciDefinition::InsertRows(int at, int count) {
  const int rows = RowCount();
  if (rows == 0 || at < 0 || at > rows || count < 0) return KVN_REFUSED;
  const int n = ColumnCount();
  const int sizes[] = {rows + count, n};
  KVN_Dmatrix made;
  if (int result = made.Setup(sizes, 2); result < 0) return result;
  std::copy(Row(0), Row(at), made.GetData());
  std::copy(Row(at), Row(rows), made.GetData() + (at + count) * n);
  parameters.Swap(made);
  return 0;
}

int KVN_ciDefinition::RemoveRows(int at, int count) {
  const int rows = RowCount();
  if (at < 0 || count < 0 || count >= rows || at > rows - count) return KVN_REFUSED;
  const int n = ColumnCount();
  const int sizes[] = {rows - count, n};
  KVN_Dmatrix made;
  if (int result = made.Setup(sizes, 2); result < 0) return result;
  std::copy(Row(0), Row(at), made.GetData());
  std::copy(Row(at + count), Row(rows), made.GetData() + at * n);
  parameters.Swap(made);
  return 0;
}

int KVN_ciDefinition::ParametersChanged() {
  MarkCptStale();
  return (ciFlags & KVN_CI_KEEP_CPT) != 0 ? BuildCpt() : 0;
}

int KVN_ciDefinition::Edited() {
  if (int result = ParametersChanged(); result < 0) return result;
  CheckReadiness(/*deep=*/0);
  return 0;
}

int KVN_ciDefinition::UpdateCpt() {
  if ((ciFlags & KVN_CI_CPT_CURRENT) != 0 && cpt.GetSize() > 0) return 0;
  return BuildCpt();
}

int KVN_ciDefinition::StartParameters() {
  cpt.CleanUp();
  MarkCptStale();
  const int sizes[] = {1, outcomes.GetNumItems()};
  return parameters.Setup(sizes, 2);
}

void KVN_ciDefinition::CopyCellsToCpt(KVN_nodeDefinition& source) {
  KVN_doubleArray* cells = nullptr;
  const int size = GetSize();
  if (size <= 0 || size != source.GetSize() || source.GetDefinition(cells) < 0) return;
  cpt.GetItems().CopyItems(*cells);
}

int KVN_ciDefinition::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return 0;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  if (int result = TakeContent(source); result < 0) return result;
  CheckReadiness(/*deep=*/1);
  CheckConsistency(/*deep=*/1);
  Notify(KVN_CHANGE_DEFINITION);
  return 0;
}

int KVN_ciDefinition::TakeContent(KVN_nodeDefinition& source) {
  const int type = source.GetType();
  switch (type) {
    case KVN_TYPE_NONE:
      return 0;
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
      return ReCreate();
    case KVN_TYPE_TABLE:
      // Two outcomes in every gate, whatever a new one has.
      if (int result = FillOutcomeNames(outcomes, kPrefix, 2); result < 0) return result;
      if (int result = ReCreate(); result < 0) return result;
      CopyCellsToCpt(source);
      return 0;
    case KVN_TYPE_LIST:
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      break;
    default:
      return KVN_REFUSED;
  }
  if (int result = CopyOutcomeNames(outcomes, *source.GetOutcomesNames()); result < 0) {
    return result;
  }
  if (type == KVN_TYPE_LIST) DropAllParents();
  if (int result = ReCreate(); result < 0) return result;
  return type == KVN_TYPE_LIST ? 0 : TakeNumbers(source);
}

int KVN_ciDefinition::CheckParameters(const KVN_Dmatrix& matrix, char* message,
                                      int messageSize) const {
  if (!matrix.SameDimensions(parameters)) {
    return Tell(message, messageSize, "Inappropirate Dmatrix size", KVN_REFUSED);
  }
  if (matrix.GetSize() == 0) return Tell(message, messageSize, "Ok", 0);
  if (!IsMatrix()) return Tell(message, messageSize, "Inappropirate Dmatrix size", KVN_REFUSED);
  KVN_intArray unitColumns;
  if (int result = UnitColumns(unitColumns); result < 0) return result;
  const int n = ColumnCount();
  const double* cell = matrix.GetData();
  for (int row = 0; row < matrix.GetSizeOfDimension(0); row++) {
    double sum = 0.0;
    for (int column = 0; column < n; column++, cell++) {
      if (*cell < 0) {
        return Tell(message, messageSize, "Probability less than 0", KVN_LENGTH_MISMATCH);
      }
      if (unitColumns[row] >= 0 && *cell != (column == unitColumns[row] ? 1.0 : 0.0)) {
        return Tell(message, messageSize, "Constraints violeted", KVN_LENGTH_MISMATCH);
      }
      sum += *cell;
    }
    if (!IsRowSum(sum)) {
      return Tell(message, messageSize, "Probabilities don't sum up to 1", KVN_LENGTH_MISMATCH);
    }
  }
  return Tell(message, messageSize, "Ok", 0);
}
