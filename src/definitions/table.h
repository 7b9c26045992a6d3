#pragma once

#include "definitions/nodeDefinition.h"

/// Utility node: one number for each parent configuration.
///
/// Layout of `table`: the parents in the order of the network's list, and a last dimension of size
/// 1 in place of outcomes, which a utility doesn't have. Without parents: a single cell.
class KVN_table : public KVN_nodeDefinition {
 public:
  using KVN_nodeDefinition::GetDefinition;
  using KVN_nodeDefinition::SetDefinition;

  /// Sets fields only; Init must follow unless the object is about to be assigned to.
  KVN_table(KVN_network* network, int handle) : KVN_nodeDefinition(network, handle) {}
  ~KVN_table() override = default;
  /// All utilities 0.0.
  int Init();

  void CleanUp(int deep) override;
  int GetType() const override { return KVN_TYPE_TABLE; }
  const char* GetTypeName() const override { return "TABLE"; }

  int AddParent(int parent) override;
  int RemoveParent(int parent) override;
  int AbsorbParentEvidence(int parent) override;
  int MarginalizeParent(int parent) override;
  /// The utilities for a new outcome of a parent are 0.0.
  int ParentOutcomeInserted(int parent, int position) override;
  int ParentOutcomeRemoved(int parent, int position) override;
  int ParentOutcomesReordered(int parent, const KVN_intArray& order) override;
  int ReorderParents(const KVN_intArray& order) override;

  int GetSize() override { return table.GetSize(); }
  int ConvertFrom(KVN_nodeDefinition& source) override { return Assign(source); }
  int ReCreate() override;
  /// Takes the cells of a source with as many cells; KVN_REFUSED for one that has no table to
  /// offer: this is then empty.
  int Assign(KVN_nodeDefinition& source) override;
  int RemoveNonDiscreteParents() override { return DropNonDiscreteParents(); }

  int GetDefinition(KVN_doubleArray*& out) override;
  int GetDefinition(KVN_Dmatrix*& out) override;
  /// Takes dimensions and cells as they are.
  int SetDefinition(const KVN_Dmatrix& source) override;
  /// Copies as many cells as both have, without notice.
  int SetDefinition(const KVN_doubleArray& source) override;
  void CopyParametersTo(KVN_nodeDefinition& target) override;

  /// One number per cell, in cell order; KVN_REFUSED for another count: unchanged.
  [[nodiscard]] int SetUtilities(const KVN_doubleArray& values);
  /// Smallest and largest cell, undefined ones included; 0.0 for a table without cells.
  double GetMinimum() const;
  double GetMaximum() const;
  /// Maps the utilities linearly, by the rules of RescaleCells (values/utilityScale.h). The network
  /// hears of it, but for a change that leaves every number as it is.
  int Rescale(double fromLow, double fromHigh, double toLow, double toHigh);

 private:
  int Convert(KVN_nodeDefinition& source);
  int FinishParentEdit(int result);
  void NumbersReplaced(int changeCode);

  KVN_Dmatrix table;
};
