#pragma once

#include <cstdint>
#include <memory>
#include <vector>

class RelevanceGraph;

/// One table of a part as the join tree multiplies it in: cells in place, with a step for each
/// variable that still has more than one state. Steps of observed variables are gone, their cells
/// are fixed by where `cells` points.
struct TreeFactor {
  const double* cells = nullptr;
  std::vector<int> variables;         // positions in the part, in table order: parents, then itself
  std::vector<std::int64_t> strides;  // of each variable
};

/// What a join tree is built from: the variables of a part, by position, and their tables.
class TreeInput {
 public:
  explicit TreeInput(RelevanceGraph& part) : part(part) {}
  TreeInput(const TreeInput&) = delete;
  TreeInput& operator=(const TreeInput&) = delete;

  /// Takes the tables as they stand, cut by the evidence on their own nodes. False when a table
  /// can't be had.
  bool Load();

  /// Removes every state that no cell of some table supports, again and again until nothing
  /// changes (arc consistency of the zero pattern): exact, since such a state has probability 0.
  /// A variable that is left with one state is known from then on. Tables with a removed state are
  /// copied; the others stay in place.
  ///
  /// `contradiction` becomes true when a variable loses all its states: the evidence is impossible.
  /// False without memory.
  bool PruneStates(bool& contradiction);

  int GetSize() const { return static_cast<int>(states.size()); }
  /// States of each variable that are left: 1 for an observed or known one.
  const std::vector<int>& States() const { return states; }
  /// The table of the variable at a position.
  const TreeFactor& Factor(int position) const { return factors[position]; }
  /// The original outcome behind state `state` of a variable.
  int OutcomeOf(int position, int state) const {
    return kept[position].empty() ? state : kept[position][state];
  }
  /// Whether each distribution over the variable itself sums to 1 but for rounding.
  bool IsDistribution(int position) const;

 private:
  std::vector<std::vector<std::int64_t>> OffsetsOf(int position) const;
  bool HasZeros(int position) const;
  bool RemoveUnsupported(int position, std::vector<int>& shrunk);
  bool CompactFactors(const std::vector<char>& changed);
  bool CompactFactor(int position);

  RelevanceGraph& part;  // not owned
  std::vector<int> states;
  std::vector<TreeFactor> factors;
  std::vector<std::vector<int>> kept;             // outcomes left, empty for all
  std::vector<std::vector<char>> alive;           // by outcome, while states are pruned
  std::vector<std::unique_ptr<double[]>> copies;  // cells of compacted tables
};
