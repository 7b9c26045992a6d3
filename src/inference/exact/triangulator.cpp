#include "inference/exact/triangulator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <tuple>
#include <utility>

namespace {

constexpr int kMatrixNodes = 2048;        // up to here a bit matrix is the faster set of edges
constexpr double kLogScale = 1 << 20;     // logarithms as integers: sums of them are exact
constexpr double kLogWeightBound = 30.5;  // above log2 of kCliqueWeightLimit, below the next state

}  // namespace

Triangulator::EdgeSet::EdgeSet(int count) : nodeCount(count) {
  if (nodeCount <= kMatrixNodes) {
    bits.assign((static_cast<std::size_t>(nodeCount) * nodeCount + 63) / 64, 0);
  } else {
    table.assign(std::size_t{1} << 16, 0);
  }
}

std::uint64_t Triangulator::EdgeSet::KeyOf(int a, int b) {
  if (a > b) std::swap(a, b);
  return (static_cast<std::uint64_t>(a) << 32 | static_cast<unsigned>(b)) + 1;
}

bool Triangulator::EdgeSet::Has(int a, int b) const {
  if (!bits.empty()) {
    std::size_t bit = static_cast<std::size_t>(a) * nodeCount + b;
    return (bits[bit / 64] >> (bit % 64) & 1) != 0;
  }
  std::uint64_t key = KeyOf(a, b);
  std::size_t mask = table.size() - 1;
  for (std::size_t i = key * 0x9E3779B97F4A7C15u >> 20 & mask;; i = (i + 1) & mask) {
    if (table[i] == key) return true;
    if (table[i] == 0) return false;
  }
}

bool Triangulator::EdgeSet::Add(int a, int b) {
  if (Has(a, b)) return false;
  if (!bits.empty()) {
    for (auto [x, y] : {std::pair(a, b), std::pair(b, a)}) {
      std::size_t bit = static_cast<std::size_t>(x) * nodeCount + y;
      bits[bit / 64] |= std::uint64_t{1} << (bit % 64);
    }
    return true;
  }
  if (2 * ++used > table.size()) Grow();
  std::uint64_t key = KeyOf(a, b);
  std::size_t mask = table.size() - 1;
  std::size_t i = key * 0x9E3779B97F4A7C15u >> 20 & mask;
  while (table[i] != 0) i = (i + 1) & mask;
  table[i] = key;
  return true;
}

void Triangulator::EdgeSet::Grow() {
  std::vector<std::uint64_t> old(table.size() * 2, 0);
  old.swap(table);
  std::size_t mask = table.size() - 1;
  for (std::uint64_t key : old) {
    if (key == 0) continue;
    std::size_t i = key * 0x9E3779B97F4A7C15u >> 20 & mask;
    while (table[i] != 0) i = (i + 1) & mask;
    table[i] = key;
  }
}

Triangulator::Triangulator(std::vector<int> stateCounts)
    : states(std::move(stateCounts)),
      nodes(states.size()),
      edges(static_cast<int>(states.size())),
      isListed(states.size(), 0),
      isTouched(states.size(), 0),
      remaining(static_cast<int>(states.size())) {}

void Triangulator::Connect(int a, int b) {
  if (a == b || !edges.Add(a, b)) return;
  for (auto [x, y] : {std::pair(a, b), std::pair(b, a)}) {
    nodes[x].neighbours.push_back(y);
    ++nodes[x].degree;
  }
}

template <typename Visit>
void Triangulator::ForEachNeighbour(int node, Visit visit) const {
  for (int neighbour : nodes[node].neighbours) {
    if (!nodes[neighbour].eliminated) visit(neighbour);
  }
}

std::int64_t Triangulator::EdgeCost(int a, int b) const {
  switch (rule) {
    case EliminationRule::kLogarithmicFillIns:
      return measure[a] + measure[b];
    case EliminationRule::kWeightedFillIns:
      return measure[a] * measure[b];
    default:
      return 1;
  }
}

/// Cost of the edges between `other` and those neighbours of `node` that it is not adjacent to.
/// Found through the common neighbours, on the side with fewer: a hub is never walked.
std::int64_t Triangulator::MissingCost(int node, int other) const {
  std::int64_t count = nodes[node].degree;
  std::int64_t sum = nodes[node].stateSum;
  auto leaveOut = [&](int x) {
    --count;
    sum -= measure[x];
  };
  if (IsAdjacent(node, other)) leaveOut(other);
  bool otherIsSmaller = nodes[other].neighbours.size() < nodes[node].neighbours.size();
  ForEachNeighbour(otherIsSmaller ? other : node, [&](int x) {
    if (x != node && x != other && IsAdjacent(x, otherIsSmaller ? node : other)) leaveOut(x);
  });
  switch (rule) {
    case EliminationRule::kLogarithmicFillIns:
      return sum + count * measure[other];
    case EliminationRule::kWeightedFillIns:
      return sum * measure[other];
    default:
      return count;
  }
}

void Triangulator::InitialiseCosts() {
  int n = static_cast<int>(nodes.size());
  measure.resize(n);
  for (int i = 0; i < n; ++i) {
    // The 1 keeps an edge between observed nodes from costing nothing: a cost of 0 must mean that
    // no edge is missing.
    measure[i] = rule == EliminationRule::kLogarithmicFillIns
                     ? std::llround(std::log2(static_cast<double>(states[i])) * kLogScale) + 1
                     : states[i];
  }
  for (int i = 0; i < n; ++i) {
    Node& node = nodes[i];
    node.logWeight = std::log2(static_cast<double>(states[i]));
    std::int64_t squares = 0;
    for (int x : node.neighbours) {
      node.stateSum += measure[x];
      squares += measure[x] * measure[x];
      node.logWeight += std::log2(static_cast<double>(states[x]));
    }
    // The cost of all pairs of neighbours; the edges that stand are taken off below.
    std::int64_t d = node.degree;
    switch (rule) {
      case EliminationRule::kLogarithmicFillIns:
        node.cost = (d - 1) * node.stateSum;
        break;
      case EliminationRule::kWeightedFillIns:
        node.cost = (node.stateSum * node.stateSum - squares) / 2;
        break;
      default:
        node.cost = d * (d - 1) / 2;
    }
  }
  for (int a = 0; a < n; ++a) {
    for (int b : nodes[a].neighbours) {
      if (b < a) continue;
      bool aIsSmaller = nodes[a].degree < nodes[b].degree;
      int far = aIsSmaller ? b : a;
      for (int x : nodes[aIsSmaller ? a : b].neighbours) {
        if (x != far && IsAdjacent(x, far)) nodes[x].cost -= EdgeCost(a, b);
      }
    }
  }
}

void Triangulator::Touch(int node) {
  if (isTouched[node] != 0) return;
  isTouched[node] = 1;
  touched.push_back(node);
}

void Triangulator::AddFillIn(int a, int b) {
  std::int64_t saved = EdgeCost(a, b);
  bool aIsSmaller = nodes[a].neighbours.size() < nodes[b].neighbours.size();
  int far = aIsSmaller ? b : a;
  ForEachNeighbour(aIsSmaller ? a : b, [&](int x) {
    if (!IsAdjacent(x, far)) return;
    nodes[x].cost -= saved;
    Touch(x);
  });
  std::int64_t missingOfA = MissingCost(a, b);
  std::int64_t missingOfB = MissingCost(b, a);
  (void)edges.Add(a, b);
  for (auto [x, y, missing] : {std::tuple(a, b, missingOfA), std::tuple(b, a, missingOfB)}) {
    Node& node = nodes[x];
    node.cost += missing;
    node.neighbours.push_back(y);
    ++node.degree;
    node.stateSum += measure[y];
    node.logWeight += std::log2(static_cast<double>(states[y]));
    node.weight *= states[y];
    if (node.weight > kCliqueWeightLimit) node.weight = 0;
    Touch(x);
  }
}

/// Product of the states of a node and its neighbours, 0 when it is too large.
std::int64_t Triangulator::Weight(int node) {
  if (nodes[node].weight != 0) return nodes[node].weight;
  if (nodes[node].logWeight > kLogWeightBound) return 0;
  std::int64_t weight = states[node];
  ForEachNeighbour(node, [&](int x) { weight *= states[x]; });
  if (weight > kCliqueWeightLimit) return 0;
  return nodes[node].weight = weight;
}

void Triangulator::Eliminate(int v) {
  double logStates = std::log2(static_cast<double>(states[v]));
  ForEachNeighbour(v, [&](int u) { nodes[u].cost -= MissingCost(u, v); });
  nodes[v].eliminated = true;
  --remaining;
  for (int u : nodes[v].neighbours) {
    Node& node = nodes[u];
    if (node.eliminated) continue;
    --node.degree;
    node.stateSum -= measure[v];
    node.logWeight -= logStates;
    node.weight /= states[v];
    if (static_cast<int>(node.neighbours.size()) > 2 * node.degree + 8) {
      std::erase_if(node.neighbours, [this](int x) { return nodes[x].eliminated; });
    }
    Touch(u);
  }
}

bool Triangulator::MakeClique(int node, std::int64_t weight, std::vector<CliqueNodes>& cliques) {
  std::vector<int> members;
  ForEachNeighbour(node, [&](int x) { members.push_back(x); });
  CliqueNodes& clique = cliques.emplace_back();
  clique.eliminatedNode = node;
  clique.weight = weight;
  total += weight;
  if (static_cast<int>(members.size()) >= kCliqueNodeLimit) return false;
  Eliminate(node);
  clique.nodes = members;
  clique.nodes.push_back(node);
  int outside = static_cast<int>(members.size()) - 1;  // degree of one with no further neighbour
  for (int x : members) {
    if (nodes[x].degree == outside) {
      Eliminate(x);
      --outside;
    } else {
      clique.separator.push_back(x);
    }
  }
  std::sort(clique.nodes.begin(), clique.nodes.end());
  std::sort(clique.separator.begin(), clique.separator.end());
  return true;
}

/// Sweeps over the indices in ascending order until a whole sweep finds no simplicial node; only
/// nodes whose neighbourhood has changed are looked at again.
bool Triangulator::EliminateSimplicial(std::vector<CliqueNodes>& cliques) {
  auto collect = [this](std::vector<int>& sweep, int above, std::vector<int>& next) {
    for (int x : touched) {
      isTouched[x] = 0;
      Push(x);
      if (nodes[x].eliminated || nodes[x].cost != 0 || isListed[x] != 0) continue;
      isListed[x] = 1;
      std::vector<int>& list = x > above ? sweep : next;
      list.push_back(x);
      if (&list == &sweep) std::push_heap(sweep.begin(), sweep.end(), std::greater<>());
    }
    touched.clear();
  };
  std::vector<int> next;
  collect(next, static_cast<int>(nodes.size()), next);
  while (!next.empty()) {
    std::vector<int> sweep;
    sweep.swap(next);
    std::make_heap(sweep.begin(), sweep.end(), std::greater<>());
    while (!sweep.empty()) {
      std::pop_heap(sweep.begin(), sweep.end(), std::greater<>());
      int node = sweep.back();
      sweep.pop_back();
      isListed[node] = 0;
      if (nodes[node].eliminated || nodes[node].cost != 0) continue;
      std::int64_t weight = Weight(node);
      if (weight == 0 || !MakeClique(node, weight, cliques)) return false;
      collect(sweep, node, next);
    }
  }
  return true;
}

void Triangulator::Push(int node) {
  if (nodes[node].eliminated) return;
  std::int64_t key = nodes[node].cost;
  if (rule == EliminationRule::kLowestWeight && (key = Weight(node)) == 0) return;
  heap.push_back({key, node});
  std::push_heap(heap.begin(), heap.end(), std::greater<>());
}

/// The node with the lowest key, -1 if there is none.
int Triangulator::TakeBest() {
  while (!heap.empty()) {
    std::pop_heap(heap.begin(), heap.end(), std::greater<>());
    Candidate best = heap.back();
    heap.pop_back();
    if (nodes[best.node].eliminated) continue;
    bool byWeight = rule == EliminationRule::kLowestWeight;
    if (best.key == (byWeight ? Weight(best.node) : nodes[best.node].cost)) return best.node;
  }
  return -1;
}

bool Triangulator::Triangulate(EliminationRule theRule, std::int64_t limit,
                               std::vector<CliqueNodes>& cliques, std::int64_t& totalWeight) {
  rule = theRule;
  cliques.clear();
  cliques.reserve(nodes.size());
  InitialiseCosts();
  for (int i = 0; i < static_cast<int>(nodes.size()); ++i) Touch(i);
  while (remaining > 0) {
    if (!EliminateSimplicial(cliques)) return false;
    totalWeight = total;
    if (remaining == 0) break;
    int node = TakeBest();
    if (node < 0) return false;
    std::int64_t weight = Weight(node);
    if (weight == 0) return false;
    std::vector<int> members;
    ForEachNeighbour(node, [&](int x) { members.push_back(x); });
    if (static_cast<int>(members.size()) >= kCliqueNodeLimit) return false;
    for (std::size_t i = 0; i < members.size(); ++i) {
      for (std::size_t j = i + 1; j < members.size(); ++j) {
        if (!IsAdjacent(members[i], members[j])) AddFillIn(members[i], members[j]);
      }
    }
    if (!MakeClique(node, weight, cliques)) return false;
    totalWeight = total;
    if (total > limit) return false;
  }
  totalWeight = total;
  if (total > limit) return false;
  Link(cliques, static_cast<int>(nodes.size()));
  return true;
}

void Triangulator::Link(std::vector<CliqueNodes>& cliques, int nodeCount) {
  std::vector<std::vector<int>> cliquesOf(nodeCount);  // ascending
  for (int c = 0; c < static_cast<int>(cliques.size()); ++c) {
    for (int x : cliques[c].nodes) cliquesOf[x].push_back(c);
  }
  auto fewest = [&](int a, int b) { return cliquesOf[a].size() < cliquesOf[b].size(); };
  for (int c = 0; c + 1 < static_cast<int>(cliques.size()); ++c) {
    const std::vector<int>& separator = cliques[c].separator;
    if (separator.empty()) {
      cliques[c].parent = c + 1;  // any later clique holds nothing at all
      continue;
    }
    const std::vector<int>& list =
        cliquesOf[*std::min_element(separator.begin(), separator.end(), fewest)];
    for (auto i = std::upper_bound(list.begin(), list.end(), c); i != list.end(); ++i) {
      const std::vector<int>& nodes = cliques[*i].nodes;
      if (std::includes(nodes.begin(), nodes.end(), separator.begin(), separator.end())) {
        cliques[c].parent = *i;
        break;
      }
    }
  }
}
