#include "values/utilityScale.h"

#include <algorithm>

#include "foundation/dmatrix.h"
#include "foundation/numberText.h"

UtilityRange RangeOfCells(const KVN_Dmatrix& table) {
  if (table.GetSize() == 0) return {0.0, 0.0};
  UtilityRange range{table[0], table[0]};
  for (int i = 1; i < table.GetSize(); i++) {
    if (table[i] < range.low) range.low = table[i];
    if (range.high < table[i]) range.high = table[i];
  }
  return range;
}

bool RescaleCells(KVN_Dmatrix& table, UtilityRange from, UtilityRange to) {
  const UtilityRange cells = RangeOfCells(table);
  if (from.low == from.high) from = cells;
  const double low = std::min(cells.low, from.low);
  const double high = std::max(cells.high, from.high);
  if (low == high || to.low == to.high) {
    table.FillWith(to.high);
    return true;
  }
  if (low == to.low && high == to.high) return false;
  for (int i = 0; i < table.GetSize(); i++) {
    if (table[i] == KVN_UNDEFINED_VALUE) continue;
    table[i] = (table[i] - low) * (to.high - to.low) / (high - low) + to.low;
  }
  return true;
}
