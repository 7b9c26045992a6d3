#include "inference/exact/triangulator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <set>
#include <vector>

namespace {

/// A random graph, as the triangulator and as the reference take it.
struct RandomGraph {
  explicit RandomGraph(unsigned seed) {
    std::mt19937 random(seed);
    int n = 1 + static_cast<int>(random() % 14);
    for (int i = 0; i < n; ++i) states.push_back(1 + static_cast<int>(random() % 4));
    neighbours.resize(n);
    for (int edges = static_cast<int>(random() % (2 * n + 1)); edges > 0; --edges) {
      int a = static_cast<int>(random() % n);
      int b = static_cast<int>(random() % n);
      if (a == b) continue;
      neighbours[a].insert(b);
      neighbours[b].insert(a);
    }
  }

  Triangulator Make() const {
    Triangulator made(states);
    for (int a = 0; a < static_cast<int>(states.size()); ++a) {
      for (int b : neighbours[a]) made.Connect(a, b);
    }
    return made;
  }

  std::vector<int> states;
  std::vector<std::set<int>> neighbours;
};

/// The documented elimination without any means of speed: sweeps over all nodes, weights multiplied
/// out anew
/// at each look, neighbours in plain sets.
class Reference {
 public:
  explicit Reference(const RandomGraph& graph)
      : states(graph.states), neighbours(graph.neighbours), gone(states.size(), false) {}

  bool Run(std::int64_t limit) {
    while (Remaining() > 0) {
      if (!SweepSimplicial()) return false;
      if (Remaining() == 0) break;
      int best = -1;
      for (int i = 0; i < Count(); ++i) {
        if (gone[i] || Weight(i) == 0) continue;
        if (best < 0 || Weight(i) < Weight(best)) best = i;
      }
      if (best < 0) return false;
      std::int64_t weight = Weight(best);
      for (int a : std::set<int>(neighbours[best])) {
        for (int b : neighbours[best]) {
          if (a != b) neighbours[a].insert(b);
        }
      }
      if (!MakeClique(best, weight) || total > limit) return false;
    }
    return total <= limit;
  }

  std::vector<CliqueNodes> cliques;
  std::int64_t total = 0;

 private:
  int Count() const { return static_cast<int>(states.size()); }
  int Remaining() const { return static_cast<int>(std::count(gone.begin(), gone.end(), false)); }
  std::int64_t Weight(int i) const {
    std::int64_t weight = states[i];
    for (int x : neighbours[i]) weight *= states[x];
    return weight > kCliqueWeightLimit ? 0 : weight;
  }
  bool IsSimplicial(int i) const {
    for (int a : neighbours[i]) {
      for (int b : neighbours[i]) {
        if (a != b && neighbours[a].count(b) == 0) return false;
      }
    }
    return true;
  }
  bool SweepSimplicial() {
    for (bool any = true; any;) {
      any = false;
      for (int i = 0; i < Count(); ++i) {
        if (gone[i] || !IsSimplicial(i)) continue;
        if (Weight(i) == 0 || !MakeClique(i, Weight(i))) return false;
        any = true;
      }
    }
    return true;
  }
  void Eliminate(int i) {
    for (int x : neighbours[i]) neighbours[x].erase(i);
    neighbours[i].clear();
    gone[i] = true;
  }
  bool MakeClique(int i, std::int64_t weight) {
    CliqueNodes clique;
    clique.weight = weight;
    total += weight;
    std::vector<int> others(neighbours[i].begin(), neighbours[i].end());
    int outside = static_cast<int>(others.size()) - 1;
    Eliminate(i);
    clique.nodes = {i};
    for (auto x = others.rbegin(); x != others.rend(); ++x) {
      if (static_cast<int>(clique.nodes.size()) == kCliqueNodeLimit) return false;
      clique.nodes.push_back(*x);
      if (static_cast<int>(neighbours[*x].size()) == outside) {
        Eliminate(*x);
        --outside;
      } else {
        clique.separator.push_back(*x);
      }
    }
    std::sort(clique.nodes.begin(), clique.nodes.end());
    std::sort(clique.separator.begin(), clique.separator.end());
    cliques.push_back(clique);
    return true;
  }

  std::vector<int> states;
  std::vector<std::set<int>> neighbours;
  std::vector<bool> gone;
};

bool Holds(const std::vector<int>& nodes, const std::vector<int>& part) {
  return std::includes(nodes.begin(), nodes.end(), part.begin(), part.end());
}

/// The first later clique that holds the separator.
int ParentBySearch(const std::vector<CliqueNodes>& cliques, std::size_t c) {
  for (std::size_t later = c + 1; later < cliques.size(); ++later) {
    if (Holds(cliques[later].nodes, cliques[c].separator)) return static_cast<int>(later);
  }
  return -1;
}

constexpr EliminationRule kRules[] = {
    EliminationRule::kLowestWeight, EliminationRule::kFewestFillIns,
    EliminationRule::kLogarithmicFillIns, EliminationRule::kWeightedFillIns};

}  // namespace

TEST(Triangulator, MakesTheCliquesOfPlainElimination) {
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    RandomGraph graph(seed);
    std::int64_t limit = seed % 3 == 0 ? 50 : kTotalWeightLimit;
    Reference reference(graph);
    std::vector<CliqueNodes> cliques;
    std::int64_t total = 0;
    bool done = graph.Make().Triangulate(EliminationRule::kLowestWeight, limit, cliques, total);
    ASSERT_EQ(done, reference.Run(limit));
    if (!done) continue;
    ASSERT_EQ(total, reference.total);
    ASSERT_EQ(cliques.size(), reference.cliques.size());
    for (std::size_t c = 0; c < cliques.size(); ++c) {
      ASSERT_EQ(cliques[c].nodes, reference.cliques[c].nodes);
      ASSERT_EQ(cliques[c].separator, reference.cliques[c].separator);
      ASSERT_EQ(cliques[c].weight, reference.cliques[c].weight);
      ASSERT_EQ(cliques[c].parent, ParentBySearch(cliques, c));
    }
  }
}

TEST(Triangulator, EveryRuleCoversTheEdgesAndLinksATree) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    RandomGraph graph(seed);
    for (EliminationRule rule : kRules) {
      SCOPED_TRACE(testing::Message() << seed << " rule " << static_cast<int>(rule));
      std::vector<CliqueNodes> cliques;
      std::int64_t total = 0;
      ASSERT_TRUE(graph.Make().Triangulate(rule, std::int64_t{1} << 40, cliques, total));
      for (int a = 0; a < static_cast<int>(graph.states.size()); ++a) {
        for (int b : graph.neighbours[a]) {
          ASSERT_TRUE(std::any_of(cliques.begin(), cliques.end(), [&](const CliqueNodes& clique) {
            return Holds(clique.nodes, {std::min(a, b), std::max(a, b)});
          }));
        }
      }
      for (std::size_t c = 0; c + 1 < cliques.size(); ++c) ASSERT_GE(cliques[c].parent, 0);
    }
  }
}

struct LimitCase {
  const char* name;
  int leaves;  // of a star, or nodes less one of a complete graph
  bool complete;
  int centreStates;
  int leafStates;
  std::int64_t limit;
  bool succeeds;
};
// A star with L leaves makes L - 1 cliques of one leaf and the centre, and the last leaf and the
// centre together: L cliques of weight centre * leaf.
const LimitCase kLimitCases[] = {
    {"a tree within its total", 3, false, 2, 2, 12, true},
    {"a tree is tested at the end alone", 3, false, 2, 2, 11, false},
    {"30 nodes in a clique", 29, true, 1, 1, 99, true},
    {"31 nodes in a clique", 30, true, 1, 1, 99, false},
    {"a weight of exactly 2^30", 1, false, 1 << 15, 32768, std::int64_t{1} << 40, true},
    {"a weight above 2^30", 1, false, 1 << 15, 32769, std::int64_t{1} << 40, false},
};

TEST(Triangulator, LimitsAreWhereTheyAreSaidToBe) {
  for (const LimitCase& c : kLimitCases) {
    SCOPED_TRACE(c.name);
    std::vector<int> states(c.leaves + 1, c.leafStates);
    states[0] = c.centreStates;
    Triangulator graph(states);
    for (int a = 0; a <= c.leaves; ++a) {
      for (int b = a + 1; b <= c.leaves; ++b) {
        if (c.complete || a == 0) graph.Connect(a, b);
      }
    }
    std::vector<CliqueNodes> cliques;
    std::int64_t total = 0;
    EXPECT_EQ(graph.Triangulate(EliminationRule::kLowestWeight, c.limit, cliques, total),
              c.succeeds);
  }
}

TEST(Triangulator, StaysNearLinearOnLargeTreesAndStars) {
  constexpr int kNodes = 50000;
  std::mt19937 random(1);
  for (int shape = 0; shape < 3; ++shape) {
    for (EliminationRule rule : kRules) {
      Triangulator graph(std::vector<int>(kNodes, 2));
      for (int i = 1; i < kNodes; ++i) {
        int other = shape == 0 ? i - 1 : shape == 1 ? 0 : static_cast<int>(random() % i);
        graph.Connect(i, other);
      }
      std::vector<CliqueNodes> cliques;
      std::int64_t total = 0;
      auto start = std::chrono::steady_clock::now();
      ASSERT_TRUE(graph.Triangulate(rule, kTotalWeightLimit, cliques, total));
      ASSERT_EQ(total, 4 * (kNodes - 1));
      // Some 30 ms optimised; quadratic work would take minutes under the sanitizers.
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    }
  }
}
