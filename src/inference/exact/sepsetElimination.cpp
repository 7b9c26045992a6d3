#include "inference/exact/sepsetElimination.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/exact/indexedHeap.h"
#include "inference/exact/relevanceGraph.h"

namespace {

bool Contains(const KVN_intArray& sorted, int value) {
  return std::binary_search(sorted.begin(), sorted.end(), value);
}

int InsertSorted(KVN_intArray& sorted, int value) {
  const int* place = std::lower_bound(sorted.begin(), sorted.end(), value);
  return sorted.Insert(static_cast<int>(place - sorted.begin()), value);
}

void RemoveSorted(KVN_intArray& sorted, int value) {
  const int* place = std::lower_bound(sorted.begin(), sorted.end(), value);
  (void)sorted.Delete(static_cast<int>(place - sorted.begin()));  // the value is there
}

}  // namespace

int SepsetElimination::Run() {
  int size = part.GetSize();
  clusters.reset(new (std::nothrow) Cluster[size]);
  cliques.reset(new (std::nothrow) KVN_intArray[size]);
  cliquesOf.reset(new (std::nothrow) KVN_intArray[size]);
  if (clusters == nullptr || cliques == nullptr || cliquesOf == nullptr) return KVN_NO_MEMORY;
  if (int result = LinkFamilies(); result < 0) return result;

  IndexedHeap heap([this](int a, int b) { return ComesBefore(a, b); });
  if (int result = heap.Reserve(size); result < 0) return result;
  for (int i = 0; i < size; ++i) {
    Count(i);
    heap.Put(i);
  }
  // The last node is part of a clique by then.
  for (int step = 0; step < size - 1; ++step) {
    int node = heap.Pop();
    if (int result = Eliminate(node); result < 0) return result;
    for (int neighbour : clusters[node].neighbours) {
      Count(neighbour);
      heap.Put(neighbour);  // at once: the heap can take one changed key at a time
    }
  }
  return 0;
}

int SepsetElimination::LinkFamilies() {
  for (int i = 0; i < part.GetSize(); ++i) {
    const KVN_intArray& parents = part.Node(i).parents;
    for (int a = 0; a < parents.GetNumItems(); ++a) {
      int parent = part.Record(parents[a]).position;
      if (int result = Link(i, parent); result < 0) return result;
      for (int b = 0; b < a; ++b) {
        if (int result = Link(parent, part.Record(parents[b]).position); result < 0) return result;
      }
    }
  }
  return 0;
}

bool SepsetElimination::IsLinked(int a, int b) const {
  const KVN_intArray& ofA = clusters[a].neighbours;
  const KVN_intArray& ofB = clusters[b].neighbours;
  return ofA.GetNumItems() < ofB.GetNumItems() ? Contains(ofA, b) : Contains(ofB, a);
}

/// Adds the edge unless it stands.
int SepsetElimination::Link(int a, int b) {
  if (a == b || IsLinked(a, b)) return 0;
  bool aIsSmaller = clusters[a].neighbours.GetNumItems() < clusters[b].neighbours.GetNumItems();
  int larger = aIsSmaller ? b : a;
  for (int common : clusters[aIsSmaller ? a : b].neighbours) {
    if (!Contains(clusters[larger].neighbours, common)) continue;
    ++clusters[common].edges;  // a - b
    ++clusters[a].edges;       // b - common
    ++clusters[b].edges;
  }
  if (int result = InsertSorted(clusters[a].neighbours, b); result < 0) return result;
  return InsertSorted(clusters[b].neighbours, a);
}

void SepsetElimination::Count(int node) {
  Cluster& cluster = clusters[node];
  std::int64_t degree = cluster.neighbours.GetNumItems();
  // Without neighbours it goes last.
  cluster.fillIns = degree == 0 ? std::numeric_limits<std::int64_t>::max()
                                : degree * (degree - 1) / 2 - cluster.edges;
  cluster.weight = part.Node(node).outcomes;
  for (int neighbour : cluster.neighbours) {
    cluster.weight *= part.Node(neighbour).outcomes;
    if (std::isinf(cluster.weight)) break;
  }
}

bool SepsetElimination::ComesBefore(int a, int b) const {
  const Cluster& first = clusters[a];
  const Cluster& second = clusters[b];
  if (first.fillIns != second.fillIns) return first.fillIns < second.fillIns;
  if (first.weight != second.weight) return first.weight < second.weight;
  return a < b;
}

/// Takes the node out of the graph; its own list of neighbours stays.
int SepsetElimination::Eliminate(int node) {
  Cluster& cluster = clusters[node];
  if (int result = LinkNeighbours(cluster); result < 0) return result;
  int degree = cluster.neighbours.GetNumItems();
  for (int neighbour : cluster.neighbours) {
    // All neighbours are linked with each other now, so the node had this many edges to those of
    // each of them.
    clusters[neighbour].edges -= degree - 1;
    RemoveSorted(clusters[neighbour].neighbours, node);
  }
  KVN_intArray variables;
  if (int result = variables.Assign(cluster.neighbours); result < 0) return result;
  if (int result = InsertSorted(variables, node); result < 0) return result;
  return AddClique(variables, node);
}

int SepsetElimination::LinkNeighbours(const Cluster& cluster) {
  const KVN_intArray& list = cluster.neighbours;
  std::int64_t degree = list.GetNumItems();
  if (degree * (degree - 1) / 2 == cluster.edges) return 0;
  for (int a = 0; a < list.GetNumItems(); ++a) {
    for (int b = a + 1; b < list.GetNumItems(); ++b) {
      if (int result = Link(list[a], list[b]); result < 0) return result;
    }
  }
  return 0;
}

/// A cluster within an earlier clique makes no new one.
int SepsetElimination::AddClique(const KVN_intArray& cluster, int node) {
  for (int index : cliquesOf[node]) {
    const KVN_intArray& clique = cliques[index];
    if (std::includes(clique.begin(), clique.end(), cluster.begin(), cluster.end())) return 0;
  }
  if (int result = cliques[count].Assign(cluster); result < 0) return result;
  for (int variable : cluster) {
    if (int result = cliquesOf[variable].Add(count); result < 0) return result;
  }
  ++count;
  return 0;
}
