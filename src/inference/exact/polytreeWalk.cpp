#include "inference/exact/polytreeWalk.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kUnitMessageTolerance = 1e-8;
constexpr double kUnitLambdaTolerance = 1e-10;

bool IsNearOne(double cell, double tolerance) { return std::fabs(cell - 1.0) <= tolerance; }

/// The product of lambda and pi, scaled to sum 1. It is meant that a sum of 0 gives a uniform
/// belief and no error.
void UpdateBelief(PolytreeNode& node) {
  double sum = 0.0;
  for (int x = 0; x < node.outcomes; ++x) {
    node.belief[x] = node.lambda[x] * node.pi[x];
    sum += node.belief[x];
  }
  for (int x = 0; x < node.outcomes; ++x) {
    if (sum == 0.0) {
      node.belief[x] = 1.0 / node.outcomes;
    } else {
      node.belief[x] /= sum;
    }
  }
}

}  // namespace

int PolytreeWalk::Run(std::int64_t limit) {
  if (graph.GetSize() == 0) return 0;
  if (int result = Descend(/*node=*/0, /*from=*/-1, /*isSpread=*/false); result < 0) return result;
  while (!frames.IsEmpty() && work < limit) {
    if (int result = Step(); result < 0) return result;
  }
  return 0;
}

int PolytreeWalk::Descend(int node, int from, bool isSpread) {
  ++work;
  return frames.Push({node, from, isSpread, kEnter, 0});
}

/// One call or the return of the visit on top.
int PolytreeWalk::Step() {
  Frame& frame = frames.Top();
  PolytreeNode& node = graph.Node(frame.node);
  if (frame.stage == kEnter) {
    if (frame.isSpread) {
      if (!EnterSpread(frame, node)) {
        frames.Pop();
        return 0;
      }
    } else {
      if (node.isDone) {
        frames.Pop();
        return 0;
      }
      // A parent that has not reported yet is visited first, and then this stage comes again.
      int split = FindSplitParent(node);
      if (split >= 0) return Descend(split, frame.node, /*isSpread=*/false);
      EnterVisit(frame, node);
    }
    bool spreads = frame.isSpread || node.HasEvidence();
    frame.stage = spreads ? kParents : kChildren;
    frame.next = (spreads ? node.parentCount : node.children.GetNumItems()) - 1;
    return 0;
  }
  if (frame.stage == kParents) {
    if (frame.next >= 0) {
      int parent = graph.ParentArc(node, frame.next--).parent;
      return Descend(parent, frame.node, /*isSpread=*/true);
    }
    frame.stage = kChildren;
    frame.next = node.children.GetNumItems() - 1;
  }
  while (frame.next >= 0) {
    int child = graph.ChildArc(node, frame.next--).child;
    if (child != frame.from) return Descend(child, frame.node, /*isSpread=*/false);
  }
  frames.Pop();
  return 0;
}

void PolytreeWalk::EnterVisit(const Frame& frame, PolytreeNode& node) {
  if (!node.HasEvidence()) {
    Compute(node, frame.from);
    return;
  }
  node.isDone = true;
  SendLambdaToParents(node, /*except=*/-1);
  SendPiToChildren(node, /*except=*/-1);
}

/// False where evidence ends the spreading.
bool PolytreeWalk::EnterSpread(const Frame& frame, PolytreeNode& node) {
  if (node.HasEvidence()) return false;
  ComputeLambda(node);
  UpdateBelief(node);
  SendLambdaToParents(node, frame.from);
  SendPiToChildren(node, frame.from);
  return true;
}

/// The first parent that hasn't reported: its message still reads 1.0 in more than one cell. The
/// cells alone can't tell, since a message that has come may read so too; the two nodes would then
/// visit each other without end.
int PolytreeWalk::FindSplitParent(const PolytreeNode& node) {
  for (int place = 0; place < node.parentCount; ++place) {
    const PolytreeArc& arc = graph.ParentArc(node, place);
    if (arc.isPiReceived) continue;
    int ones = 0;
    for (int u = 0; u < graph.GetOutcomesOfParent(arc); ++u) {
      if (IsNearOne(arc.pi[u], kUnitMessageTolerance)) ++ones;
    }
    if (ones > 1) return arc.parent;
  }
  return -1;
}

void PolytreeWalk::Compute(PolytreeNode& node, int from) {
  graph.SumOverParents(node, node.pi);
  UpdateBelief(node);
  SendPiToChildren(node, /*except=*/-1);
  bool isUnit = std::all_of(node.lambda, node.lambda + node.outcomes,
                            [](double cell) { return IsNearOne(cell, kUnitLambdaTolerance); });
  if (!isUnit) SendLambdaToParents(node, from);
}

void PolytreeWalk::ComputeLambda(PolytreeNode& node) {
  std::fill(node.lambda, node.lambda + node.outcomes, 1.0);
  for (int number : node.children) {
    const double* message = graph.Arc(number).lambda;
    for (int x = 0; x < node.outcomes; ++x) node.lambda[x] *= message[x];
  }
}

void PolytreeWalk::SendLambdaToParents(PolytreeNode& node, int except) {
  if (node.parentCount == 0) return;
  work += node.parentCount;
  graph.WeighRows(node, node.lambda);
  for (int place = node.parentCount - 1; place >= 0; --place) {
    PolytreeArc& arc = graph.ParentArc(node, place);
    if (arc.parent != except) graph.SumOverOtherParents(node, place, arc.lambda);
  }
}

/// It is meant that the division is unguarded: where the child has excluded an outcome the message
/// is no number, and beliefs that it reaches are none either.
void PolytreeWalk::SendPiToChildren(PolytreeNode& node, int except) {
  work += node.children.GetNumItems();
  for (int place = node.children.GetNumItems() - 1; place >= 0; --place) {
    PolytreeArc& arc = graph.ChildArc(node, place);
    if (arc.child == except) continue;
    for (int x = 0; x < node.outcomes; ++x) arc.pi[x] = node.belief[x] / arc.lambda[x];
    arc.isPiReceived = true;
  }
}
