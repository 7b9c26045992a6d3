#include "definitions/mauExpressionTable.h"

#include <algorithm>

#include "expressions/expression.h"
#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"

KVN_mauExpressionTable::KVN_mauExpressionTable() = default;
KVN_mauExpressionTable::~KVN_mauExpressionTable() = default;

int KVN_mauExpressionTable::Setup(const KVN_intArray& sizes) {
  KVN_Dmatrix shape;
  if (UsedCount(sizes) == 0) return KVN_REFUSED;
  if (int result = shape.Setup(sizes); result < 0) return result;
  items.clear();
  items.resize(static_cast<std::size_t>(shape.GetSize()));
  dimensions.Swap(shape.GetDimensions());
  multipliers.Swap(shape.GetMultipliers());
  return KVN_SUCCESS;
}

int KVN_mauExpressionTable::Assign(const KVN_mauExpressionTable& source) {
  KVN_Dmatrix cells;
  if (int result = source.ListCells(cells); result < 0) return result;
  KVN_mauExpressionTable made;
  made.items.resize(source.items.size());
  for (std::size_t i = 0; i < source.items.size(); i++) {
    if (source.items[i] == nullptr) continue;
    made.items[i].reset(source.items[i]->Clone());
    if (made.items[i] == nullptr) return KVN_NO_MEMORY;
  }
  items.swap(made.items);
  dimensions.Swap(cells.GetDimensions());
  multipliers.Swap(cells.GetMultipliers());
  return KVN_SUCCESS;
}

bool KVN_mauExpressionTable::HasShape(const KVN_intArray& sizes) const {
  return std::equal(dimensions.begin(), dimensions.end(), sizes.GetItems(),
                    sizes.GetItems() + UsedCount(sizes));
}

KVN_expression* KVN_mauExpressionTable::GetItem(int cell) const {
  return cell >= 0 && cell < GetSize() ? items[static_cast<std::size_t>(cell)].get() : nullptr;
}

void KVN_mauExpressionTable::SetItem(int cell, KVN_expression* expression) {
  std::unique_ptr<KVN_expression> taken(expression);
  if (cell >= 0 && cell < GetSize()) items[static_cast<std::size_t>(cell)].swap(taken);
}

int KVN_mauExpressionTable::ListCells(KVN_Dmatrix& cells) const {
  if (int result = cells.Setup(dimensions); result < 0) return result;
  for (int i = 0; i < cells.GetSize(); i++) cells[i] = i;
  return KVN_SUCCESS;
}

int KVN_mauExpressionTable::TakeCells(const KVN_Dmatrix& cells) {
  KVN_mauExpressionTable made;
  if (int result = made.Setup(cells.GetDimensions()); result < 0) return result;
  for (int i = 0; i < cells.GetSize(); i++) {
    const KVN_expression* source = GetItem(static_cast<int>(cells[i]));
    if (source == nullptr) continue;
    made.SetItem(i, source->Clone());
    if (made.GetItem(i) == nullptr) return KVN_NO_MEMORY;
  }
  items.swap(made.items);
  dimensions.Swap(made.dimensions);
  multipliers.Swap(made.multipliers);
  return KVN_SUCCESS;
}
