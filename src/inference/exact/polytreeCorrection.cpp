#include "inference/exact/polytreeCorrection.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "foundation/resultCodes.h"

namespace {

// What counts as a difference between the walk and the exact belief.
constexpr double kTolerance = 1e-12;
// Vectors whose largest cell leaves 2^-100..2^100 are scaled back to about 1.
constexpr int kScaleBits = 100;

/// False when no cell is above 0 (or one is no number).
bool Rescale(double* cells, int count) {
  double largest = 0.0;
  for (int i = 0; i < count; ++i) {
    if (!(cells[i] >= 0.0)) return false;
    largest = std::max(largest, cells[i]);
  }
  if (!(largest > 0.0) || !std::isfinite(largest)) return false;
  int exponent = std::ilogb(largest);
  if (std::abs(exponent) <= kScaleBits) return true;
  for (int i = 0; i < count; ++i) cells[i] = std::ldexp(cells[i], -exponent);
  return true;
}

void Multiply(double* cells, const double* factors, int count) {
  for (int i = 0; i < count; ++i) cells[i] *= factors[i];
}

/// Leaves the observed outcome alone of a vector over the node's outcomes.
void ApplyEvidence(const PolytreeNode& node, double* cells) {
  for (int x = 0; x < node.outcomes; ++x) {
    if (node.HasEvidence() && x != node.evidence) cells[x] = 0.0;
  }
}

}  // namespace

int PolytreeCorrection::Run() {
  if (int result = ListNodes(); result < 0) return result;
  if (int result = AllocateScratch(); result < 0) return result;
  for (int i = order.GetNumItems() - 1; i > 0; --i) {
    if (!SendTowardsFirst(order[i], reachedBy[i])) return 0;
  }
  if (!ComputeBelief(graph.Node(order[0]), scratch.get())) return 0;
  for (int i = 0; i < order.GetNumItems(); ++i) {
    PolytreeNode& node = graph.Node(order[i]);
    // The evidence is possible, so a belief can only vanish by underflow: the walk's stands then.
    if (ComputeBelief(node, scratch.get())) CorrectBelief(node, scratch.get());
    if (!SendAway(order[i], reachedBy[i])) return 0;
  }
  return 0;
}

int PolytreeCorrection::ListNodes() {
  if (int result = order.Add(0); result < 0) return result;
  if (int result = reachedBy.Add(-1); result < 0) return result;
  // The list is its own queue.
  for (int i = 0; i < order.GetNumItems(); ++i) {
    const PolytreeNode& node = graph.Node(order[i]);
    int neighbours = node.parentCount + node.children.GetNumItems();
    for (int k = 0; k < neighbours; ++k) {
      bool isParent = k < node.parentCount;
      int number = isParent ? node.firstArc + k : node.children[k - node.parentCount];
      if (number == reachedBy[i]) continue;
      int neighbour = isParent ? graph.Arc(number).parent : graph.Arc(number).child;
      if (int result = order.Add(neighbour); result < 0) return result;
      if (int result = reachedBy.Add(number); result < 0) return result;
    }
  }
  return 0;
}

int PolytreeCorrection::AllocateScratch() {
  for (int position : order) {
    const PolytreeNode& node = graph.Node(position);
    std::size_t vectors = static_cast<std::size_t>(node.children.GetNumItems()) + 3;
    scratchSize = std::max(scratchSize, vectors * static_cast<std::size_t>(node.outcomes));
  }
  scratch.reset(new (std::nothrow) double[scratchSize]);
  return scratch == nullptr ? KVN_NO_MEMORY : KVN_SUCCESS;
}

/// Product of the messages from all children but that of the arc `except`, evidence applied.
void PolytreeCorrection::MultiplyLambdas(const PolytreeNode& node, int except, double* out) {
  std::fill(out, out + node.outcomes, 1.0);
  ApplyEvidence(node, out);
  for (int number : node.children) {
    if (number == except) continue;
    Multiply(out, graph.Arc(number).lambda, node.outcomes);
    // A product that vanishes shows in the message that is made of it.
    (void)Rescale(out, node.outcomes);
  }
}

bool PolytreeCorrection::SendTowardsFirst(int position, int arcNumber) {
  const PolytreeNode& node = graph.Node(position);
  PolytreeArc& arc = graph.Arc(arcNumber);
  double* lambda = scratch.get();
  if (arc.child == position) {
    MultiplyLambdas(node, /*except=*/-1, lambda);
    graph.WeighRows(node, lambda);
    return SendLambda(node, arcNumber - node.firstArc);
  }
  MultiplyLambdas(node, arcNumber, lambda);
  graph.SumOverParents(node, arc.pi);
  Multiply(arc.pi, lambda, node.outcomes);
  return Rescale(arc.pi, node.outcomes);
}

bool PolytreeCorrection::SendLambda(const PolytreeNode& node, int place) {
  PolytreeArc& arc = graph.ParentArc(node, place);
  graph.SumOverOtherParents(node, place, arc.lambda);
  return Rescale(arc.lambda, graph.GetOutcomesOfParent(arc));
}

bool PolytreeCorrection::SendAway(int position, int arcNumber) {
  const PolytreeNode& node = graph.Node(position);
  if (node.parentCount > 0) {
    MultiplyLambdas(node, /*except=*/-1, scratch.get());
    graph.WeighRows(node, scratch.get());
  }
  for (int place = 0; place < node.parentCount; ++place) {
    if (node.firstArc + place != arcNumber && !SendLambda(node, place)) return false;
  }
  return SendPis(node, arcNumber);
}

/// To all children but that of the arc `except`. What the later children say is kept for each of
/// them, so that a node with many children stays linear in their number.
bool PolytreeCorrection::SendPis(const PolytreeNode& node, int except) {
  int count = node.children.GetNumItems();
  int n = node.outcomes;
  if (count == 0) return true;
  double* before = scratch.get();  // pi, the evidence, and the messages of the earlier children
  double* after = before + n;      // by child: the product of the messages behind it
  std::fill(after + static_cast<std::ptrdiff_t>(count - 1) * n,
            after + static_cast<std::ptrdiff_t>(count) * n, 1.0);
  for (int i = count - 1; i > 0; --i) {
    double* next = after + static_cast<std::ptrdiff_t>(i - 1) * n;
    std::copy(next + n, next + 2 * n, next);
    Multiply(next, graph.ChildArc(node, i).lambda, n);
    (void)Rescale(next, n);
  }
  graph.SumOverParents(node, before);
  ApplyEvidence(node, before);
  for (int i = 0; i < count; ++i) {
    PolytreeArc& arc = graph.ChildArc(node, i);
    if (node.children[i] != except) {
      std::copy(before, before + n, arc.pi);
      Multiply(arc.pi, after + static_cast<std::ptrdiff_t>(i) * n, n);
      if (!Rescale(arc.pi, n)) return false;
    }
    Multiply(before, arc.lambda, n);
    (void)Rescale(before, n);
  }
  return true;
}

bool PolytreeCorrection::ComputeBelief(const PolytreeNode& node, double* out) {
  double* lambda = out + node.outcomes;
  MultiplyLambdas(node, /*except=*/-1, lambda);
  graph.SumOverParents(node, out);
  Multiply(out, lambda, node.outcomes);
  double sum = 0.0;
  for (int x = 0; x < node.outcomes; ++x) sum += out[x];
  if (!(sum > 0.0) || !std::isfinite(sum)) return false;
  for (int x = 0; x < node.outcomes; ++x) out[x] /= sum;
  return true;
}

/// The walk's bits stay where they are right.
void PolytreeCorrection::CorrectBelief(PolytreeNode& node, const double* exact) {
  bool isRight = true;
  for (int x = 0; x < node.outcomes; ++x) {
    // Written so that a belief that is no number counts as wrong.
    if (!(std::fabs(node.belief[x] - exact[x]) <= kTolerance)) isRight = false;
  }
  if (!isRight) std::copy(exact, exact + node.outcomes, node.belief);
}
