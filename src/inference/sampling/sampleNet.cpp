#include "inference/sampling/sampleNet.h"

#include <limits>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/sampling/partOrder.h"

namespace {

/// Draws of exactly 0 and 1 are moved inside by this much: an outcome of probability 0 in front
/// must not be hit by 0.
constexpr double kDrawMargin = 1e-11;

}  // namespace

int SampleNet::Build() {
  if (int result = SortParentsFirst(part); result < 0) return result;
  nodes.reset(new (std::nothrow) SampleNode[view.GetCount()]);
  if (nodes == nullptr) return KVN_NO_MEMORY;
  nodeCount = view.GetCount();
  int cells = 0;
  for (int i = 0; i < nodeCount; ++i) {
    if (int result = MakeNode(i); result < 0) return result;
    if (nodes[i].outcomes > std::numeric_limits<int>::max() - cells) return KVN_NO_MEMORY;
    cells += nodes[i].outcomes;
  }
  if (int result = beliefs.SetSize(cells); result < 0) return result;
  double* belief = beliefs.GetItems();
  for (int i = 0; i < nodeCount; ++i) {
    if (int result = LinkNode(i); result < 0) return result;
    nodes[i].belief = belief;
    belief += nodes[i].outcomes;
  }
  return MarkRelevantAncestors();
}

int SampleNet::MakeNode(int place) {
  SampleNode& node = nodes[place];
  node.outcomes = view.GetOutcomes(place);
  node.cpt = view.GetTable(place);
  if (node.cpt == nullptr) return KVN_NO_MEMORY;
  node.evidence = view.GetEvidence(place);
  if (node.HasEvidence()) node.state = node.evidence;
  for (int i = 0; i < view.GetParentCount(place); ++i) {
    if (int result = node.parents.Add(view.GetParent(place, i)); result < 0) return result;
  }
  for (int i = 0; i < view.GetChildCount(place); ++i) {
    if (int result = node.children.Add(view.GetChild(place, i)); result < 0) return result;
  }
  return 0;
}

/// Once all nodes know their outcomes.
int SampleNet::LinkNode(int place) {
  SampleNode& node = nodes[place];
  const int last = node.GetParentCount();
  if (node.cpt->GetNumberOfDimensions() != last + 1) return KVN_REFUSED;
  if (node.cpt->GetSizeOfDimension(last) != node.outcomes) return KVN_REFUSED;
  node.coordinates.reset(new (std::nothrow) const int*[last + 1]);
  if (node.coordinates == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < last; ++i) {
    const SampleNode& parent = nodes[node.parents[i]];
    if (node.cpt->GetSizeOfDimension(i) != parent.outcomes) return KVN_REFUSED;
    node.coordinates[i] = &parent.state;
  }
  node.coordinates[last] = &node.state;
  return 0;
}

/// It is meant that an observed node is marked when it lies above one that comes after it, but not
/// by itself.
int SampleNet::MarkRelevantAncestors() {
  KVN_intArray pending;
  for (int i = 0; i < nodeCount; ++i) {
    if (!nodes[i].HasEvidence()) continue;
    if (int result = pending.Add(i); result < 0) return result;
    while (pending.GetNumItems() > 0) {
      const int place = pending[pending.GetNumItems() - 1];
      pending.UseAsList(pending.GetNumItems() - 1);
      for (int parent : nodes[place].parents) {
        if (nodes[parent].relevantAncestor) continue;  // and so are all above it
        nodes[parent].relevantAncestor = true;
        if (int result = pending.Add(parent); result < 0) return result;
      }
    }
    nodes[i].relevantAncestor = false;
  }
  return 0;
}

int SampleNet::PrepareTables() {
  for (int i = 0; i < nodeCount; ++i) {
    if (int result = nodes[i].icpt.Assign(*nodes[i].cpt); result < 0) return result;
    if (int result = nodes[i].score.Assign(*nodes[i].cpt); result < 0) return result;
  }
  ClearScores();
  return 0;
}

void SampleNet::ClearScores() {
  for (int i = 0; i < nodeCount; ++i) nodes[i].score.FillWith(0.0);
}

void SampleNet::ClearBeliefs() {
  beliefs.FillWith(0.0);
  for (int i = 0; i < nodeCount; ++i) {
    if (nodes[i].HasEvidence()) nodes[i].belief[nodes[i].evidence] = 1.0;
  }
}

double SampleNet::DrawSample(KVN_random& random) {
  double weight = 1.0;
  for (int i = 0; i < nodeCount; ++i) {
    SampleNode& node = nodes[i];
    if (node.HasEvidence()) {
      node.cell = node.FindRow() + node.state;
      weight *= (*node.cpt)[node.cell];
    } else {
      weight *= DrawNode(node, random);
    }
    if (weight <= 0.0) return weight;
  }
  return weight;
}

double SampleNet::DrawNode(SampleNode& node, KVN_random& random) {
  double r = random.Uniform();
  if (r == 0.0) r = kDrawMargin;
  if (r == 1.0) r = 1.0 - kDrawMargin;
  const int row = node.FindRow();
  const double* importance = node.icpt.GetData() + row;
  int k = 0;
  double sum = importance[0];
  while (!(r <= sum) && ++k < node.outcomes) sum += importance[k];
  if (k == node.outcomes) {  // the row sums to less than r: the last outcome that can be drawn
    do --k;
    while (k > 0 && importance[k] == 0.0);
  }
  node.state = k;
  node.cell = row + k;
  return (*node.cpt)[node.cell] / importance[k];
}

double SampleNet::NormalizeBelief(SampleNode& node) {
  double sum = 0.0;
  for (int k = 0; k < node.outcomes; ++k) sum += node.belief[k];
  if (sum > 0.0) {
    for (int k = 0; k < node.outcomes; ++k) node.belief[k] /= sum;
  }
  return sum;
}
