#pragma once

#include <memory>

#include "foundation/intArray.h"
#include "inference/exact/polytreeGraph.h"

/// The exact beliefs of the tree that the first node is in, by a plain run of messages towards that
/// node and one away from it, to correct those of the walk. Linear in the cells of the tables,
/// times their parents.
///
/// No message divides, and all are scaled by powers of two, so that any number of unlikely findings
/// doesn't underflow.
class PolytreeCorrection {
 public:
  explicit PolytreeCorrection(PolytreeGraph& theGraph) : graph(theGraph) {}

  /// Uses up the messages of an initialised graph; the nodes' beliefs stay. 0 or KVN_NO_MEMORY.
  [[nodiscard]] int Compute();
  /// Whether the evidence is possible; there are no exact beliefs otherwise.
  bool IsPossible() const { return isPossible; }
  /// Puts right the beliefs that are off by more than 1e-12; the others keep their bits. Nothing
  /// when the evidence isn't possible.
  void Apply();

 private:
  /// The nodes breadth first from the first one, each with the arc that it was reached by.
  int ListNodes();
  int Allocate();
  bool SendAll();
  void MultiplyLambdas(const PolytreeNode& node, int except, double* out);
  bool SendTowardsFirst(int position, int arcNumber);
  bool SendAway(int position, int arcNumber);
  bool SendLambda(const PolytreeNode& node, int place);
  bool SendPis(const PolytreeNode& node, int except);
  bool ComputeBelief(const PolytreeNode& node, double* out);

  PolytreeGraph& graph;
  KVN_intArray order;
  KVN_intArray reachedBy;           // along `order`: number of an arc, -1 for the first node
  std::unique_ptr<double[]> exact;  // beliefs along `order`
  std::unique_ptr<double[]> scratch;
  bool isPossible = false;
};
