#include "inference/exact/sepsetSpanningTree.h"

#include <algorithm>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/exact/indexedHeap.h"
#include "inference/exact/relevanceGraph.h"
#include "inference/exact/sepsetElimination.h"

SepsetSpanningTree::SepsetSpanningTree(RelevanceGraph& thePart, const SepsetElimination& theCliques)
    : part(thePart), cliques(theCliques), count(theCliques.GetCount()) {}

int SepsetSpanningTree::Run() {
  if (int result = CountCells(); result < 0) return result;
  if (int result = ChooseLinks(); result < 0) return result;
  return OrderCliques();
}

int SepsetSpanningTree::CountCells() {
  cells.reset(new (std::nothrow) double[count]);
  if (cells == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < count; ++i) {
    cells[i] = 1.0;
    for (int variable : cliques.Clique(i)) cells[i] *= part.Node(variable).outcomes;
  }
  return 0;
}

bool SepsetSpanningTree::IsBetter(const Link& a, const Link& b) {
  if (a.mass != b.mass) return a.mass > b.mass;
  if (a.cost != b.cost) return a.cost < b.cost;
  return a.to != b.to ? a.to < b.to : a.from < b.from;
}

/// Prim's rule: the best link between the tree and a clique outside, again and again.
int SepsetSpanningTree::ChooseLinks() {
  best.reset(new (std::nothrow) Link[count]);
  links.reset(new (std::nothrow) Link[count]);
  if (best == nullptr || links == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < count; ++i) best[i].to = i;
  KVN_intArray common;
  KVN_intArray met;
  if (int result = common.SetSize(count); result < 0) return result;
  if (int result = met.SetSize(count); result < 0) return result;
  IndexedHeap heap([this](int a, int b) { return IsBetter(best[a], best[b]); });
  if (int result = heap.Reserve(count); result < 0) return result;

  int joined = 0;
  best[0].to = -1;
  for (int chosen = 0; chosen < count - 1; ++chosen) {
    CountCommon(joined, common, met);
    for (int other : met) {
      Link link{joined, other, common[other], cells[joined] + cells[other]};
      common[other] = 0;
      if (!IsBetter(link, best[other])) continue;
      best[other] = link;
      heap.Put(other);  // at once: the heap can take one changed key at a time
    }
    links[chosen] = heap.IsEmpty() ? LinkToNearest() : best[heap.Pop()];
    joined = links[chosen].to;
    best[joined].to = -1;
  }
  return 0;
}

/// Lists the cliques outside that have variables in common with `clique`, and how many. `common` is
/// all zero before.
void SepsetSpanningTree::CountCommon(int clique, KVN_intArray& common, KVN_intArray& met) const {
  int found = 0;
  for (int variable : cliques.Clique(clique)) {
    for (int other : cliques.CliquesOf(variable)) {
      if (!IsInTree(other) && common[other]++ == 0) met[found++] = other;
    }
  }
  met.UseAsList(found);
}

/// Every link from the tree has an empty intersection: the smallest cliques cost the least.
SepsetSpanningTree::Link SepsetSpanningTree::LinkToNearest() const {
  Link link{-1, -1, 0, 0.0};
  for (int i = 0; i < count; ++i) {
    int& end = IsInTree(i) ? link.from : link.to;
    if (end < 0 || cells[i] < cells[end]) end = i;
  }
  link.cost = cells[link.from] + cells[link.to];
  return link;
}

/// Breadth first, the neighbours of a clique by their links, best first.
int SepsetSpanningTree::OrderCliques() {
  std::unique_ptr<KVN_intArray[]> neighbours(new (std::nothrow) KVN_intArray[count]);
  if (neighbours == nullptr) return KVN_NO_MEMORY;
  std::sort(links.get(), links.get() + (count - 1), IsBetter);
  for (int i = 0; i < count - 1; ++i) {
    if (int result = neighbours[links[i].from].Add(links[i].to); result < 0) return result;
    if (int result = neighbours[links[i].to].Add(links[i].from); result < 0) return result;
  }
  if (int result = placeOf.SetSize(count); result < 0) return result;
  placeOf.FillWith(-1);
  int root = static_cast<int>(std::min_element(cells.get(), cells.get() + count) - cells.get());
  placeOf[root] = 0;
  if (int result = order.Add(root); result < 0) return result;
  if (int result = parentPlaces.Add(-1); result < 0) return result;
  for (int place = 0; place < order.GetNumItems(); ++place) {
    for (int next : neighbours[order[place]]) {
      if (placeOf[next] >= 0) continue;
      placeOf[next] = order.GetNumItems();
      if (int result = order.Add(next); result < 0) return result;
      if (int result = parentPlaces.Add(place); result < 0) return result;
    }
  }
  return 0;
}
