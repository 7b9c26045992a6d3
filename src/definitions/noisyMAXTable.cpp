// The numbers of the noisy-MAX gate: its table, its inclusive parameters and their validity.

#include <algorithm>
#include <cstddef>

#include "definitions/noisyMAX.h"
#include "foundation/resultCodes.h"

void KVN_noisyMAX::Cumulate(KVN_Dmatrix& matrix) {
  if (matrix.GetSize() == 0) return;
  const int n = matrix.GetSizeOfDimension(matrix.GetNumberOfDimensions() - 1);
  double* const end = matrix.GetData() + matrix.GetSize();
  for (double* row = matrix.GetData(); row != end; row += n) {
    for (int j = n - 1; j > 0; j--) {
      row[j - 1] += row[j];
      if (row[j - 1] < 0) row[j - 1] = 0;
    }
  }
}

void KVN_noisyMAX::Decumulate(KVN_Dmatrix& matrix) {
  if (matrix.GetSize() == 0) return;
  const int n = matrix.GetSizeOfDimension(matrix.GetNumberOfDimensions() - 1);
  double* const end = matrix.GetData() + matrix.GetSize();
  for (double* row = matrix.GetData(); row != end; row += n) {
    for (int j = 0; j < n - 1; j++) {
      row[j] -= row[j + 1];
      if (row[j] < 0) row[j] = 0;
    }
  }
}

void KVN_noisyMAX::Expand(double* cells, int rows, int n, const double* factors, const int* rowOf,
                          int count) {
  // From the back, so that a row is read before the wider rows reach it. Row 0 is its own first
  // product and therefore comes last.
  for (std::ptrdiff_t row = rows - 1; row >= 0; row--) {
    const double* source = cells + row * n;
    for (int k = count - 1; k >= 0; k--) {
      const double* factor = factors + static_cast<std::ptrdiff_t>(rowOf[k]) * n;
      double* product = cells + (row * count + k) * n;
      for (int y = 0; y < n; y++) product[y] = source[y] * factor[y];
    }
  }
}

int KVN_noisyMAX::CptSizes(KVN_intArray& sizes) const {
  if (int result = sizes.SetSize(BlockCount() + 1); result < 0) return result;
  for (int i = 0; i < BlockCount(); i++) sizes[i] = BlockSize(i);
  sizes[BlockCount()] = ColumnCount();
  return 0;
}

int KVN_noisyMAX::RowsByOutcome(KVN_intArray& rows) const {
  if (BlockRows() > RowCount() || RowCount() == 0) return KVN_REFUSED;
  if (int result = rows.SetSize(BlockRows()); result < 0) return result;
  int start = 0;
  for (const KVN_intArray& order : strengths) {
    for (int place = 0; place < order.GetSize(); place++) {
      rows[start + order[place]] = start + place;
    }
    start += order.GetSize();
  }
  return 0;
}

/// The products are formed parent by parent over ever longer tables, which multiplies each cell in
/// the same order as a loop over its parents would, at about two multiplications a cell instead of
/// one for each parent. Every parent's dimension is laid out in its own order of outcomes at once.
int KVN_noisyMAX::BuildCpt() {
  KVN_intArray sizes;
  KVN_intArray rowOf;
  if (int result = RowsByOutcome(rowOf); result < 0) return result;
  if (int result = CptSizes(sizes); result < 0) return result;
  if (int result = cpt.Setup(sizes); result < 0) return result;
  Cumulate(parameters);
  const int n = ColumnCount();
  std::copy_n(Row(RowCount() - 1), n, cpt.GetData());
  int rows = 1;
  int start = 0;
  for (int i = 0; i < BlockCount(); i++) {
    Expand(cpt.GetData(), rows, n, parameters.GetData(), rowOf.GetItems() + start, BlockSize(i));
    rows *= BlockSize(i);
    start += BlockSize(i);
  }
  Decumulate(parameters);
  Decumulate(cpt);
  ciFlags |= KVN_CI_CPT_CURRENT;
  return 0;
}

int KVN_noisyMAX::GetInclusiveParameters(KVN_Dmatrix& out) const {
  KVN_intArray columns;
  if (int result = UnitColumns(columns); result < 0) return result;
  if (int result = out.Assign(parameters); result < 0) return result;
  Cumulate(out);
  const int n = ColumnCount();
  const double* leak = out.GetData() + (RowCount() - 1) * n;
  double* cell = out.GetData();
  for (int row = 0; row < RowCount() - 1; row++) {
    for (int j = 0; j < n; j++, cell++) {
      if (columns[row] < 0) *cell *= leak[j];
    }
  }
  Decumulate(out);
  return 0;
}

int KVN_noisyMAX::SetInclusiveParameters(const KVN_Dmatrix& source) {
  KVN_intArray columns;
  if (!source.SameDimensions(parameters)) return KVN_REFUSED;
  if (int result = UnitColumns(columns); result < 0) return result;
  const int n = ColumnCount();
  for (int cell = 0; cell < source.GetSize(); cell++) {
    const int unit = columns[cell / n];
    if (unit >= 0 && source[cell] != (cell % n == unit ? 1.0 : 0.0)) return KVN_REFUSED;
  }
  KVN_Dmatrix made;
  if (int result = made.Assign(source); result < 0) return result;
  Cumulate(made);
  const double* leak = made.GetData() + (RowCount() - 1) * n;
  double* cell = made.GetData();
  for (int row = 0; row < RowCount() - 1; row++) {
    for (int j = 0; j < n; j++, cell++) {
      if (columns[row] < 0) *cell /= leak[j];
    }
  }
  Decumulate(made);
  parameters.Swap(made);
  // The mark of the table stays unless the table is kept: see the header.
  return (ciFlags & KVN_CI_KEEP_CPT) != 0 ? BuildCpt() : 0;
}

int KVN_noisyMAX::GetParameterList(KVN_doubleArray& out) const {
  out.Flush();
  KVN_intArray columns;
  KVN_Dmatrix inclusive;
  if (int result = UnitColumns(columns); result < 0) return result;
  if (int result = GetInclusiveParameters(inclusive); result < 0) return result;
  for (int cell = 0; cell < inclusive.GetSize(); cell++) {
    if (columns[cell / ColumnCount()] >= 0) continue;
    if (int result = out.Add(inclusive[cell]); result < 0) return result;
  }
  return 0;
}

int KVN_noisyMAX::SetParameterList(const KVN_doubleArray& values) {
  KVN_intArray columns;
  KVN_Dmatrix inclusive;
  if (int result = UnitColumns(columns); result < 0) return result;
  if (int result = GetInclusiveParameters(inclusive); result < 0) return result;
  const auto freeRows = std::count(columns.GetItems(), columns.GetItems() + RowCount(), -1);
  if (UsedCount(values) != freeRows * ColumnCount()) return KVN_REFUSED;
  const double* value = values.GetItems();
  for (int cell = 0; cell < inclusive.GetSize(); cell++) {
    if (columns[cell / ColumnCount()] < 0) inclusive[cell] = *value++;
  }
  return SetInclusiveParameters(inclusive);
}

bool KVN_noisyMAX::IsConstrained(const KVN_Dmatrix& matrix, int cell) const {
  const int n = GetNumberOfOutcomes();
  const auto isInRowBefore = [=](int end) { return cell >= end - n && cell < end; };
  // A block ends where the next one starts; the last one where the leak row starts.
  for (int i = 0; i < BlockCount(); i++) {
    if (isInRowBefore(BlockStart(i) * n)) return true;
  }
  return isInRowBefore(matrix.GetSize() - n);
}

/// The same rows as IsConstrained, found in one pass: for each row of `parameters` the last column
/// if the row is constrained, else -1.
int KVN_noisyMAX::UnitColumns(KVN_intArray& columns) const {
  if (RowCount() == 0) return KVN_REFUSED;
  if (int result = columns.SetSize(RowCount()); result < 0) return result;
  columns.FillWith(-1);
  int end = 0;
  for (int i = 0; i + 1 < BlockCount(); i++) {
    end += BlockSize(i);
    if (end <= RowCount()) columns[end - 1] = ColumnCount() - 1;
  }
  if (RowCount() >= 2) columns[RowCount() - 2] = ColumnCount() - 1;
  return 0;
}
