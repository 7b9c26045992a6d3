#pragma once

#include <cstdint>
#include <memory>

#include "foundation/intArray.h"

class RelevanceGraph;

/// Cliques of a part by greedy elimination with minimum fill-in, the lower product of outcomes
/// breaking ties (Huang and Darwiche, "Inference in belief networks: a procedural guide", 1996,
/// section 6.1). It is meant that only the neighbours of an eliminated node get new counts: those
/// further away go by the count they last had.
///
/// The moral graph is kept as sorted neighbour lists, and the number of edges among the neighbours
/// of each node is kept up to date, so that a node with thousands of neighbours is no burden.
class SepsetElimination {
 public:
  explicit SepsetElimination(RelevanceGraph& thePart) : part(thePart) {}
  SepsetElimination(const SepsetElimination&) = delete;
  SepsetElimination& operator=(const SepsetElimination&) = delete;

  /// Makes the cliques, none of which is part of another. KVN_NO_MEMORY.
  [[nodiscard]] int Run();

  int GetCount() const { return count; }
  /// Part positions, ascending.
  const KVN_intArray& Clique(int index) const { return cliques[index]; }
  /// The cliques that hold a variable, ascending.
  const KVN_intArray& CliquesOf(int variable) const { return cliquesOf[variable]; }

 private:
  /// A node and its neighbours.
  struct Cluster {
    KVN_intArray neighbours;   // ascending
    std::int64_t edges = 0;    // among the neighbours
    std::int64_t fillIns = 0;  // that eliminating the node would add, when it was last counted
    double weight = 0.0;       // product of the outcomes of the node and its neighbours
  };

  int LinkFamilies();
  int Link(int a, int b);
  bool IsLinked(int a, int b) const;
  void Count(int node);
  bool ComesBefore(int a, int b) const;
  int Eliminate(int node);
  int LinkNeighbours(const Cluster& cluster);
  int AddClique(const KVN_intArray& cluster, int node);

  RelevanceGraph& part;
  std::unique_ptr<Cluster[]> clusters;      // by part position
  std::unique_ptr<KVN_intArray[]> cliques;  // room for one per node
  std::unique_ptr<KVN_intArray[]> cliquesOf;
  int count = 0;
};
