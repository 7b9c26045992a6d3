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

int PolytreeCorrection::Compute() {
  if (int result = ListNodes(); result < 0) return result;
  if (int result = Allocate(); result < 0) return result;
  isPossible = SendAll();
  return 0;
}

/// False as soon as a message or a belief vanishes.
bool PolytreeCorrection::SendAll() {
  for (int i = order.GetNumItems() - 1; i > 0; --i) {
    if (!SendTowardsFirst(order[i], reachedBy[i])) return false;
  }
  double* belief = exact.get();
  for (int i = 0; i < order.GetNumItems(); ++i) {
    if (!ComputeBelief(graph.Node(order[i]), belief)) return false;
    if (!SendAway(order[i], reachedBy[i])) return false;
    belief += graph.Node(order[i]).outcomes;
  }
  return true;
}

void PolytreeCorrection::Apply() {
  if (!isPossible) return;
  const double* belief = exact.get();
  for (int position : order) {
    PolytreeNode& node = graph.Node(position);
    bool isRight = true;
    for (int x = 0; x < node.outcomes; ++x) {
      // Written so that a belief that is no number counts as wrong.
      if (!(std::fabs(node.belief[x] - belief[x]) <= kTolerance)) isRight = false;
    }
    if (!isRight) std::copy(belief, belief + node.outcomes, node.belief);
    belief += node.outcomes;
  }
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

int PolytreeCorrection::Allocate() {
  std::size_t beliefs = 0;
  std::size_t most = 0;  // numbers of scratch space that a node takes
  for (int position : order) {
    const PolytreeNode& node = graph.Node(position);
    std::size_t outcomes = static_cast<std::size_t>(node.outcomes);
    beliefs += outcomes;
    most = std::max(most, (static_cast<std::size_t>(node.children.GetNumItems()) + 1) * outcomes);
  }
  exact.reset(new (std::nothrow) double[beliefs]);
  scratch.reset(new (std::nothrow) double[most]);
  return exact == nullptr || scratch == nullptr ? KVN_NO_MEMORY : KVN_SUCCESS;
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
  double* lambda = scratch.get();
  MultiplyLambdas(node, /*except=*/-1, lambda);
  graph.SumOverParents(node, out);
  Multiply(out, lambda, node.outcomes);
  double sum = 0.0;
  for (int x = 0; x < node.outcomes; ++x) sum += out[x];
  if (!(sum > 0.0) || !std::isfinite(sum)) return false;
  for (int x = 0; x < node.outcomes; ++x) out[x] /= sum;
  return true;
}
