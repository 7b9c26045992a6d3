#pragma once

#include <memory>
#include <string>
#include <vector>

#include "definitions/nodeDefinition.h"

class KVN_expression;
class KVN_mauExpressionTable;

/// Multi-attribute utility: a utility node that combines the utilities of other nodes, by weights
/// or by formulas.
///
/// With weights it is the weighted sum of its utility parents. Layout of `weights`: a dimension for
/// each decision parent, in the order of the network's list, and a last one over the utility
/// parents, in the same order. So each run is the vector of weights that holds for one choice of
/// the decisions. Decisions D(2), E(3), utilities U, V:
///
///     flat index    0    1    2    3  ...   10   11
///     (D,E,.)      00U  00V  01U  01V ...  12U  12V
///
/// Without utility parents the last dimension is missing; without any parent there is no cell. A
/// new weight is 1.0, so that a new node is the plain sum. Weights may be any numbers.
///
/// With formulas there is an expression for each combination of alternatives of the decision
/// parents, over the identifiers of the utility parents; these are exactly the nodes that the
/// formulas name. The weights are kept up besides, and count again when the formulas are taken
/// away.
///
/// Parents are decisions (LIST), utilities (TABLE) and other nodes of this kind.
class KVN_mau : public KVN_nodeDefinition {
 public:
  using KVN_nodeDefinition::GetDefinition;
  using KVN_nodeDefinition::SetDefinition;

  /// Sets fields only; Init must follow unless the object is about to be assigned to.
  KVN_mau(KVN_network* theNetwork, int theHandle);
  ~KVN_mau() override;
  /// All weights 1.0, for the parents that the node has.
  int Init() { return ReCreate(); }

  /// Formulas go at any depth.
  void CleanUp(int deep) override;
  /// Always ready.
  int CheckReadiness(int deep) override;
  int GetType() const override { return KVN_TYPE_MAU; }
  const char* GetTypeName() const override { return "MAU"; }

  /// KVN_REFUSED for a parent that is neither a decision nor a utility. After KVN_NO_MEMORY the
  /// weights may have grown already: NumbersFit is false then, and nothing computes with them.
  int AddParent(int parent) override;
  /// For a decision the weights and formulas of its first alternative stay. A formula that names
  /// the utility that goes becomes the plain sum of its other names, sorted.
  int RemoveParent(int parent) override;
  /// For a new alternative of a decision the weights are 1.0, the formulas that of the first cell.
  int ParentOutcomeInserted(int parent, int position) override;
  int ParentOutcomeRemoved(int parent, int position) override;
  int ParentOutcomesReordered(int parent, const KVN_intArray& order) override;
  int ReorderParents(const KVN_intArray& order) override;
  void ParentRenamed(int parent, const char* oldId, const char* newId) override;

  int GetSize() override { return weights.GetSize(); }
  int ConvertFrom(KVN_nodeDefinition& source) override { return Assign(source); }
  int ReCreate() override;
  /// Takes over another node of this kind; every other kind that can be converted leaves weights of
  /// 1.0.
  int Assign(KVN_nodeDefinition& source) override;
  /// Removes the arcs from nodes with outcomes that aren't decisions.
  int RemoveNonDiscreteParents() override;

  int GetDefinition(KVN_doubleArray*& out) override;
  int GetDefinition(KVN_Dmatrix*& out) override;
  /// Takes dimensions and cells as they are.
  int SetDefinition(const KVN_Dmatrix& source) override;
  /// Copies as many weights as both have, without notice: a reader that must know compares the
  /// count with GetSize first.
  int SetDefinition(const KVN_doubleArray& source) override;

  /// Takes a copy of the formulas, whose shape is that of the present ones or, without, the outcome
  /// counts of the decision parents ([1] without decisions). The utility parents become the nodes
  /// that are named, in sorted order; a formula may name any utility that isn't below this node.
  /// Null goes back to the weights. KVN_REFUSED for another shape, KVN_FAILURE for a formula that
  /// isn't allowed: nothing has changed, and `message`, if given, has the reason. The code of an
  /// arc that can't be changed: there are no formulas then.
  [[nodiscard]] int SetExpressions(const KVN_mauExpressionTable* table, std::string* message);
  /// Null with weights.
  const KVN_mauExpressionTable* GetExpressions() const { return expressions.get(); }
  /// Null with weights, and outside.
  KVN_expression* GetExpression(int cell) const;
  /// Number of formulas that SetExpressions asks for, KVN_NO_MEMORY.
  int CountExpressions() const;

  /// `expression` plus the variable `id`, or the variable alone where the expression is the
  /// constant 0. Takes the expression over; null when memory is short.
  static KVN_expression* AddTerm(KVN_expression* expression, const char* id);
  /// ((a + b) + c), or the constant 0 for no names.
  static KVN_expression* MakeSum(const std::vector<std::string>& ids);

  /// Whether weights and formulas have the shape that the parents ask for. They haven't after the
  /// type of a parent was changed between decision and utility, or after an unchecked
  /// SetDefinition.
  bool NumbersFit() const;

  /// One multiplier for each decision parent: the sum of alternative times multiplier says where
  /// the numbers for a combination of choices begin.
  const KVN_intArray& GetRowMultipliers() const;
  /// The utility for the utilities of the utility parents, in their order, under the choices that
  /// `row` stands for. Everything must fit.
  double Combine(const double* inputs, int count, int row) const;

 private:
  enum class Kind { kDecision, kUtility, kOther };

  Kind KindOf(int parent) const;
  /// The parents of one kind, in order. A `left` that is no handle leaves out nothing.
  int ParentsOfKind(Kind kind, KVN_intArray& list, int left = -1) const;
  int ShapeForParents(KVN_intArray& shape, int left = -1) const;
  int ResetWeights(int left);
  int AddUtility(int parent);
  int AddDecision(int parent);
  int RemoveUtility(int parent);
  int RemoveDecision(int parent);
  int TakeContent(KVN_mau& source);

  // Formulas (mauExpressions.cpp). Each does nothing with weights.
  int ShapeOfExpressions(KVN_intArray& shape) const;
  int ReplaceUtilities(const std::vector<std::string>& names);
  int AddToExpressions(int utility);
  int RemoveFromExpressions(int utility);
  int AddExpressionDimension(int position, int outcomes);
  int RemoveExpressionDimension(int position);
  int PruneParents();
  /// Edits the table of formulas as `edit` does a table of doubles.
  template <class Edit>
  int EditExpressions(Edit edit);
  double Evaluate(const double* inputs, int count, int cell) const;
  /// The dimension of a decision parent, KVN_REFUSED for any other node.
  int DecisionDimension(int parent) const;
  int Finish(int result);

  KVN_Dmatrix weights;
  std::unique_ptr<KVN_mauExpressionTable> expressions;
};
