#pragma once

#include <memory>
#include <string>
#include <vector>

#include "definitions/nodeDefinition.h"
#include "expressions/equationSides.h"

/// One interval of a discretised node; its bottom is the top of the one before.
struct KVN_discInterval {
  std::string id;
  double upper = 0.0;
};

/// A continuous node whose value follows from its parents by an equation with the node's own
/// identifier in it, such as `y = Normal(x, 1) + z`.
///
/// Arcs follow the formula: setting the equation makes exactly the variables it mentions the
/// parents. The other way round, an arc that is drawn adds its parent to the right side, and one
/// that is removed throws the formula away for the sum of the other parents (both intended).
///
/// Answers are numbers or samples, unless the node has intervals over its range: then Discretize
/// estimates a table over the intervals of the parents, which is kept until something changes it.
class KVN_equation : public KVN_nodeDefinition {
 public:
  /// Sets fields only; Init must follow unless the object is about to be assigned to.
  KVN_equation(KVN_network* network, int handle);
  ~KVN_equation() override;
  /// `<id> = 0`, range -1 to 1, no intervals.
  int Init();

  /// Back to what Init makes; without a node the left side has no name.
  void CleanUp(int deep) override;
  int GetType() const override { return KVN_TYPE_EQUATION; }
  const char* GetTypeName() const override { return "EQUATION"; }

  /// KVN_REFUSED for a parent that isn't an equation node, told to the log, or when the sum has
  /// grown as deep as a formula may be.
  int AddParent(int parent) override;
  int RemoveParent(int parent) override;
  /// Drops the cached table, whose dimensions follow the parents. KVN_NOT_APPLICABLE still: the
  /// formula names its parents, so nothing else changes.
  int ReorderParents(const KVN_intArray& order) override;
  void ParentRenamed(int parent, const char* oldId, const char* newId) override;
  /// KVN_REFUSED for a source of another class: this is then as Init makes it.
  int Assign(KVN_nodeDefinition& source) override;

  /// Makes the text the node's equation, and its variables the parents. KVN_REFUSED, with nothing
  /// changed, for a text that ValidateEquation refuses; the log gets the message too. An arc that
  /// the network refuses is left out, and its variable has no value then. Either pointer may be
  /// null; `errorPosition` is that of a syntax error.
  [[nodiscard]] int SetEquation(const std::string& text, int* errorPosition = nullptr,
                                std::string* error = nullptr);
  /// Whether the text is an equation whose variables are nodes that don't follow from this one; the
  /// node itself is allowed. Gathers the names. All pointers may be null.
  bool ValidateEquation(const std::string& text, std::vector<std::string>* variables,
                        std::string* error, int* errorPosition) const;
  const KVN_equationSides& GetEquation() const { return equation; }

  /// Range of the node: what lies outside is dropped when the node is discretised. The two numbers
  /// aren't compared, and intervals stay as they are (intended).
  void SetBounds(double lower, double upper);
  double GetLowerBound() const { return lowerBound; }
  double GetUpperBound() const { return upperBound; }

  /// KVN_REFUSED for fewer than two, KVN_ILLEGAL_ID for a bad or repeated name,
  /// KVN_LENGTH_MISMATCH for tops that don't rise strictly inside the range: unchanged. The top of
  /// the last is the upper bound, whatever the caller gave (intended). The cached tables of the
  /// node and of its parents are dropped, not those of its children (intended).
  [[nodiscard]] int SetDiscIntervals(const std::vector<KVN_discInterval>& list);
  /// Takes the intervals away.
  void ClearDiscIntervals();
  const std::vector<KVN_discInterval>& GetDiscIntervals() const { return intervals; }
  /// KVN_NOT_APPLICABLE without intervals, KVN_REFUSED for an index outside.
  int GetInterval(int index, double& lower, double& upper) const;

  /// Estimates the node's table over intervals by sampling, with as many samples for each row as
  /// the network's setting says. Dimensions: the parents that have intervals, in list order, then
  /// the node's own intervals. A parent without intervals varies over its whole range. Rows that no
  /// sample hits are uniform. `samplesOut`, if given, receives the accepted values row by row.
  ///
  /// Uniform numbers come from a generator of its own started at `seed`, those of distributions in
  /// the formula from the function library's. KVN_REFUSED without intervals, KVN_NO_MEMORY, also
  /// for a table too large: the old table stays then.
  [[nodiscard]] int Discretize(unsigned seed, std::vector<std::vector<float>>* samplesOut);
  /// The last result of Discretize; null when something has changed since.
  const KVN_Dmatrix* GetDiscreteTable() const { return discreteTable.get(); }
  void DropDiscreteTable() { discreteTable.reset(); }

 private:
  std::string OwnId() const;

  KVN_equationSides equation;
  double lowerBound;
  double upperBound;
  std::vector<KVN_discInterval> intervals;
  std::unique_ptr<KVN_Dmatrix> discreteTable;  // cache
};
