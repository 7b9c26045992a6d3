#pragma once

#include <memory>
#include <vector>

#include "foundation/intArray.h"

class KVN_Dmatrix;
class KVN_expression;

/// Formulas of a multi-attribute utility: one for each combination of alternatives of its decision
/// parents, in the layout of a KVN_Dmatrix with a dimension for each decision. Without decisions
/// the shape is [1].
///
/// Cells are owned. A failure leaves the table as it was.
class KVN_mauExpressionTable {
 public:
  KVN_mauExpressionTable();
  KVN_mauExpressionTable(const KVN_mauExpressionTable&) = delete;
  KVN_mauExpressionTable& operator=(const KVN_mauExpressionTable&) = delete;
  ~KVN_mauExpressionTable();

  /// Takes a shape; every cell is null until it is set. KVN_REFUSED for a size below 1,
  /// KVN_NO_MEMORY.
  [[nodiscard]] int Setup(const KVN_intArray& sizes);
  /// Clones every expression.
  [[nodiscard]] int Assign(const KVN_mauExpressionTable& source);

  int GetSize() const { return static_cast<int>(items.size()); }
  const KVN_intArray& GetDimensions() const { return dimensions; }
  const KVN_intArray& GetMultipliers() const { return multipliers; }
  bool HasShape(const KVN_intArray& sizes) const;
  /// Null outside, and for a cell that wasn't set.
  KVN_expression* GetItem(int cell) const;
  /// Takes the expression over; a cell outside deletes it.
  void SetItem(int cell, KVN_expression* expression);

  /// All edits of shapes are those of a table of doubles: this gives one of the same shape whose
  /// cells hold their own indices, and TakeCells fetches for each cell of the edited table a clone
  /// of the expression that its number names. A cell that is new, and so 0.0, gets the first one.
  [[nodiscard]] int ListCells(KVN_Dmatrix& cells) const;
  [[nodiscard]] int TakeCells(const KVN_Dmatrix& cells);

 private:
  std::vector<std::unique_ptr<KVN_expression>> items;
  KVN_intArray dimensions;
  KVN_intArray multipliers;
};
