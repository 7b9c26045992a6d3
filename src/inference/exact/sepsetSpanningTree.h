#pragma once

#include <memory>

#include "foundation/intArray.h"

class RelevanceGraph;
class SepsetElimination;

/// The tree over the cliques of a part: a spanning tree of separators with the greatest masses, and
/// among equal masses the lowest costs (F. V. Jensen and F. Jensen, "Optimal junction trees",
/// 1994). The mass is the number of common variables, 0 too, the cost the cells of both cliques
/// together.
///
/// It is grown from one clique, which takes memory for one candidate per clique where a sorted list
/// of all pairs would take their square; a spanning tree by a sorted list has the same masses and
/// costs. Links between cliques without common variables are looked for only when no other is left.
class SepsetSpanningTree {
 public:
  SepsetSpanningTree(RelevanceGraph& thePart, const SepsetElimination& theCliques);
  SepsetSpanningTree(const SepsetSpanningTree&) = delete;
  SepsetSpanningTree& operator=(const SepsetSpanningTree&) = delete;

  /// KVN_NO_MEMORY.
  [[nodiscard]] int Run();

  /// Cells of a table over all variables of a clique, by its index in the elimination.
  double GetCells(int clique) const { return cells[clique]; }
  /// The clique at a place in breadth-first order from the root, which is the one with the fewest
  /// cells; and the reverse.
  int GetClique(int place) const { return order[place]; }
  int GetPlace(int clique) const { return placeOf[clique]; }
  /// Place of the clique above; -1 for the root.
  int GetParentPlace(int place) const { return parentPlaces[place]; }

 private:
  struct Link {
    int from = -1;
    int to = -1;
    int mass = -1;
    double cost = 0.0;
  };

  static bool IsBetter(const Link& a, const Link& b);
  int CountCells();
  int ChooseLinks();
  void CountCommon(int clique, KVN_intArray& common, KVN_intArray& met) const;
  Link LinkToNearest() const;
  bool IsInTree(int clique) const { return best[clique].to < 0; }
  int OrderCliques();

  RelevanceGraph& part;
  const SepsetElimination& cliques;
  int count;
  std::unique_ptr<double[]> cells;
  std::unique_ptr<Link[]> best;   // by clique: its best link to the tree; `to` is -1 within it
  std::unique_ptr<Link[]> links;  // chosen
  KVN_intArray order;
  KVN_intArray placeOf;
  KVN_intArray parentPlaces;
};
