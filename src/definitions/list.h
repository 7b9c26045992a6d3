#pragma once

#include "definitions/nodeDefinition.h"

/// Decision node: alternatives and no numbers. Its parents are informational arcs of the network
/// and nothing here depends on them, so the parent slots only say whether an arc is acceptable.
///
/// Having no table, a decision answers KVN_NOT_APPLICABLE to GetSize and
/// GetDefinition(KVN_Dmatrix).
class KVN_list : public KVN_nodeDefinition {
 public:
  using KVN_nodeDefinition::GetDefinition;
  using KVN_nodeDefinition::SetDefinition;

  /// Sets fields only; Init must follow unless the object is about to be assigned to.
  KVN_list(KVN_network* network, int handle);
  ~KVN_list() override = default;
  /// Alternatives Choice0 and Choice1.
  int Init();

  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  int CheckConsistency(int deep) override;
  int GetType() const override { return KVN_TYPE_LIST; }
  const char* GetTypeName() const override { return "LIST"; }

  int AddParent(int parent) override;
  int RemoveParent(int) override { return 0; }
  int ParentOutcomeInserted(int, int) override { return 0; }
  int ParentOutcomeRemoved(int, int) override { return 0; }
  int ParentOutcomesReordered(int, const KVN_intArray&) override { return 0; }

  int ConvertFrom(KVN_nodeDefinition& source) override { return Assign(source); }
  /// Keeps the names and fills them up to two.
  int ReCreate() override;
  int Assign(KVN_nodeDefinition& source) override;
  /// A decision may be informed by any kind of node: nothing is removed.
  int RemoveNonDiscreteParents() override { return 0; }

  /// A refused name is replaced by one made of "Choice" and the count.
  int AddOutcome(const char* name) override;
  int InsertOutcome(int position, const char* name) override;
  /// KVN_REFUSED when fewer than 3 alternatives are there.
  int RemoveOutcome(int position) override;
  int GetNumberOfOutcomes() const override { return numberOfOutcomes; }
  int RenameOutcome(int position, const char* name) override;
  int RenameOutcomes(const KVN_stringArray& names) override;
  const KVN_idArray* GetOutcomesNames() const override { return &outcomes; }
  /// Names that are no identifiers, or repeat, are mended. KVN_HAS_CHILDREN: unchanged.
  int SetNumberOfOutcomes(const KVN_stringArray& names) override;
  /// A count below 2 is raised to 2.
  int SetNumberOfOutcomes(int count) override;
  int ChangeOrderOfOutcomes(const KVN_intArray& order) override;

  int GetDefinition(KVN_idArray*& out) override;
  /// The choice values.
  int GetDefinition(KVN_doubleArray*& out) override;
  /// Replaces the alternatives without a check; nobody is told.
  int SetDefinition(const KVN_stringArray& source) override;
  /// Replaces the choice values.
  int SetDefinition(const KVN_doubleArray& source) override;

 private:
  int RebuildForNewOutcomes();
  int Convert(KVN_nodeDefinition& source);
  int TakeNames(const KVN_nodeDefinition& source);

  int numberOfOutcomes = 0;
  KVN_idArray outcomes;
  KVN_doubleArray choiceValues;  // one per alternative, but its length isn't tied to them
};
