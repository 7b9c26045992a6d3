#include <memory>
#include <new>
#include <utility>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/nodeDefinition.h"
#include "definitions/noisyMAX.h"
#include "foundation/doubleArray.h"
#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "network/network.h"
#include "network/node.h"
#include "network/userProperties.h"
#include "network/walkStack.h"
#include "values/nodeValue.h"

namespace {

constexpr const char* kNoisyMaxProperty = "KVN_NOISYMAXRELEVANCE";

/// Marks all nodes as targets when none is, for as long as a reduction runs.
class TemporaryTargets {
 public:
  explicit TemporaryTargets(KVN_network& theNetwork)
      : network(theNetwork), all(theNetwork.GetNumberOfTargets() == 0) {
    if (!all) return;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      (void)network.SetTarget(h);
    }
  }
  TemporaryTargets(const TemporaryTargets&) = delete;
  TemporaryTargets& operator=(const TemporaryTargets&) = delete;
  ~TemporaryTargets() {
    if (all) (void)network.ClearAllTargets();
  }

 private:
  KVN_network& network;
  bool all;
};

/// The walks of one reduction over its graph. A failure of memory is noted in `failure` and makes
/// the reduction as a whole fail.
class Reducer {
 public:
  explicit Reducer(RelevanceGraph& theGraph) : graph(theGraph), network(theGraph.GetNetwork()) {}

  int RemoveBarrenNodes();
  int PropagateDeterminism();
  int CutBelowEvidence();
  int AbsorbRoots();
  /// Takes the records with this mark out of the graph.
  void Destroy(int mark);
  /// Numbers the components that hold a target, from 1.
  int LabelComponents(int& components);
  std::unique_ptr<RelevanceParts> MakeParts(int components);

 private:
  /// One level of the depth-first walk of PropagateDeterminism.
  struct Frame {
    int number = -1;
    bool inParents = false;
    int next = 0;
    KVN_intArray snapshot;  // children or parents as they were when the loop began
  };

  RelevanceNode& Record(int number) { return graph.Record(number); }
  bool IsTarget(const RelevanceNode& record) const {
    return record.node != nullptr && network.IsTarget(record.node->Handle()) == 1;
  }
  bool MayBecomeEvidence(const RelevanceNode& record) const {
    return record.mark != kMarkBarren && !record.HasEvidence() && record.outcomes >= 1;
  }
  int StepDeterminism(KVN_walkStack<Frame>& frames);
  int Enter(KVN_walkStack<Frame>& frames, int number);
  int ForcedChildOutcome(int parent, int child);
  int ForcedParentOutcome(int child, int parent);
  int ForceChild(int child, int outcome);
  int ForceParent(int child, int parent, int outcome);
  int FixParent(int child, int parent, int outcome);
  int AbsorbRoot(int number);
  int Flood(int number, int component);

  RelevanceGraph& graph;
  KVN_network& network;
};

/// Coordinates that leave every dimension of `table` free.
int FreeCoordinates(const KVN_Dmatrix& table, KVN_intArray& coordinates) {
  if (int result = coordinates.SetSize(table.GetNumberOfDimensions()); result < 0) return result;
  coordinates.FillWith(-1);
  coordinates.UseAsList(-1);
  return 0;
}

/// Keeps of `list` the numbers for which `keep` holds, in order.
template <typename Keep>
void Filter(KVN_intArray& list, Keep keep) {
  int kept = 0;
  for (int i = 0; i < list.GetNumItems(); ++i) {
    if (keep(list[i])) list[kept++] = list[i];
  }
  list.UseAsList(kept);
}

int Reducer::RemoveBarrenNodes() {
  // Counters instead of lists that shrink one by one: a hub may have as many children as there are
  // nodes. The set that goes doesn't depend on the order of the visits.
  KVN_intArray remaining;
  if (int result = remaining.SetSize(graph.GetPool().GetCount()); result < 0) return result;
  for (int number : graph.nodes) remaining[number] = Record(number).children.GetNumItems();
  KVN_intArray pending;
  auto removeIfBarren = [&](int number) {
    RelevanceNode& record = Record(number);
    if (record.HasEvidence() || IsTarget(record) || record.mark == kMarkBarren ||
        remaining[number] > 0) {
      return 0;
    }
    record.mark = kMarkBarren;
    return pending.Add(number);
  };
  for (int number : graph.nodes) {
    if (int result = removeIfBarren(number); result < 0) return result;
    while (pending.GetNumItems() > 0) {
      int barren = pending[pending.GetNumItems() - 1];
      pending.UseAsList(pending.GetNumItems() - 1);
      for (int parent : Record(barren).parents) {
        --remaining[parent];
        if (int result = removeIfBarren(parent); result < 0) return result;
      }
      Record(barren).parents.Flush();
    }
  }
  for (int number : graph.nodes) {
    Filter(Record(number).children,
           [this](int child) { return Record(child).mark != kMarkBarren; });
  }
  return 0;
}

void Reducer::Destroy(int mark) {
  auto stays = [this, mark](int number) { return Record(number).mark != mark; };
  for (int number : graph.nodes) {
    RelevanceNode& record = Record(number);
    if (record.mark == mark) {
      record.DropTable();
      continue;
    }
    Filter(record.parents, stays);
    Filter(record.children, stays);
  }
  Filter(graph.nodes, stays);
}

/// First outcome that the child takes for certain, given the parent's evidence; -1 if none.
int Reducer::ForcedChildOutcome(int parent, int child) {
  RelevanceNode& record = Record(child);
  const KVN_Dmatrix* table = record.GetTable();
  if (table == nullptr) return KVN_NO_MEMORY;
  KVN_intArray at;
  if (int result = FreeCoordinates(*table, at); result < 0) return result;
  at[record.parents.FindPosition(parent)] = Record(parent).evidence;
  int own = table->GetNumberOfDimensions() - 1;
  for (int k = 0; k < record.outcomes; ++k) {
    at[own] = k;
    if (table->IsSliceAllEqualTo(1.0, at) == 1) return k;
  }
  return -1;
}

/// The one outcome of the parent that leaves the child's evidence possible; -1 unless exactly one.
int Reducer::ForcedParentOutcome(int child, int parent) {
  RelevanceNode& record = Record(child);
  const KVN_Dmatrix* table = record.GetTable();
  if (table == nullptr) return KVN_NO_MEMORY;
  KVN_intArray at;
  if (int result = FreeCoordinates(*table, at); result < 0) return result;
  at[table->GetNumberOfDimensions() - 1] = record.evidence;
  int dimension = record.parents.FindPosition(parent);
  int found = -1;
  for (int u = 0; u < Record(parent).outcomes; ++u) {
    at[dimension] = u;
    if (table->IsSliceAllEqualTo(0.0, at) != 0) continue;
    if (found >= 0) return -1;
    found = u;
  }
  return found;
}

int Reducer::ForceChild(int child, int outcome) {
  RelevanceNode& record = Record(child);
  if (int result = SetRecordEvidence(record, outcome); result < 0) return result;
  for (int parent : record.parents) (void)Record(parent).children.DeleteByContent(child);
  record.parents.Flush();
  KVN_Dmatrix table;
  if (int result = table.Setup(&record.outcomes, 1); result < 0) return result;
  table[outcome] = 1.0;
  return record.SetTable(std::move(table));
}

int Reducer::ForceParent(int child, int parent, int outcome) {
  if (int result = SetRecordEvidence(Record(parent), outcome); result < 0) return result;
  (void)Record(parent).children.DeleteByContent(child);
  return FixParent(child, parent, outcome);
}

/// Cuts the child's table at an outcome of the parent and takes the arc away from the child.
int Reducer::FixParent(int child, int parent, int outcome) {
  RelevanceNode& record = Record(child);
  const KVN_Dmatrix* table = record.GetTable();
  if (table == nullptr) return KVN_NO_MEMORY;
  int dimension = record.parents.FindPosition(parent);
  KVN_intArray sizes;
  KVN_doubleArray cells;
  if (int result = table->GetSlice(dimension, outcome, sizes, cells); result < 0) return result;
  KVN_Dmatrix cut;
  if (int result = cut.Setup(sizes); result < 0) return result;
  cut.GetItems().CopyItems(cells);
  if (int result = record.SetTable(std::move(cut)); result < 0) return result;
  return record.parents.Delete(dimension);
}

int Reducer::Enter(KVN_walkStack<Frame>& frames, int number) {
  Record(number).mark = kMarkDeterminismDone;
  Frame frame;
  frame.number = number;
  if (int result = frame.snapshot.Assign(Record(number).children); result < 0) return result;
  return frames.Push(std::move(frame));
}

/// One neighbour of the record on top, or the step back from it. A neighbour that has left the
/// lists since the loop began has evidence by now, so the test for evidence passes over it.
int Reducer::StepDeterminism(KVN_walkStack<Frame>& frames) {
  Frame& top = frames.Top();
  int number = top.number;
  if (top.next == top.snapshot.GetNumItems()) {
    if (top.inParents) {
      frames.Pop();
    } else {
      top.inParents = true;
      top.next = 0;
      return top.snapshot.Assign(Record(number).parents);
    }
    return 0;
  }
  int neighbour = top.snapshot[top.next++];
  if (!MayBecomeEvidence(Record(neighbour))) return 0;
  bool toParent = top.inParents;
  int outcome =
      toParent ? ForcedParentOutcome(number, neighbour) : ForcedChildOutcome(number, neighbour);
  if (outcome < -1) return outcome;
  if (outcome < 0) return 0;
  int result = toParent ? ForceParent(number, neighbour, outcome) : ForceChild(neighbour, outcome);
  if (result < 0) return result;
  return Enter(frames, neighbour);
}

int Reducer::PropagateDeterminism() {
  KVN_walkStack<Frame> frames;
  for (int number : graph.nodes) {
    if (Record(number).mark != kMarkUntouched || !Record(number).HasEvidence()) continue;
    if (int result = Enter(frames, number); result < 0) return result;
    while (!frames.IsEmpty()) {
      if (int result = StepDeterminism(frames); result < 0) return result;
    }
  }
  return 0;
}

int Reducer::CutBelowEvidence() {
  for (int number : graph.nodes) {
    RelevanceNode& record = Record(number);
    if (!record.HasEvidence()) continue;
    for (int child : record.children) {
      if (int result = FixParent(child, number, record.evidence); result < 0) return result;
    }
    record.children.Flush();
  }
  return 0;
}

/// Sums a root into its only child, and then that child if it has become such a root itself.
int Reducer::AbsorbRoot(int number) {
  for (;;) {
    RelevanceNode& record = Record(number);
    if (record.HasEvidence() || IsTarget(record) || record.mark == kMarkAbsorbedRoot ||
        record.parents.GetNumItems() > 0 || record.children.GetNumItems() != 1) {
      return 0;
    }
    record.mark = kMarkAbsorbedRoot;
    int child = record.children[0];
    RelevanceNode& below = Record(child);
    const KVN_Dmatrix* weights = record.GetTable();
    const KVN_Dmatrix* table = below.GetTable();
    if (weights == nullptr || table == nullptr) return KVN_NO_MEMORY;
    int dimension = below.parents.FindPosition(number);
    KVN_Dmatrix summed;
    int result = table->WeightedCopy(dimension, weights->GetItems(), summed);
    if (result < 0) return result;
    if (result = below.SetTable(std::move(summed)); result < 0) return result;
    if (result = below.parents.Delete(dimension); result < 0) return result;
    record.children.Flush();
    number = child;
  }
}

int Reducer::AbsorbRoots() {
  for (int number : graph.nodes) {
    if (int result = AbsorbRoot(number); result < 0) return result;
  }
  Destroy(kMarkAbsorbedRoot);
  return 0;
}

int Reducer::Flood(int number, int component) {
  KVN_intArray pending;
  if (int result = pending.Add(number); result < 0) return result;
  Record(number).mark = component;
  while (pending.GetNumItems() > 0) {
    const RelevanceNode& record = Record(pending[pending.GetNumItems() - 1]);
    pending.UseAsList(pending.GetNumItems() - 1);
    for (const KVN_intArray* list : {&record.parents, &record.children}) {
      for (int neighbour : *list) {
        if (Record(neighbour).mark != 0) continue;
        Record(neighbour).mark = component;
        if (int result = pending.Add(neighbour); result < 0) return result;
      }
    }
  }
  return 0;
}

int Reducer::LabelComponents(int& components) {
  for (int number : graph.nodes) Record(number).mark = 0;
  for (int number : graph.nodes) {
    if (Record(number).mark != 0 || !IsTarget(Record(number))) continue;
    if (int result = Flood(number, ++components); result < 0) return result;
  }
  return 0;
}

std::unique_ptr<RelevanceParts> Reducer::MakeParts(int components) {
  std::unique_ptr<RelevanceParts> parts(new (std::nothrow) RelevanceParts);
  if (parts == nullptr || parts->Reserve(components) < 0) return nullptr;
  for (int i = 0; i < components; ++i) {
    std::unique_ptr<RelevanceGraph> part(new (std::nothrow)
                                             RelevanceGraph(network, graph.GetPool()));
    if (part == nullptr) return nullptr;
    part->noisyMaxRelevance = graph.noisyMaxRelevance;
    parts->Add(std::move(part));
  }
  for (int number : graph.nodes) {
    RelevanceNode& record = Record(number);
    if (record.mark == 0) {
      record.DropTable();
      continue;
    }
    RelevanceGraph& part = (*parts)[record.mark - 1];
    record.position = part.GetSize();
    if (part.nodes.Add(number) < 0) return nullptr;
    if (record.HasEvidence()) ++part.evidenceCount;
  }
  graph.nodes.Flush();  // the records belong to the parts now
  for (int i = 0; i < components; ++i) {
    RelevanceNode& first = (*parts)[i].Node(0);
    if ((*parts)[i].GetSize() > 1 || !first.HasEvidence()) continue;
    if (SetRecordEvidence(first, first.evidence) < 0) return nullptr;
    parts->Free(i);
  }
  parts->Compact();
  return parts;
}

/// Whether gates observed in their last outcome are decomposed: the network's flag, which the user
/// property replaces if it exists.
bool ReadNoisyMaxRelevance(KVN_network& network) {
  const KVN_userProperties& properties = network.UserProperties();
  if (properties.FindProperty(kNoisyMaxProperty) < 0) return network.GetNoisyMaxRelevance() != 0;
  return properties.GetInteger(kNoisyMaxProperty) != 0;
}

/// A node whose value carries the reserved flag is a root with a table of two cells. It is meant
/// that the flag counts although no operation sets it.
bool IsCutFromParents(const KVN_node& node) {
  return (node.Value()->GetFlags() & KVN_VALUE_RESERVED) != 0;
}

double PriorOf(KVN_nodeDefinition& definition) {
  switch (definition.GetType()) {
    case KVN_TYPE_DEMORGAN:
      return static_cast<KVN_demorgan&>(definition).GetPriorBelief();
    case KVN_TYPE_CAST:
      return static_cast<KVN_cast&>(definition).GetBaseline();
    default: {
      const KVN_Dmatrix& parameters = static_cast<KVN_noisyMAX&>(definition).GetParameters();
      return parameters[parameters.GetSize() - parameters.GetSizeOfDimension(1)];
    }
  }
}

int GivePriorTable(RelevanceNode& record) {
  int two = 2;
  KVN_Dmatrix table;
  if (int result = table.Setup(&two, 1); result < 0) return result;
  table[0] = PriorOf(*record.node->Definition());
  table[1] = 1.0 - table[0];
  return record.SetTable(std::move(table));
}

bool HasGatePrior(int type) {
  return type == KVN_TYPE_CAST || type == KVN_TYPE_DEMORGAN || type == KVN_TYPE_NOISY_MAX;
}

/// How many records the pool needs: the nodes, and one for each parent of a gate that may be
/// decomposed.
int CountRecords(KVN_network& network, bool decompose) {
  int count = network.GetNumberOfNodes();
  if (!decompose) return count;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const KVN_nodeValue* value = network.ValueOf(h);
    if (network.TypeOf(h) != KVN_TYPE_NOISY_MAX || value == nullptr) continue;
    if (value->GetEvidence() == network.DefinitionOf(h)->GetNumberOfOutcomes() - 1) {
      count += network.GetNumberOfParents(h);
    }
  }
  return count;
}

int FillRecord(RelevanceGraph& graph, int number, KVN_node& node, bool useDeterminism) {
  RelevanceNode& record = graph.Record(number);
  const KVN_nodeValue& value = *node.Value();
  record.node = &node;
  record.outcomes = node.Definition()->GetNumberOfOutcomes();
  record.kind = node.GetType() == KVN_TYPE_NOISY_MAX ? kTableGate : kTableDefinition;
  if (value.IsEvidence() || (useDeterminism && value.IsPropagatedEvidence())) {
    record.evidence = value.GetEvidence();
  }
  if (value.HasEvidence()) ++graph.evidenceCount;
  if (IsCutFromParents(node) && HasGatePrior(node.GetType())) return GivePriorTable(record);
  return 0;
}

int BuildGraph(RelevanceGraph& graph, bool useDeterminism) {
  KVN_network& network = graph.GetNetwork();
  KVN_intArray numberOf;  // by handle
  if (int result = numberOf.SetSize(network.GetSize()); result < 0) return result;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_node& node = *network.GetNode(h);
    if (node.Definition() == nullptr || node.Value() == nullptr) return KVN_REFUSED;
    int number = graph.GetPool().Take();
    if (number < 0) return number;
    numberOf[h] = number;
    if (int result = graph.nodes.Add(number); result < 0) return result;
    if (int result = FillRecord(graph, number, node, useDeterminism); result < 0) return result;
  }
  for (int number : graph.nodes) {
    RelevanceNode& record = graph.Record(number);
    int handle = record.node->Handle();
    if (!IsCutFromParents(*record.node)) {
      for (int parent : network.GetParents(handle)) {
        if (int result = record.parents.Add(numberOf[parent]); result < 0) return result;
      }
    }
    for (int child : network.GetChildren(handle)) {
      if (IsCutFromParents(*network.GetNode(child))) continue;
      if (int result = record.children.Add(numberOf[child]); result < 0) return result;
    }
  }
  if (!graph.noisyMaxRelevance) return 0;
  int made = graph.nodes.GetNumItems();  // new records are appended behind these
  for (int i = 0; i < made; ++i) {
    if (int result = DecomposeNoisyMax(graph, graph.nodes[i]); result < 0) return result;
  }
  return 0;
}

int Reduce(RelevanceGraph& graph, bool absorbRoots, bool useDeterminism, int& components) {
  Reducer reducer(graph);
  if (int result = reducer.RemoveBarrenNodes(); result < 0) return result;
  if (useDeterminism) {
    if (int result = reducer.PropagateDeterminism(); result < 0) return result;
    if (int result = reducer.RemoveBarrenNodes(); result < 0) return result;
  }
  reducer.Destroy(kMarkBarren);
  if (int result = reducer.CutBelowEvidence(); result < 0) return result;
  if (absorbRoots) {
    if (int result = reducer.AbsorbRoots(); result < 0) return result;
  }
  return reducer.LabelComponents(components);
}

}  // namespace

std::unique_ptr<RelevanceParts> ReduceNetwork(KVN_network& network, bool absorbRoots,
                                              bool useDeterminism, int& result) {
  result = 0;
  if (network.GetNumberOfNodes() == 0) return nullptr;
  bool decompose = ReadNoisyMaxRelevance(network);
  RelevanceNodePool* pool = RelevanceNodePool::Make(CountRecords(network, decompose));
  if (pool == nullptr) {
    result = KVN_NO_MEMORY;
    return nullptr;
  }
  std::unique_ptr<RelevanceParts> parts;
  {
    RelevanceGraph graph(network, *pool);
    pool->Release();  // the graph and its parts hold it from here on
    graph.noisyMaxRelevance = decompose;
    TemporaryTargets targets(network);
    int components = 0;
    result = BuildGraph(graph, useDeterminism);
    if (result == 0) result = Reduce(graph, absorbRoots, useDeterminism, components);
    if (result == 0) {
      parts = Reducer(graph).MakeParts(components);
      if (parts == nullptr) result = KVN_NO_MEMORY;
    }
  }
  return parts;
}
