#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "inference/exact/treeInput.h"
#include "inference/exact/triangulator.h"

class BlockWalk;
class RelevanceGraph;

/// What a join tree may do beyond the plain method.
struct JoinTreeOptions {
  /// Prune states that no table supports, keep the cheapest of four elimination orders, and send
  /// messages as ratios, unit messages not at all: the same posteriors but for rounding.
  bool effort = false;
  /// Keep every potential in memory, however large: the form that the other is tested against.
  bool storeAll = false;
};

/// What the last runs cost, for benchmarks: sums over the runs since the caller cleared them, the
/// seconds in processor time of the running thread.
struct JoinTreeStatistics {
  double triangulationSeconds = 0.0;
  double propagationSeconds = 0.0;
  std::int64_t cliques = 0;
  std::int64_t cells = 0;         // over all cliques
  std::int64_t largestCells = 0;  // of one clique
  std::int64_t bytes = 0;         // allocated for tables at a time
};

/// Exact inference in one part of a reduced network (Lauritzen and Spiegelhalter 1988; Jensen,
/// Lauritzen and Olesen 1990): triangulation, a tree of cliques, one collect and one distribute
/// pass, and the marginals from the smallest clique of each variable.
///
/// Cliques stand in the order of their making, so a parent comes after its children and both passes
/// are loops. Tables have the variables with more than one state in ascending part position, the
/// last one fastest. A clique of at most kStoredCells cells keeps its potential; a larger one never
/// has it in memory as a whole: each pass forms it again block by block, in buffers that stay in
/// the first-level cache, and sums it at once onto separators and marginals. The order of the
/// operations on each cell is the same in both forms, and so are the bits.
///
/// Messages whose largest cell leaves 2^-100..2^100 are scaled by a power of two, which changes no
/// bit of a posterior and keeps thousands of unlikely findings from underflow.
class JoinTree {
 public:
  explicit JoinTree(RelevanceGraph& part, JoinTreeOptions options = {});
  JoinTree(const JoinTree&) = delete;
  JoinTree& operator=(const JoinTree&) = delete;
  ~JoinTree();

  /// Computes the marginals of the part's targets and of the nodes whose byte in `pending` (by
  /// handle, may be null) is set, writes them into the nodes' values, marks these valid and clears
  /// their bytes. All nodes are wanted when the network has no targets. A marginal that sums to 0,
  /// from contradictory evidence, is not written and stays invalid.
  ///
  /// `limit` bounds the total weight of the cliques, 0 for the default. False, with nothing
  /// written, when the part has more than 65,535 nodes, when the triangulation passes a limit, or
  /// when memory is short.
  bool Run(unsigned char* pending, std::int64_t limit);

  /// Where statistics are added up; null, the default, for nowhere. Process-wide.
  static JoinTreeStatistics* statistics;

 private:
  struct Clique;

  bool Triangulate(std::int64_t limit);
  void Connect(Triangulator& graph) const;
  void AssignTables();
  void MakeCliques();
  void FindUnitMessages();
  void FindHomes(const unsigned char* pending);
  bool IsWanted(int position, const unsigned char* pending) const;
  void ShapeClique(Clique& clique, const CliqueNodes& nodes);
  bool Allocate();
  void AddFactorOperand(BlockWalk& walk, int position) const;
  void AddTableOperand(BlockWalk& walk, const std::vector<int>& variables) const;
  void AddProductOperands(BlockWalk& walk, const Clique& clique) const;
  void FormBlock(const BlockWalk& walk, const Clique& clique, double* cells) const;
  void Collect(Clique& clique);
  void Distribute(Clique& clique);
  void FinishMessage(Clique& child) const;
  void WriteMarginals(unsigned char* pending);
  void WriteMarginal(int position);

  RelevanceGraph& part;  // not owned
  JoinTreeOptions options;
  TreeInput input;
  std::vector<CliqueNodes> made;
  std::vector<Clique> cliques;
  std::vector<std::vector<int>> cliquesOf;  // by part position, ascending
  std::vector<int> rank;                    // of a clique, by weight and number of nodes
  std::vector<double*> marginals;           // by part position, null where not wanted
  double* arena = nullptr;                  // owned: separators, marginals and stored potentials
  double* buffer = nullptr;                 // in the arena: one block
  bool contradiction = false;
};
