#pragma once

#include "definitions/ciDefinition.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"

/// How the rows of a noisy adder are combined.
enum KVN_adderFunction : int {
  KVN_ADDER_AVERAGE = 0,
  KVN_ADDER_SINGLE_FAULT = 1,
};

/// Noisy adder: the rows of the parents that act are averaged with the leak row, or count one at a
/// time. Each parent has a distinguished outcome in which it doesn't act.
///
/// The blocks of `parameters` are in the parents' own order of outcomes. A distinguished outcome's
/// row is constrained: 1.0 in the column of the node's own `distinguishedState`, 0.0 elsewhere.
///
/// `parentDistinguishedStates` has an entry per parent; `weights` has one more, the leak's, last.
///
/// It is meant that a parent that is a noisy adder itself (type 274) is accepted, and then left out
/// when it is removed or gains an outcome: rows and parents then disagree, and BuildCpt refuses
/// where a row would lie beyond the last one.
class KVN_noisyAdder : public KVN_ciDefinition {
 public:
  using KVN_ciDefinition::GetDefinition;
  using KVN_ciDefinition::SetDefinition;
  using KVN_ciDefinition::SetNumberOfOutcomes;

  /// Sets fields only; Init must follow.
  KVN_noisyAdder(KVN_network* theNetwork, int theHandle)
      : KVN_ciDefinition(theNetwork, theHandle) {}

  int GetType() const override { return KVN_TYPE_NOISY_ADDER; }
  const char* GetTypeName() const override { return "NOISY_ADDER"; }

  void CleanUp(int deep) override;

  /// The block comes at the parent's position, uniform but for the row of the last outcome, which
  /// is the distinguished one. It is meant that weight and distinguished outcome go to the end of
  /// their lists: the weight that was the leak's becomes the new parent's, and the leak gets 1.0.
  int AddParent(int parent) override;
  int RemoveParent(int parent) override;
  int ParentOutcomeInserted(int parent, int position) override;
  int ParentOutcomeRemoved(int parent, int position) override;
  int ParentOutcomesReordered(int parent, const KVN_intArray& order) override;
  int ReorderParents(const KVN_intArray& order) override;

  /// It is meant that a node without names gets three outcomes, with the middle one distinguished,
  /// where other kinds get two.
  int ReCreate() override;

  int InsertOutcome(int position, const char* name) override;
  /// It is meant that a distinguished state above the position falls by 1 before the removal is
  /// tried, also when the removal is then refused.
  int RemoveOutcome(int position) override;
  /// The last outcome becomes the distinguished one.
  int SetNumberOfOutcomes(int count) override;
  /// It is meant that a table that was built before still counts as current.
  int ChangeOrderOfOutcomes(const KVN_intArray& order) override;
  void CopyParametersTo(KVN_nodeDefinition& target) override;

  /// KVN_REFUSED also for an unknown function code. Weights that sum to 0 are not guarded against:
  /// their cells become NaN.
  int BuildCpt() override;
  /// KVN_REFUSED: a table can't be turned into parameters.
  int FitParameters() override;

  /// First row of a parent's block, by the parents' present outcome counts. KVN_REFUSED for an
  /// index outside the parent list.
  int RowOffset(int parentIndex) const;

  int GetDistinguishedState() const { return distinguishedState; }
  /// Moves the 1.0 of all constrained rows. KVN_REFUSED for a bad outcome; the present one changes
  /// nothing.
  int SetDistinguishedState(int state);
  const KVN_intArray& GetParentDistinguishedStates() const { return parentDistinguishedStates; }
  /// `parentIndex` is a place in the parent list. The row of the new state becomes constrained;
  /// that of the old one keeps its numbers and is free.
  int SetParentDistinguishedState(int parentIndex, int state);
  const KVN_doubleArray& GetWeights() const { return weights; }
  /// Copies as many weights as both sides have; always 0 unless the table is kept and fails.
  int SetWeights(const KVN_doubleArray& values);
  int GetFunction() const { return function; }
  /// It is meant that any code is stored; BuildCpt refuses the unknown ones.
  int SetFunction(int code);

 protected:
  /// Everything of another adder; of any other chance definition the names are all that fits.
  int TakeNumbers(KVN_nodeDefinition& source) override;
  int UnitColumns(KVN_intArray& columns) const override;

 private:
  struct Walk;  // of BuildCpt

  /// Parents that have their entries in the lists.
  int CauseCount() const;
  int StartWalk(Walk& walk, KVN_intArray& sizes) const;
  void AverageRow(const Walk& walk, double* cells) const;
  void SingleFaultRow(const Walk& walk, double* cells) const;

  int distinguishedState = 1;
  KVN_intArray parentDistinguishedStates;
  KVN_doubleArray weights;
  int function = KVN_ADDER_AVERAGE;
};
