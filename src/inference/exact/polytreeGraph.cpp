#include "inference/exact/polytreeGraph.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "values/nodeValue.h"

namespace {

void FillWith(double* cells, int count, double value) { std::fill(cells, cells + count, value); }

void MakePointMass(double* cells, int count, int at) {
  FillWith(cells, count, 0.0);
  cells[at] = 1.0;
}

}  // namespace

int PolytreeGraph::Build() {
  const KVN_intArray& order = network.GetOrderOfNodes();
  if (order.GetNumItems() != network.GetNumberOfNodes()) return KVN_NO_MEMORY;
  if (int result = TakeNodes(order); result < 0) return result;
  if (int result = LinkArcs(); result < 0) return result;
  if (int result = AllocateNumbers(); result < 0) return result;
  Initialise();
  return 0;
}

int PolytreeGraph::TakeNodes(const KVN_intArray& order) {
  size = order.GetNumItems();
  nodes.reset(new (std::nothrow) PolytreeNode[size]);
  if (nodes == nullptr) return KVN_NO_MEMORY;
  if (int result = positionOf.SetSize(network.GetSize()); result < 0) return result;
  for (int i = 0; i < size; ++i) {
    positionOf[order[i]] = i;
    if (int result = TakeNode(nodes[i], order[i]); result < 0) return result;
  }
  return 0;
}

int PolytreeGraph::TakeNode(PolytreeNode& made, int handle) {
  made.node = network.GetNode(handle);
  if (made.node->Definition() == nullptr || made.node->Value() == nullptr) return KVN_REFUSED;
  KVN_Dmatrix* table = nullptr;
  if (int result = made.node->Definition()->GetDefinition(table); result < 0) return result;
  made.table = table;
  made.outcomes = made.node->Definition()->GetNumberOfOutcomes();
  made.firstArc = arcCount;
  made.parentCount = network.GetNumberOfParents(handle);
  arcCount += made.parentCount;
  if (made.outcomes < 1 || table->GetNumberOfDimensions() != made.parentCount + 1) {
    return KVN_REFUSED;
  }
  return TakeValue(made);
}

int PolytreeGraph::TakeValue(PolytreeNode& made) {
  KVN_nodeValue& value = *made.node->Value();
  if (value.HasEvidence()) made.evidence = value.GetEvidence();
  if (made.evidence >= made.outcomes) return KVN_REFUSED;
  KVN_Dmatrix* matrix = nullptr;
  if (int result = value.GetValue(matrix); result < 0) return result;
  if (matrix->GetNumberOfDimensions() != 1 || matrix->GetSize() != made.outcomes) {
    if (int result = matrix->Setup(&made.outcomes, 1); result < 0) return result;
    value.ClearIndexingParents();
    if (!made.HasEvidence()) value.ClearValueValid();
  }
  made.belief = matrix->GetData();
  return 0;
}

int PolytreeGraph::LinkArcs() {
  arcs.reset(new (std::nothrow) PolytreeArc[arcCount]);
  if (arcs == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < size; ++i) {
    int handle = nodes[i].node->Handle();
    const KVN_intArray& parents = network.GetParents(handle);
    for (int place = 0; place < parents.GetNumItems(); ++place) {
      PolytreeArc& arc = ParentArc(nodes[i], place);
      arc.parent = positionOf[parents[place]];
      arc.child = i;
      if (nodes[i].table->GetSizeOfDimension(place) != nodes[arc.parent].outcomes) {
        return KVN_REFUSED;
      }
    }
    for (int child : network.GetChildren(handle)) {
      int place = network.PositionOfParent(handle, child);
      if (place < 0) return KVN_EXPRESSION_ERROR;
      if (int result = nodes[i].children.Add(nodes[positionOf[child]].firstArc + place);
          result < 0) {
        return result;
      }
    }
  }
  return 0;
}

int PolytreeGraph::AllocateNumbers() {
  std::size_t total = 0;
  int largestRows = 0;
  int mostParents = 0;
  for (int i = 0; i < size; ++i) {
    total += 2 * static_cast<std::size_t>(nodes[i].outcomes);
    largestRows = std::max(largestRows, nodes[i].table->GetSize() / nodes[i].outcomes);
    mostParents = std::max(mostParents, nodes[i].parentCount);
  }
  for (int a = 0; a < arcCount; ++a)
    total += 2 * static_cast<std::size_t>(nodes[arcs[a].parent].outcomes);
  numbers.reset(new (std::nothrow) double[total]);
  if (numbers == nullptr) return KVN_NO_MEMORY;
  if (int result = rowWeights.SetSize(largestRows); result < 0) return result;
  if (int result = products.SetSize(mostParents + 1); result < 0) return result;
  return coordinates.SetSize(mostParents);
}

void PolytreeGraph::Initialise() {
  double* next = numbers.get();
  auto take = [&next](int count) {
    double* taken = next;
    FillWith(taken, count, 1.0);
    next += count;
    return taken;
  };
  for (int i = 0; i < size; ++i) {
    PolytreeNode& node = nodes[i];
    node.lambda = take(node.outcomes);
    node.pi = take(node.outcomes);
    if (node.HasEvidence()) {
      for (double* cells : {node.lambda, node.pi, node.belief}) {
        MakePointMass(cells, node.outcomes, node.evidence);
      }
    } else if (node.parentCount == 0) {
      std::copy(node.table->GetData(), node.table->GetData() + node.outcomes, node.pi);
    }
  }
  for (int a = 0; a < arcCount; ++a) {
    arcs[a].pi = take(nodes[arcs[a].parent].outcomes);
    arcs[a].lambda = take(nodes[arcs[a].parent].outcomes);
    arcs[a].isPiReceived = false;
  }
}

/// Calls visit(row, weight) for the rows of the node's table in order; the weight is the product of
/// the pi messages of all parents but the one at place `except`, and `coordinates` are the row's.
template <typename Visit>
void PolytreeGraph::ForEachRow(const PolytreeNode& node, int except, Visit visit) {
  int parents = node.parentCount;
  products[0] = 1.0;
  for (int i = 0; i < parents; ++i) coordinates[i] = 0;
  int changed = 0;  // the products before it are still right
  for (int row = 0;; ++row) {
    for (int i = changed; i < parents; ++i) {
      products[i + 1] =
          i == except ? products[i] : products[i] * ParentArc(node, i).pi[coordinates[i]];
    }
    visit(row, products[parents]);
    changed = parents - 1;
    while (changed >= 0 &&
           ++coordinates[changed] == GetOutcomesOfParent(ParentArc(node, changed))) {
      coordinates[changed--] = 0;
    }
    if (changed < 0) return;
  }
}

void PolytreeGraph::SumOverParents(const PolytreeNode& node, double* out) {
  FillWith(out, node.outcomes, 0.0);
  const double* cells = node.table->GetData();
  ForEachRow(node, /*except=*/-1, [&](int /*row*/, double weight) {
    for (int x = 0; x < node.outcomes; ++x) out[x] += *cells++ * weight;
  });
}

void PolytreeGraph::WeighRows(const PolytreeNode& node, const double* lambda) {
  const double* cells = node.table->GetData();
  int rows = node.table->GetSize() / node.outcomes;
  for (int row = 0; row < rows; ++row) {
    double sum = 0.0;
    for (int x = 0; x < node.outcomes; ++x) sum += *cells++ * lambda[x];
    rowWeights[row] = sum;
  }
}

void PolytreeGraph::SumOverOtherParents(const PolytreeNode& node, int place, double* out) {
  FillWith(out, GetOutcomesOfParent(ParentArc(node, place)), 0.0);
  ForEachRow(node, place,
             [&](int row, double weight) { out[coordinates[place]] += rowWeights[row] * weight; });
}
