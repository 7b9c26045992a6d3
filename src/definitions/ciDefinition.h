#pragma once

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/idArray.h"

/// Bits of KVN_ciDefinition::ciFlags.
constexpr int KVN_CI_CPT_CURRENT = 1;  // `cpt` belongs to the present parameters
constexpr int KVN_CI_KEEP_CPT = 2;     // every edit of the parameters rebuilds `cpt` at once

/// Base of the canonical gates: chance nodes whose table follows from a number of parameters that
/// grows linearly with the number of parents (causal independence). The parameters are what is
/// edited and stored; the full table is a cache, built when somebody asks for it.
///
/// `parameters` has two dimensions. Dimension 0 has one row for each outcome of each parent, in
/// blocks in parent order, and the leak row last; dimension 1 is the node's own outcomes. Parents
/// A(2) and B(3):
///
///     row     0   1   2   3   4   5
///             A   A   B   B   B   leak
///
/// In each block one row, that of the parent's distinguished outcome, is constrained to a fixed
/// unit row: in this outcome the parent doesn't act. `cpt` has the layout of KVN_cpt: parents, then
/// own outcomes.
///
/// No operation of the engine sets KVN_CI_KEEP_CPT, new gates have it clear, and it is honoured
/// and copied all the same (intended: it is for code that edits and reads in turn).
class KVN_ciDefinition : public KVN_nodeDefinition {
 public:
  using KVN_nodeDefinition::GetDefinition;
  using KVN_nodeDefinition::SetDefinition;

  KVN_ciDefinition(KVN_network* theNetwork, int theHandle)
      : KVN_nodeDefinition(theNetwork, theHandle) {}
  /// Builds the default gate for the node's parents.
  int Init();

  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  /// The names, the shape of the parameters and CheckParameters.
  int CheckConsistency(int deep) override;

  /// Cells of the table, which is built if need be; the code of a build that fails.
  int GetSize() override;
  int ConvertFrom(KVN_nodeDefinition& source) override { return Assign(source); }
  /// KVN_REFUSED for a source that has no table to offer: this is then empty.
  int Assign(KVN_nodeDefinition& source) override;
  int RemoveNonDiscreteParents() override { return DropNonDiscreteParents(); }

  int AddOutcome(const char* name) override;
  /// The new outcome has probability 0 in every row. It is meant that the constrained rows are not
  /// mended: after an outcome at the end their 1 no longer stands in the last column.
  int InsertOutcome(int position, const char* name) override;
  int RemoveOutcome(int position) override;
  int GetNumberOfOutcomes() const override { return outcomes.GetNumItems(); }
  int RenameOutcome(int position, const char* name) override;
  int RenameOutcomes(const KVN_stringArray& names) override;
  const KVN_idArray* GetOutcomesNames() const override { return &outcomes; }
  /// Unlike a table, a gate doesn't mend names: KVN_NOT_READY for illegal or repeated ones.
  int SetNumberOfOutcomes(const KVN_stringArray& names) override;
  int SetNumberOfOutcomes(int count) override;

  /// The table, built if need be; a failed build gives its code and null.
  int GetDefinition(KVN_doubleArray*& out) override;
  int GetDefinition(KVN_Dmatrix*& out) override;
  /// Replaces the parameters, not the table.
  int SetDefinition(const KVN_Dmatrix& source) override;
  /// Copies as many numbers as both sides have into the parameters, without notice of a difference.
  int SetDefinition(const KVN_doubleArray& source) override;
  /// Nothing happens for a target of another class.
  void CopyParametersTo(KVN_nodeDefinition& target) override;

  /// Computes the table from the parameters and marks it current. KVN_REFUSED when the parameters
  /// haven't the rows or columns that the parents and outcomes ask for, KVN_NO_MEMORY also for a
  /// table beyond 0x7fffffff cells: the old table then stays.
  virtual int BuildCpt() = 0;
  /// The reverse: computes the parameters from the table, as near as they come.
  virtual int FitParameters() = 0;
  /// The table, built first if it is stale. When that fails, what stands there: ask GetDefinition
  /// to be told.
  virtual KVN_Dmatrix* GetCpt();

  /// 0 if `matrix` could be the parameters; else KVN_REFUSED for its shape or KVN_LENGTH_MISMATCH
  /// for its numbers. The reason goes to `message`, cut to `messageSize` bytes. In an emptied gate
  /// the empty matrix has no fault, though such a gate isn't consistent.
  int CheckParameters(const KVN_Dmatrix& matrix, char* message, int messageSize) const;

  KVN_Dmatrix& GetParameters() { return parameters; }
  const KVN_Dmatrix& GetParameters() const { return parameters; }
  /// The next reader of the table rebuilds it. For those who write into GetParameters().
  void MarkCptStale() { ciFlags &= ~KVN_CI_CPT_CURRENT; }
  int GetCiFlags() const { return ciFlags; }
  void SetCiFlags(int bits) { ciFlags = bits; }

 protected:
  /// Shape of the parameters; 0 unless they have two dimensions.
  int RowCount() const { return IsMatrix() ? parameters.GetSizeOfDimension(0) : 0; }
  int ColumnCount() const { return IsMatrix() ? parameters.GetSizeOfDimension(1) : 0; }
  /// First cell of a row, unchecked; of RowCount(): the end.
  double* Row(int row) { return parameters.GetData() + row * ColumnCount(); }
  const double* Row(int row) const { return parameters.GetData() + row * ColumnCount(); }
  /// Makes the row 0 but for a 1 in `column`. A row or column outside is KVN_REFUSED.
  int SetUnitRow(int row, int column);
  /// Opens `count` rows of 0.0 in front of row `at`, or closes them. KVN_REFUSED outside, or when
  /// no row would be left; a failure leaves the parameters unchanged.
  int InsertRows(int at, int count);
  int RemoveRows(int at, int count);

  /// To be called after each change of the parameters: marks the table stale, and rebuilds it if
  /// it is to be kept.
  int ParametersChanged();
  /// Ends the edits of a parent that go well: ParametersChanged and the state of readiness.
  int Edited();
  /// Builds the table unless it is current. A cleared table never counts as current.
  int UpdateCpt();

  /// No table, and as parameters the leak row alone, all 0.0.
  int StartParameters();
  /// The class's own part of Assign: `source` is a chance definition whose names were taken over,
  /// and the default numbers stand.
  virtual int TakeNumbers(KVN_nodeDefinition& source) = 0;
  /// For each row of `parameters` the column where a constrained row has its 1, or -1 for a free
  /// row. Not asked while there are no rows.
  virtual int UnitColumns(KVN_intArray& columns) const = 0;

  bool IsMatrix() const { return parameters.GetNumberOfDimensions() == 2; }

  KVN_idArray outcomes;  // the outcome count is taken from here
  KVN_Dmatrix cpt;
  KVN_Dmatrix parameters;
  int ciFlags = 0;

 private:
  int TakeContent(KVN_nodeDefinition& source);
  /// Copies the cells of another definition's table into `cpt` if their numbers agree.
  void CopyCellsToCpt(KVN_nodeDefinition& source);
};
