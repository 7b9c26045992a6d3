#include "inference/exact/sepsetJoinTree.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "inference/exact/sepsetElimination.h"
#include "inference/exact/sepsetSpanningTree.h"
#include "network/node.h"
#include "values/nodeValue.h"

namespace {

constexpr int kScaleBits = 100;

void Rescale(KVN_Dmatrix& table, double largest) {
  if (!(largest > 0.0) || !std::isfinite(largest)) return;
  int exponent = std::ilogb(largest);
  if (std::abs(exponent) <= kScaleBits) return;
  for (int i = 0; i < table.GetSize(); ++i) table[i] = std::ldexp(table[i], -exponent);
}

double LargestOf(const KVN_Dmatrix& table) {
  const double* cells = table.GetData();
  return *std::max_element(cells, cells + table.GetSize());
}

/// For each variable of `large`, the step in a table whose dimensions are `small`.
int StepsInto(const KVN_intArray& large, const KVN_intArray& small, const KVN_Dmatrix& table,
              KVN_intArray& steps) {
  steps.Flush();
  for (int variable : large) {
    int dimension = small.FindPosition(variable);
    int step = dimension < 0 ? 0 : table.GetMultipliers()[dimension];
    if (int result = steps.Add(step); result < 0) return result;
  }
  return 0;
}

/// Without open variables a table has one cell and one dimension for it.
int BuildWalk(const SepsetClique& clique, const Sepset& sepset, SepsetWalk& walk) {
  KVN_intArray steps;
  int result = StepsInto(clique.open, sepset.open, sepset.table, steps);
  if (result == 0 && steps.GetNumItems() == 0) result = steps.Add(0);
  if (result == 0) walk.Build(clique.table, steps);
  return result;
}

}  // namespace

int SepsetJoinTree::Build() {
  SepsetElimination made(part);
  if (int result = made.Run(); result < 0) return result;
  SepsetSpanningTree tree(part, made);
  if (int result = tree.Run(); result < 0) return result;
  if (int result = MakeCliques(made, tree); result < 0) return result;
  for (int i = 0; i < sepsetCount; ++i) {
    if (int result = MakeSepset(i, tree.GetParentPlace(i + 1)); result < 0) return result;
  }
  for (int i = 0; i < part.GetSize(); ++i) {
    SepsetClique& home = cliques[FindHome(i, made, tree)];
    if (int result = MultiplyIn(home, i); result < 0) return result;
  }
  return FindSmallestTables();
}

/// All cells are 1.0 at first.
int SepsetJoinTree::MakeCliques(const SepsetElimination& made, const SepsetSpanningTree& tree) {
  cliqueCount = made.GetCount();
  sepsetCount = cliqueCount - 1;
  cliques.reset(new (std::nothrow) SepsetClique[cliqueCount]);
  sepsets.reset(new (std::nothrow) Sepset[sepsetCount]);
  if (cliques == nullptr || sepsets == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < cliqueCount; ++i) {
    SepsetClique& clique = cliques[i];
    int result = clique.variables.Assign(made.Clique(tree.GetClique(i)));
    if (result < 0) return result;
    for (int variable : clique.variables) {
      if (part.Node(variable).HasEvidence()) continue;
      if (result = clique.open.Add(variable); result < 0) return result;
    }
    if (result = MakeTable(clique.open, clique.table); result < 0) return result;
    clique.table.FillWith(1.0);
  }
  return 0;
}

int SepsetJoinTree::MakeTable(const KVN_intArray& open, KVN_Dmatrix& table) const {
  KVN_intArray sizes;
  for (int variable : open) {
    if (int result = sizes.Add(part.Node(variable).outcomes); result < 0) return result;
  }
  if (sizes.GetNumItems() == 0) {
    if (int result = sizes.Add(1); result < 0) return result;
  }
  return table.Setup(sizes);
}

int SepsetJoinTree::MakeSepset(int index, int above) {
  Sepset& sepset = sepsets[index];
  sepset.fromClique = above;
  sepset.toClique = index + 1;
  const SepsetClique& from = cliques[above];
  const SepsetClique& to = cliques[index + 1];
  for (int variable : to.open) {
    if (!std::binary_search(from.open.begin(), from.open.end(), variable)) continue;
    if (int result = sepset.open.Add(variable); result < 0) return result;
  }
  if (int result = MakeTable(sepset.open, sepset.table); result < 0) return result;
  if (int result = BuildWalk(from, sepset, sepset.fromWalk); result < 0) return result;
  return BuildWalk(to, sepset, sepset.toWalk);
}

/// The clique with the fewest cells among those that hold the node and its parents. There is one:
/// the elimination of the first of them made a cluster of them all.
int SepsetJoinTree::FindHome(int position, const SepsetElimination& made,
                             const SepsetSpanningTree& tree) const {
  const RelevanceNode& record = part.Node(position);
  int home = -1;
  double fewest = 0.0;
  for (int clique : made.CliquesOf(position)) {
    int place = tree.GetPlace(clique);
    double cells = tree.GetCells(clique);
    if (home >= 0 && (cells > fewest || (cells == fewest && place > home))) continue;
    const KVN_intArray& variables = cliques[place].variables;
    bool holdsAll = std::all_of(record.parents.begin(), record.parents.end(), [&](int parent) {
      return std::binary_search(variables.begin(), variables.end(), part.Record(parent).position);
    });
    if (!holdsAll) continue;
    home = place;
    fewest = cells;
  }
  return home;
}

int SepsetJoinTree::MultiplyIn(SepsetClique& home, int position) {
  RelevanceNode& record = part.Node(position);
  const KVN_Dmatrix* table = record.GetTable();
  if (table == nullptr) return KVN_NO_MEMORY;
  int rank = record.parents.GetNumItems() + 1;
  if (table->GetNumberOfDimensions() != rank) return KVN_REFUSED;
  KVN_intArray family;  // in the order of the table's dimensions
  int start = 0;        // first cell that agrees with the evidence
  for (int d = 0; d < rank; ++d) {
    int variable = d < rank - 1 ? part.Record(record.parents[d]).position : position;
    const RelevanceNode& member = part.Node(variable);
    if (table->GetSizeOfDimension(d) != member.outcomes) return KVN_REFUSED;
    if (int result = family.Add(variable); result < 0) return result;
    if (member.HasEvidence()) start += table->GetMultipliers()[d] * member.evidence;
  }
  KVN_intArray steps;
  if (int result = StepsInto(home.open, family, *table, steps); result < 0) return result;
  if (steps.GetNumItems() == 0) {
    if (int result = steps.Add(0); result < 0) return result;
  }
  SepsetWalk walk;
  walk.Build(home.table, steps);
  Rescale(home.table, walk.Multiply(home.table.GetData(), table->GetData() + start));
  return 0;
}

/// Sepsets go first, so that of two equally small tables the one that is already summed is read.
int SepsetJoinTree::FindSmallestTables() {
  if (int result = smallest.SetSize(part.GetSize()); result < 0) return result;
  KVN_intArray cells;
  if (int result = cells.SetSize(part.GetSize()); result < 0) return result;
  auto offer = [&](const KVN_intArray& open, int size, int code) {
    for (int variable : open) {
      if (smallest[variable] != 0 && cells[variable] <= size) continue;
      smallest[variable] = code;
      cells[variable] = size;
    }
  };
  for (int i = 0; i < sepsetCount; ++i) offer(sepsets[i].open, sepsets[i].table.GetSize(), i + 1);
  for (int i = 0; i < cliqueCount; ++i) offer(cliques[i].open, cliques[i].table.GetSize(), ~i);
  return 0;
}

int SepsetJoinTree::Update() {
  for (int i = sepsetCount - 1; i >= 0; --i) Collect(sepsets[i]);
  for (int i = 0; i < sepsetCount; ++i) {
    if (int result = Distribute(sepsets[i]); result < 0) return result;
  }
  for (int i = 0; i < part.GetSize(); ++i) {
    if (int result = WritePosterior(i); result < 0) return result;
  }
  return 0;
}

void SepsetJoinTree::Collect(Sepset& sepset) {
  KVN_Dmatrix& above = cliques[sepset.fromClique].table;
  sepset.toWalk.Sum(cliques[sepset.toClique].table.GetData(), sepset.table.GetData());
  Rescale(sepset.table, LargestOf(sepset.table));
  Rescale(above, sepset.fromWalk.Multiply(above.GetData(), sepset.table.GetData()));
}

int SepsetJoinTree::Distribute(Sepset& sepset) {
  KVN_Dmatrix& below = cliques[sepset.toClique].table;
  KVN_Dmatrix ratio;
  if (int result = ratio.Setup(sepset.table.GetDimensions()); result < 0) return result;
  sepset.fromWalk.Sum(cliques[sepset.fromClique].table.GetData(), ratio.GetData());
  for (int i = 0; i < ratio.GetSize(); ++i) {
    double old = sepset.table[i];
    sepset.table[i] = old > 0.0 ? ratio[i] : 0.0;
    ratio[i] = old > 0.0 ? ratio[i] / old : 0.0;
  }
  Rescale(below, sepset.toWalk.Multiply(below.GetData(), ratio.GetData()));
  return 0;
}

int SepsetJoinTree::WritePosterior(int position) {
  RelevanceNode& record = part.Node(position);
  if (record.node == nullptr) return 0;
  if (record.HasEvidence()) return SetRecordEvidence(record, record.evidence);
  int code = smallest[position];
  const KVN_intArray& open = code > 0 ? sepsets[code - 1].open : cliques[~code].open;
  const KVN_Dmatrix& table = code > 0 ? sepsets[code - 1].table : cliques[~code].table;

  KVN_Dmatrix posterior;
  if (int result = posterior.Setup(&record.outcomes, 1); result < 0) return result;
  KVN_intArray self;
  if (int result = self.Add(position); result < 0) return result;
  KVN_intArray steps;
  if (int result = StepsInto(open, self, posterior, steps); result < 0) return result;
  SepsetWalk walk;
  walk.Build(table, steps);
  walk.Sum(table.GetData(), posterior.GetData());

  double sum = 0.0;
  for (int i = 0; i < posterior.GetSize(); ++i) sum += posterior[i];
  for (int i = 0; i < posterior.GetSize(); ++i) posterior[i] /= sum;
  KVN_nodeValue& value = *record.node->Value();
  if (int result = value.SetValue(posterior); result < 0) return result;
  value.SetValueValid();
  return 0;
}

int SepsetJoinTreeUpdate(KVN_network& network) {
  int result = 0;
  std::unique_ptr<RelevanceParts> parts =
      ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
  if (parts == nullptr) return result;
  for (int i = 0; i < parts->GetCount(); ++i) {
    RelevanceGraph& part = (*parts)[i];
    int partResult = 0;
    if (part.GetSize() == 1) {
      partResult = WriteOwnTable(part.Node(0));
    } else {
      SepsetJoinTree tree(part);
      partResult = tree.Build();
      if (partResult == 0) partResult = tree.Update();
    }
    if (result == 0) result = partResult;
    parts->Free(i);
  }
  return result;
}
