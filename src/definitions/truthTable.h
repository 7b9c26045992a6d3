#pragma once

#include "definitions/cpt.h"

/// Deterministic node: a table whose rows each have exactly one 1.0, at the outcome that the parent
/// configuration determines, and 0.0 elsewhere.
class KVN_truthTable : public KVN_cpt {
 public:
  using KVN_cpt::SetDefinition;

  KVN_truthTable(KVN_network* network, int handle) : KVN_cpt(network, handle) {}
  ~KVN_truthTable() override = default;

  /// Every cell exactly 0.0 or 1.0, and the rules of KVN_cpt.
  int CheckConsistency(int deep) override;
  int GetType() const override { return KVN_TYPE_TRUTHTABLE; }
  const char* GetTypeName() const override { return "TRUTHTABLE"; }
  /// Each configuration determines the first outcome.
  int ReCreate() override;
  /// As KVN_cpt, the numbers then rounded by MakeDeterministic.
  int Assign(KVN_nodeDefinition& source) override;
  int SetDefinition(const KVN_stringArray& source) override { return SetResultingStates(source); }
  int SetDefinition(const KVN_intArray& source) override { return SetResultingStates(source); }

  /// One outcome index for each row, in row order. KVN_LENGTH_MISMATCH for another number of
  /// entries, KVN_REFUSED for an index that is no outcome: unchanged.
  int SetResultingStates(const KVN_intArray& states);
  /// The same by identifier. It is meant that an unknown name stands for the first outcome. Names
  /// repeat by nature, so any string list will do.
  int SetResultingStates(const KVN_stringArray& names);
  /// Appends the identifier of the determined outcome for each row; a row without a 1.0 gives the
  /// first. Repeats are stored in an identifier list too.
  int GetResultingStates(KVN_stringArray& out) const;
  /// Rounds every row: its largest cell becomes 1.0, the others 0.0. It is meant that ties go to
  /// the later cell, and a row of zeros therefore to the last one.
  int MakeDeterministic();

 protected:
  /// The rows for a new outcome of a parent determine the last outcome.
  void CompleteRows() override { (void)MakeDeterministic(); }
};
