#pragma once

#include "definitions/nodeDefinition.h"

/// Conditional probability table of a chance node: the reference among the definitions, whose
/// conventions all other tables follow.
///
/// Layout of `table`: the parents in the order of the network's list, then the own outcomes, which
/// vary fastest. One *row* (a run of `numberOfOutcomes` cells) is a distribution; the rows run
/// through the parent configurations with the last parent fastest. Without parents: a single row.
///
/// Invariants of a ready object: the count, the number of names and the size of the last dimension
/// agree. There are at least two outcomes, except in a definition that was emptied by a refused
/// call (SetNumberOfOutcomes, Assign), which has none.
///
/// Rows may be any numbers; IsConsistent tells whether each is a distribution.
class KVN_cpt : public KVN_nodeDefinition {
 public:
  using KVN_nodeDefinition::GetDefinition;
  using KVN_nodeDefinition::SetDefinition;

  /// Sets fields only; Init must follow unless the object is about to be assigned to.
  KVN_cpt(KVN_network* network, int handle);
  ~KVN_cpt() override = default;
  /// Builds the default table for the node's parents: State0 and State1, uniform rows.
  int Init();

  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  /// Every cell at least 0 and every row sum inside the bounds of KVN_ROW_SUM_LOW and _HIGH.
  int CheckConsistency(int deep) override;
  int GetType() const override { return KVN_TYPE_CPT; }
  const char* GetTypeName() const override { return "CPT"; }

  int AddParent(int parent) override;
  int RemoveParent(int parent) override;
  int AbsorbParentEvidence(int parent) override;
  int MarginalizeParent(int parent) override;
  /// The rows for a new outcome of a parent are uniform.
  int ParentOutcomeInserted(int parent, int position) override;
  int ParentOutcomeRemoved(int parent, int position) override;
  int ParentOutcomesReordered(int parent, const KVN_intArray& order) override;
  int ReorderParents(const KVN_intArray& order) override;

  int GetSize() override { return table.GetSize(); }
  int ConvertFrom(KVN_nodeDefinition& source) override { return Assign(source); }
  /// Keeps the names, fills them up to two, and makes every row uniform.
  int ReCreate() override;
  /// KVN_REFUSED for a source that has no table to offer: this is then empty.
  int Assign(KVN_nodeDefinition& source) override;
  int RemoveNonDiscreteParents() override { return DropNonDiscreteParents(); }

  /// The new outcome gets probability 0 in every row. A refused name (illegal, or a repeat) is
  /// replaced by one made of "State" and the count, so a name never fails the call.
  /// KVN_NO_MEMORY for a table that would be too large: unchanged.
  int AddOutcome(const char* name) override;
  int InsertOutcome(int position, const char* name) override;
  /// KVN_REFUSED when fewer than 3 outcomes are there. It is meant that the rows are not scaled to
  /// 1 again, so the next CheckConsistency may fail.
  int RemoveOutcome(int position) override;
  int GetNumberOfOutcomes() const override { return numberOfOutcomes; }
  int RenameOutcome(int position, const char* name) override;
  int RenameOutcomes(const KVN_stringArray& names) override;
  const KVN_idArray* GetOutcomesNames() const override { return &outcomes; }
  /// Names that are no identifiers, or repeat, are mended. KVN_HAS_CHILDREN: unchanged.
  int SetNumberOfOutcomes(const KVN_stringArray& names) override;
  /// It is meant that a count below 1 is refused only after the definition was emptied.
  int SetNumberOfOutcomes(int count) override;
  int ChangeOrderOfOutcomes(const KVN_intArray& order) override;

  int GetDefinition(KVN_doubleArray*& out) override;
  int GetDefinition(KVN_Dmatrix*& out) override;
  /// Takes dimensions and cells as they are.
  int SetDefinition(const KVN_Dmatrix& source) override;
  /// Copies as many cells as both have, without notice: the status and the beliefs stay.
  int SetDefinition(const KVN_doubleArray& source) override;
  void CopyParametersTo(KVN_nodeDefinition& target) override;

  /// One number per cell, in cell order; KVN_REFUSED for another count: unchanged. Rows are stored
  /// as given, whatever their sum.
  [[nodiscard]] int SetProbabilities(const KVN_doubleArray& values);

 protected:
  /// Number of rows; 0 for a table without cells.
  int GetNumberOfRows() const;
  /// Takes over what `source`, another ready object, has to offer; the numbers then stand, but
  /// neither the status nor the network knows of them.
  int Convert(KVN_nodeDefinition& source);
  /// After a whole set of numbers was stored.
  void NumbersReplaced(int changeCode);
  /// A parent outcome came in: what the rows that hold only zeros become.
  virtual void CompleteRows();

  int numberOfOutcomes = 0;
  KVN_idArray outcomes;
  KVN_Dmatrix table;

 private:
  int LastDimension() const { return table.GetNumberOfDimensions() - 1; }
  int FinishParentEdit(int result);
  int RebuildForNewOutcomes();
  int TakeUtilities(const KVN_Dmatrix& utilities);
  int TakeNames(const KVN_nodeDefinition& source);
  int TakeTable(KVN_nodeDefinition& source);
  int TakeBinaryGate();
};
