#pragma once

#include <memory>

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"
#include "inference/exact/sepsetWalk.h"

class KVN_network;
class RelevanceGraph;
class SepsetElimination;
class SepsetSpanningTree;

/// A clique. Its table is the product of the tables of the nodes that are at home in it, and after
/// the propagation, but for a factor, the joint distribution of its variables and the evidence.
struct SepsetClique {
  KVN_intArray variables;  // part positions, ascending
  KVN_intArray open;       // those without evidence: the dimensions of the table
  KVN_Dmatrix table;
};

/// The separator between a clique and the one above it, with a table over their common variables
/// without evidence.
struct Sepset {
  int fromClique = -1;  // the one nearer the root
  int toClique = -1;
  KVN_intArray open;    // part positions, ascending
  SepsetWalk fromWalk;  // from the cells of the clique to those of the sepset
  SepsetWalk toWalk;
  KVN_Dmatrix table;
};

/// Exact inference in one part of a reduced network by a join tree with explicit separators (C.
/// Huang and A. Darwiche, "Inference in belief networks: a procedural guide", 1996). Independent of
/// JoinTree and without a limit on weights: a part too large for memory ends in KVN_NO_MEMORY.
///
/// Cliques stand breadth first from the root, so that both passes are loops over the sepsets:
/// sepset i links clique i + 1 to the one above it.
///
/// A table whose largest cell leaves 2^-100..2^100 is scaled by a power of two, which changes no
/// bit of a posterior and keeps thousands of unlikely findings from underflow.
class SepsetJoinTree {
 public:
  explicit SepsetJoinTree(RelevanceGraph& thePart) : part(thePart) {}
  SepsetJoinTree(const SepsetJoinTree&) = delete;
  SepsetJoinTree& operator=(const SepsetJoinTree&) = delete;

  /// Builds the tree with its tables, cut at the evidence. KVN_NO_MEMORY, or KVN_REFUSED for a node
  /// whose table doesn't have the shape that its parents ask for.
  [[nodiscard]] int Build();
  /// Propagates, writes the posteriors of all nodes of the part into their values and marks these
  /// valid. It is meant that contradictory evidence isn't looked for: its sums of 0 make posteriors
  /// that are not numbers. KVN_NO_MEMORY leaves the values as far as it got.
  [[nodiscard]] int Update();

  int GetNumberOfCliques() const { return cliqueCount; }
  const SepsetClique& GetClique(int index) const { return cliques[index]; }
  const Sepset& GetSepset(int index) const { return sepsets[index]; }

 private:
  int MakeCliques(const SepsetElimination& made, const SepsetSpanningTree& tree);
  int MakeSepset(int index, int above);
  int MakeTable(const KVN_intArray& open, KVN_Dmatrix& table) const;
  int FindHome(int position, const SepsetElimination& made, const SepsetSpanningTree& tree) const;
  int MultiplyIn(SepsetClique& home, int position);
  void Collect(Sepset& sepset);
  int Distribute(Sepset& sepset);
  int FindSmallestTables();
  int WritePosterior(int position);

  RelevanceGraph& part;
  std::unique_ptr<SepsetClique[]> cliques;
  std::unique_ptr<Sepset[]> sepsets;
  int cliqueCount = 0;
  int sepsetCount = 0;
  // By node, the smallest table that holds it: a sepset as its index plus 1, a clique as the
  // complement of its index, 0 for none.
  KVN_intArray smallest;
};

/// Reduces the network and runs a SepsetJoinTree on each of its parts. A part that fails is left as
/// far as it got, and the others are computed all the same. 0, or the code of the first failure.
int SepsetJoinTreeUpdate(KVN_network& network);
