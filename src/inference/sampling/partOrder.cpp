#include "inference/sampling/partOrder.h"

#include <algorithm>
#include <memory>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "network/walkStack.h"

namespace {

/// A record, and how many of its parents the walk has been to.
struct Frame {
  int number;
  int visited;
};

struct Finding {
  int number;
  double zeroShare;
};

/// Appends the record after all above it that aren't sorted yet.
int AppendFrom(RelevanceGraph& part, int start, KVN_intArray& sorted) {
  if (part.Record(start).mark == kMarkSorted) return 0;
  part.Record(start).mark = kMarkSorted;
  KVN_walkStack<Frame> path;
  if (int result = path.Push({start, 0}); result < 0) return result;
  while (!path.IsEmpty()) {
    Frame& frame = path.Top();
    const KVN_intArray& parents = part.Record(frame.number).parents;
    if (frame.visited == parents.GetNumItems()) {
      if (int result = sorted.Add(frame.number); result < 0) return result;
      path.Pop();
      continue;
    }
    const int parent = parents[frame.visited++];
    if (part.Record(parent).mark == kMarkSorted) continue;
    part.Record(parent).mark = kMarkSorted;
    if (int result = path.Push({parent, 0}); result < 0) return result;
  }
  return 0;
}

int Sort(RelevanceGraph& part, const KVN_intArray& from) {
  // The marks still hold the number of the component, and component 16 has that of a sorted record.
  for (int number : from) part.Record(number).mark = kMarkUntouched;
  KVN_intArray sorted;
  for (int number : from) {
    if (int result = AppendFrom(part, number, sorted); result < 0) return result;
  }
  part.nodes.Swap(sorted);
  for (int i = 0; i < part.GetSize(); ++i) part.Node(i).position = i;
  return 0;
}

double ZeroShareOf(RelevanceNode& record) {
  const KVN_Dmatrix* table = record.GetTable();
  if (table == nullptr) return 0.0;
  const double* cells = table->GetData();
  const auto zeros = std::count(cells, cells + table->GetSize(), 0.0);
  return static_cast<double>(zeros) / table->GetSize();
}

}  // namespace

int SortParentsFirst(RelevanceGraph& part) { return Sort(part, part.nodes); }

int SortEvidenceFirst(RelevanceGraph& part) {
  std::unique_ptr<Finding[]> findings(new (std::nothrow) Finding[part.GetSize()]);
  if (findings == nullptr) return KVN_NO_MEMORY;
  int count = 0;
  for (int number : part.nodes) {
    RelevanceNode& record = part.Record(number);
    if (record.HasEvidence()) findings[count++] = {number, ZeroShareOf(record)};
  }
  // By place among equals: std::stable_sort would allocate.
  for (int i = 0; i < count; ++i) part.Record(findings[i].number).mark = i;
  std::sort(findings.get(), findings.get() + count, [&part](const Finding& a, const Finding& b) {
    if (a.zeroShare != b.zeroShare) return a.zeroShare < b.zeroShare;
    return part.Record(a.number).mark < part.Record(b.number).mark;
  });
  KVN_intArray from;
  for (int i = 0; i < count; ++i) {
    if (int result = from.Add(findings[i].number); result < 0) return result;
  }
  for (int number : part.nodes) {
    if (part.Record(number).HasEvidence()) continue;
    if (int result = from.Add(number); result < 0) return result;
  }
  return Sort(part, from);
}
