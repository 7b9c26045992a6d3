#pragma once

#include <cstdint>
#include <limits>

#include "inference/exact/polytreeGraph.h"
#include "network/walkStack.h"

/// The walk of the polytree algorithm: two depth-first visits that call each other. `Visit` goes
/// down with what is known above, `Spread` takes a finding up to the parents and from there down
/// again. The frames of both are kept on one stack, in the order of the recursion.
///
/// The order from the last neighbour to the first is part of the method: it decides the last bits,
/// and what contradictory evidence leaves behind. Each finding spreads over all nodes that it can
/// reach, so the time is up to the product of findings and nodes.
class PolytreeWalk {
 public:
  explicit PolytreeWalk(PolytreeGraph& theGraph) : graph(theGraph) {}

  static constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

  /// Visits the first node; gives up when about `limit` nodes have been visited and messages sent.
  /// 0, also then, or KVN_NO_MEMORY. Either leaves the beliefs half done.
  [[nodiscard]] int Run(std::int64_t limit = kNoLimit);

 private:
  enum Stage { kEnter, kParents, kChildren };
  struct Frame {
    int node;
    int from;  // neighbour that the walk comes from, or -1
    bool isSpread;
    Stage stage;
    int next;  // place of the parent or child to go to
  };

  int Step();
  int Descend(int node, int from, bool isSpread);
  void EnterVisit(const Frame& frame, PolytreeNode& node);
  bool EnterSpread(const Frame& frame, PolytreeNode& node);

  int FindSplitParent(const PolytreeNode& node);
  void Compute(PolytreeNode& node, int from);
  void ComputeLambda(PolytreeNode& node);
  void SendLambdaToParents(PolytreeNode& node, int except);
  void SendPiToChildren(PolytreeNode& node, int except);

  PolytreeGraph& graph;
  KVN_walkStack<Frame> frames;
  std::int64_t work = 0;  // nodes visited and messages sent
};
