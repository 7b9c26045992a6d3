#pragma once

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"

/// What the canonical gates over binary nodes share (KVN_demorgan and KVN_cast): a few numbers per
/// parent and one base probability, from which a full table is derived after each change, so that
/// everybody reads the gate as if it were a conditional probability table.
///
/// The outcomes are always "True" and "False", in this order, so that coordinate 0 of a parent is
/// its "True". Parents are gates of the same class, hence binary as well.
///
/// Layout of `table`: one dimension of size 2 for each parent, in parent list order, then the own
/// one. Cells 2k and 2k + 1 are one row: "True", then "False". It is a pure function of the numbers
/// and the parent list, O(2^n n) for n parents to compute: these gates are small.
///
/// The numbers are written through the setters of the derived classes alone. It is meant that these
/// run no readiness or consistency check and notify nobody: readers of files call them once per
/// node when the arcs stand. Outcomes can't be edited: those slots answer KVN_NOT_APPLICABLE.
class KVN_binaryGate : public KVN_nodeDefinition {
 public:
  using KVN_nodeDefinition::GetDefinition;

  /// Only fields are set; Init must follow.
  KVN_binaryGate(KVN_network* network, int handle) : KVN_nodeDefinition(network, handle) {}

  /// ReCreate for a new definition. Its refusal isn't one of the definition, which is there with no
  /// parent dimensions; only KVN_NO_MEMORY is passed on.
  [[nodiscard]] int Init();

  /// KVN_NOT_APPLICABLE unless the parent is a gate of the same class; KVN_NO_MEMORY for a table
  /// beyond the limit: unchanged. The defaults of a parent that is added leave it without effect.
  [[nodiscard]] int AddParent(int parent) override;
  int RemoveParent(int parent) override;

  int GetSize() override { return table.GetSize(); }
  int ConvertFrom(KVN_nodeDefinition& source) override { return Assign(source); }
  int GetNumberOfOutcomes() const override { return 2; }
  const KVN_idArray* GetOutcomesNames() const override;
  int GetDefinition(KVN_doubleArray*& out) override;
  int GetDefinition(KVN_Dmatrix*& out) override;

 protected:
  static constexpr double kDefaultBase = 0.5;

  /// Number of parents that there are numbers for.
  virtual int CountOfNumbers() const = 0;
  /// The numbers of a new parent at a position, without effect on any row. Unchanged on failure.
  virtual int InsertNumbers(int position) = 0;
  virtual int DeleteNumbers(int position) = 0;
  /// Probability of "True". Parent i of the first `parentCount` has the coordinate
  /// `coordinates[i]`.
  virtual double RowProbability(const int* coordinates, int parentCount) const = 0;

  /// Shapes the table for CountOfNumbers parents; the cells are 0.0. Unchanged on failure.
  [[nodiscard]] int RebuildTable();
  /// Fills the table. Parents without numbers or dimension take no part.
  void ComputeTable();

  /// Copies `values` over a field; KVN_REFUSED, unchanged, unless there are as many.
  template <typename Array>
  static int ReplaceNumbers(Array& field, const Array& values) {
    if (UsedCount(values) != field.GetNumItems()) return KVN_REFUSED;
    for (int i = 0; i < field.GetNumItems(); i++) field[i] = values[i];
    return KVN_SUCCESS;
  }

  KVN_Dmatrix table;
};
