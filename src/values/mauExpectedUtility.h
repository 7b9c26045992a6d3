#pragma once

#include <vector>

#include "values/expectedUtility.h"

class KVN_mau;

/// Value of a multi-attribute utility node: as that of a utility node, but computed from the values
/// of the node's parents instead of by inference.
class KVN_mauExpectedUtility : public KVN_expectedUtility {
 public:
  /// Without a shape until ReCreate; NewValue does both.
  KVN_mauExpectedUtility(KVN_network* owningNetwork, int nodeHandle)
      : KVN_expectedUtility(owningNetwork, nodeHandle) {}

  int GetType() const override { return KVN_VALUE_MAU_EXPECTED_UTILITY; }

  /// Fills the matrix from the values of the parents, which must be computed already; this value
  /// must be indexed by all that any of them is indexed by. A cell is undefined when an input is,
  /// or when a decision parent is neither indexing nor chosen. KVN_REFUSED, with all cells
  /// undefined, when the node's numbers or a parent's value haven't the shape for that.
  [[nodiscard]] int ComputeFromParents();

 private:
  /// A parent's matrix, and for each dimension of this one its stride there, 0 for none.
  struct Input {
    const KVN_Dmatrix* cells;
    std::vector<int> strides;
  };
  /// A decision parent: its dimension in this matrix, or where that is negative, its choice.
  struct Selector {
    int dimension;
    int choice;
  };

  int Prepare();
  int PrepareInput(int parent);
  /// The row of the definition for the coordinates, KVN_REFUSED where it isn't known.
  int SelectRow(const KVN_intArray& coordinates, const KVN_intArray& multipliers) const;
  double CombineInputs(const std::vector<double>& numbers, int row) const;

  KVN_mau* definition = nullptr;  // not owned; during a computation only
  std::vector<Input> inputs;      // the same
  std::vector<Selector> selectors;
};
