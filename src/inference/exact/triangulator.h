#pragma once

#include <cstdint>
#include <vector>

/// Largest product of state counts that a clique may have; a larger one counts as too large.
constexpr std::int64_t kCliqueWeightLimit = 0x40000000;
/// Total clique weight allowed when the caller names no limit.
constexpr std::int64_t kTotalWeightLimit = 0x10000000;
/// Most nodes in one clique.
constexpr int kCliqueNodeLimit = 30;

/// Rule by which the next node to eliminate is chosen, once no simplicial node is left.
enum class EliminationRule {
  kLowestWeight,        // smallest product of states of the node and its neighbours
  kFewestFillIns,       // smallest number of edges that the elimination adds
  kLogarithmicFillIns,  // each such edge weighted by the logarithm of the product of its states
  kWeightedFillIns,     // each such edge weighted by the product of its states
};

/// A clique as the elimination makes it.
struct CliqueNodes {
  std::vector<int> nodes;      // ascending; the eliminated ones and the separator
  std::vector<int> separator;  // ascending; those that stayed in the graph
  int eliminatedNode = -1;     // whose elimination made the clique
  std::int64_t weight = 0;     // product of the states of `nodes`
  int parent = -1;             // index of the parent clique, -1 for the root
};

/// Undirected graph over 0..n-1, triangulated by greedy elimination (Kjaerulff 1990), which gives
/// the cliques of a join tree in the order of their making; the last one is the root.
///
/// All is sparse, and the fill-in counts are kept up to date edge by edge, so that the cost is near
/// linear in the edges of the filled graph: a chain or a star of 50,000 nodes takes milliseconds.
class Triangulator {
 public:
  /// `states` holds the number of states of each node, 1 for an observed one.
  explicit Triangulator(std::vector<int> states);

  /// Adds an edge unless it stands or its ends are equal.
  void Connect(int a, int b);

  /// Eliminates all nodes by `rule` and fills `cliques`, linked into a tree: each clique's parent
  /// is the first later one that holds its separator. The graph is used up.
  ///
  /// Ties go to the lowest index. False, with `cliques` undefined, when a clique would pass
  /// kCliqueNodeLimit, when every candidate passes kCliqueWeightLimit, or when the total of the
  /// weights passes `limit`, which isn't tested while simplicial nodes are eliminated.
  bool Triangulate(EliminationRule rule, std::int64_t limit, std::vector<CliqueNodes>& cliques,
                   std::int64_t& totalWeight);

 private:
  struct Node {
    std::vector<int> neighbours;  // eliminated ones are dropped when they are more than half
    int degree = 0;
    bool eliminated = false;
    std::int64_t cost = 0;      // fill-ins by the rule's measure, 0 for a simplicial node
    std::int64_t stateSum = 0;  // of the neighbours, by the rule's measure
    double logWeight = 0.0;     // logarithm of the product of states, itself included
    std::int64_t weight = 0;    // that product; 0 when it isn't known or too large
  };
  struct Candidate {
    std::int64_t key;
    int node;
    bool operator>(const Candidate& other) const {
      return key != other.key ? key > other.key : node > other.node;
    }
  };
  class EdgeSet {
   public:
    explicit EdgeSet(int nodeCount);
    /// False if the edge was there already.
    bool Add(int a, int b);
    bool Has(int a, int b) const;

   private:
    static std::uint64_t KeyOf(int a, int b);
    void Grow();

    int nodeCount;
    std::vector<std::uint64_t> bits;   // a matrix, for small graphs
    std::vector<std::uint64_t> table;  // else open addressing; 0 is an empty cell
    std::size_t used = 0;
  };

  bool IsAdjacent(int a, int b) const { return edges.Has(a, b); }
  template <typename Visit>
  void ForEachNeighbour(int node, Visit visit) const;
  std::int64_t EdgeCost(int a, int b) const;
  std::int64_t MissingCost(int node, int other) const;
  void InitialiseCosts();
  void AddFillIn(int a, int b);
  std::int64_t Weight(int node);
  void Eliminate(int node);
  bool MakeClique(int node, std::int64_t weight, std::vector<CliqueNodes>& cliques);
  bool EliminateSimplicial(std::vector<CliqueNodes>& cliques);
  int TakeBest();
  void Touch(int node);
  void Push(int node);
  static void Link(std::vector<CliqueNodes>& cliques, int nodeCount);

  std::vector<int> states;
  std::vector<std::int64_t> measure;  // what a node adds to the cost of an edge
  std::vector<Node> nodes;
  EdgeSet edges;
  EliminationRule rule = EliminationRule::kLowestWeight;
  std::vector<Candidate> heap;  // smallest first; entries of the past are skipped
  std::vector<int> simplicial;  // candidates of the next sweeps, unordered
  std::vector<char> isListed;   // whether a node stands in `simplicial`
  std::vector<char> isTouched;
  std::vector<int> touched;  // nodes whose key has changed since the heap was last read
  int remaining = 0;
  std::int64_t total = 0;
};
