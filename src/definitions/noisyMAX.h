#pragma once

#include <vector>

#include "definitions/ciDefinition.h"

/// Noisy-MAX gate: the outcome is the highest that any cause or the leak produces, independently of
/// the others. Outcomes are ordered from the highest (index 0) to the lowest, and the last one is
/// the distinguished one: nothing has acted.
///
/// A row of `parameters` is the distribution of the outcome given that this parent is in this
/// outcome and all other causes are absent, not counting the leak; the leak row is the distribution
/// with every parent distinguished. With cumulative values, P(y or lower), independent causes
/// multiply, which is how the table is built.
/// (M. Henrion, "Some practical issues in constructing belief networks", 1989; F. J. Diez,
/// "Parameter adjustment in Bayes networks: the generalized noisy OR-gate", 1993.)
///
/// The rows of a parent's block stand in order of strength: `strengths[i]` is a permutation of the
/// outcomes of parent i, and row k of its block belongs to outcome `strengths[i][k]`. The last row
/// is the distinguished outcome's and must read 0, ..., 0, 1.
///
/// Invariants: one entry of `strengths` per block, each at exact size, so that the number of rows
/// is the sum of the sizes and 1.
class KVN_noisyMAX : public KVN_ciDefinition {
 public:
  using KVN_ciDefinition::GetDefinition;
  using KVN_ciDefinition::SetDefinition;

  /// Sets fields only; Init must follow.
  KVN_noisyMAX(KVN_network* theNetwork, int theHandle) : KVN_ciDefinition(theNetwork, theHandle) {}

  int GetType() const override { return KVN_TYPE_NOISY_MAX; }
  const char* GetTypeName() const override { return "NOISY_MAX"; }

  void CleanUp(int deep) override;

  /// The new block comes at the parent's position; its rows are uniform but for the last. It is
  /// meant that the entry of `strengths` goes to the end of the list whatever the position is.
  int AddParent(int parent) override;
  int RemoveParent(int parent) override;
  /// Both fold the parent into the leak row.
  int AbsorbParentEvidence(int parent) override;
  int MarginalizeParent(int parent) override;
  /// The new outcome doesn't act at first: its row comes directly before the distinguished one, and
  /// reads like it.
  int ParentOutcomeInserted(int parent, int position) override;
  /// It is meant that the last row of the block becomes the constrained one whatever it held: the
  /// removed outcome may have been the distinguished one.
  int ParentOutcomeRemoved(int parent, int position) override;
  int ParentOutcomesReordered(int parent, const KVN_intArray& order) override;
  /// It is meant that a table that was built before still counts as current.
  int ReorderParents(const KVN_intArray& order) override;

  int ReCreate() override;
  int ChangeOrderOfOutcomes(const KVN_intArray& order) override;

  /// The product of cumulative rows, leak first and then the parents in order. Works in place on
  /// the parameters, which may change in their last bits; NaN passes through.
  int BuildCpt() override;
  /// Coordinate search for the parameters whose table has the least squared distance to `cpt`. The
  /// step begins at 1/n, n the number of outcomes, and is halved when no cell can be moved to
  /// advantage; ends at a step of 0.0001 or after 100,000 moves. Each trial costs a table, so this
  /// is for conversions. KVN_REFUSED, parameters unchanged, for a `cpt` of another shape.
  int FitParameters() override;

  /// First row of a parent's block. KVN_REFUSED for an index outside the parent list.
  int RowOffset(int parentIndex) const;
  /// Null for an index outside the list.
  const KVN_intArray* GetStrengths(int parentIndex) const;
  /// Gives the rows of a block new outcomes; no row moves. The file readers load strengths and
  /// parameters as a matching pair. KVN_REFUSED unless `order` is a permutation of the outcomes.
  int SetParentOutcomeStrengths(int parentIndex, const KVN_intArray& order);
  /// Moves rows and strengths together: place k receives what stood at place order[k]. The row that
  /// ends up last becomes the constrained one.
  int ApplyParentOutcomeStrengths(int parentIndex, const KVN_intArray& order);

  /// Parameters with the leak folded into every row that isn't constrained: what an expert states
  /// who can't think the leak away.
  int GetInclusiveParameters(KVN_Dmatrix& out) const;
  /// The reverse. KVN_REFUSED, unchanged, for another shape or a constrained row that doesn't read
  /// 0, ..., 0, 1. A leak value of 0 makes NaN. It is meant that a table that was built before
  /// still counts as current: call MarkCptStale first.
  int SetInclusiveParameters(const KVN_Dmatrix& source);
  /// Inclusive values of the rows that aren't constrained, in row order, the leak last.
  int GetParameterList(KVN_doubleArray& out) const;
  /// KVN_REFUSED, unchanged, for another number of values.
  int SetParameterList(const KVN_doubleArray& values);
  /// The name that the text format's statement has for it.
  int SetLegacyProbabilities(const KVN_doubleArray& values) { return SetParameterList(values); }

  /// Whether a flat index of a parameter matrix lies in a constrained row. A gate without parents
  /// has none.
  bool IsConstrained(const KVN_Dmatrix& matrix, int cell) const;

 protected:
  /// Another chance table is converted by FitParameters. It is meant that a table is not taken over
  /// from another gate, while the mark that it is current is.
  int TakeNumbers(KVN_nodeDefinition& source) override;
  int UnitColumns(KVN_intArray& columns) const override;

 private:
  class Search;  // of FitParameters

  /// Row-wise P(outcome j or a later one), and back; a result below 0 becomes 0.
  static void Cumulate(KVN_Dmatrix& matrix);
  static void Decumulate(KVN_Dmatrix& matrix);
  /// Multiplies each of `rows` rows of n cells by `count` factors, the rows `rowOf[0..count-1]` of
  /// `factors`, in place: row r becomes the rows r * count to r * count + count - 1.
  static void Expand(double* cells, int rows, int n, const double* factors, const int* rowOf,
                     int count);

  int BlockCount() const { return static_cast<int>(strengths.size()); }
  /// Index of the parent's block, or a negative code.
  int BlockOf(int parent) const;
  int BlockSize(int block) const { return strengths[block].GetSize(); }
  /// First row of a block; of BlockCount(): the leak row.
  int BlockStart(int block) const;
  int BlockRows() const { return BlockStart(BlockCount()); }
  int SetConstrainedRow(int row) { return SetUnitRow(row, outcomes.GetNumItems() - 1); }
  /// For each outcome of each parent, in the parents' own order of outcomes, its row.
  int RowsByOutcome(KVN_intArray& rows) const;
  int CptSizes(KVN_intArray& sizes) const;
  /// Removes a block; the leak row is taken from `folded`.
  int DropBlock(int block, const KVN_Dmatrix& folded);
  int TakeTable(KVN_nodeDefinition& source);
  int TakeGate(KVN_noisyMAX& source);
  int SeedFromCpt();

  std::vector<KVN_intArray> strengths;
};
