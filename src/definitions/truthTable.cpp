#include "definitions/truthTable.h"

#include <algorithm>

#include "foundation/resultCodes.h"
#include "network/network.h"

int KVN_truthTable::CheckConsistency(int deep) {
  for (int i = 0; i < table.GetSize(); i++) {
    if (table[i] == 0.0 || table[i] == 1.0) continue;
    SetConsistent(false);
    return KVN_NOT_CONSISTENT;
  }
  return KVN_cpt::CheckConsistency(deep);
}

int KVN_truthTable::ReCreate() {
  if (int result = KVN_cpt::ReCreate(); result < 0) return result;
  table.FillWith(0.0);
  // By cells, not by rows: where memory was short for a parent, the last dimension needn't be the
  // outcomes.
  for (int cell = 0; cell < table.GetSize(); cell += numberOfOutcomes) table[cell] = 1.0;
  return KVN_SUCCESS;
}

// The numbers are rounded before the network hears of them: an automatic update must not see the
// source's.
int KVN_truthTable::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return KVN_SUCCESS;
  if (int result = Convert(source); result < 0) return result;
  (void)CheckReadiness(/*deep=*/1);
  (void)MakeDeterministic();
  NumbersReplaced(KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

int KVN_truthTable::SetResultingStates(const KVN_intArray& states) {
  const int rows = GetNumberOfRows();
  if (states.GetNumItems() != rows && states.GetSize() != rows) return KVN_LENGTH_MISMATCH;
  const int rowSize = rows == 0 ? 0 : table.GetSize() / rows;
  const int limit = std::min(numberOfOutcomes, rowSize);
  for (int row = 0; row < rows; row++) {
    if (states[row] < 0 || states[row] >= limit) return KVN_REFUSED;
  }
  table.FillWith(0.0);
  for (int row = 0; row < rows; row++) table[row * rowSize + states[row]] = 1.0;
  NumbersReplaced(KVN_CHANGE_NUMBERS);
  return KVN_SUCCESS;
}

int KVN_truthTable::SetResultingStates(const KVN_stringArray& names) {
  const int rows = GetNumberOfRows();
  if (UsedCount(names) != rows) return KVN_LENGTH_MISMATCH;
  KVN_intArray states;
  for (int row = 0; row < rows; row++) {
    const int result = states.Add(std::max(0, outcomes.FindPosition(names[row])));
    if (result < 0) return result;
  }
  return SetResultingStates(states);
}

int KVN_truthTable::GetResultingStates(KVN_stringArray& out) const {
  if (!out.IsReady()) return KVN_NOT_READY;
  const int rows = GetNumberOfRows();
  const int rowSize = rows == 0 ? 0 : table.GetSize() / rows;
  for (int row = 0; row < rows; row++) {
    const double* const first = table.GetData() + row * rowSize;
    const double* const winner = std::find(first, first + rowSize, 1.0);
    const int state = winner == first + rowSize ? 0 : static_cast<int>(winner - first);
    // The base class's Insert: an identifier list would refuse the repeats.
    const int result = out.KVN_stringArray::Insert(out.GetNumItems(), outcomes.GetString(state));
    if (result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_truthTable::MakeDeterministic() {
  if (!IsReady()) return KVN_NOT_READY;
  const int rows = GetNumberOfRows();
  const int rowSize = rows == 0 ? 0 : table.GetSize() / rows;
  for (int row = 0; row < rows; row++) {
    double* const cells = table.GetData() + row * rowSize;
    double best = 0.0;
    int winner = 0;
    for (int i = 0; i < rowSize; i++) {
      const double x = cells[i];
      if (best <= x) {
        cells[winner] = 0.0;
        winner = i;
        best = x;
        cells[i] = 1.0;
      } else {
        cells[i] = 0.0;
      }
    }
  }
  return KVN_SUCCESS;
}
