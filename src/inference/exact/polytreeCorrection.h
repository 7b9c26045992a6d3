#pragma once

#include <cstddef>
#include <memory>

#include "foundation/intArray.h"
#include "inference/exact/polytreeGraph.h"

/// A second, plain run of messages over the tree that the first node is in: once towards that node
/// and once away from it. It puts right the beliefs that the walk left inexact, and touches no
/// other. Linear in the cells of the tables, times their parents.
///
/// No message divides, and all are scaled by powers of two, so that any number of unlikely findings
/// doesn't underflow. The messages of the walk are used up.
class PolytreeCorrection {
 public:
  explicit PolytreeCorrection(PolytreeGraph& theGraph) : graph(theGraph) {}

  /// Nothing is changed when the evidence is contradictory. 0 or KVN_NO_MEMORY: no belief changed.
  [[nodiscard]] int Run();

 private:
  /// The nodes breadth first from the first one, each with the arc that it was reached by.
  int ListNodes();
  int AllocateScratch();
  void MultiplyLambdas(const PolytreeNode& node, int except, double* out);
  bool SendTowardsFirst(int position, int arcNumber);
  bool SendAway(int position, int arcNumber);
  bool SendLambda(const PolytreeNode& node, int place);
  bool SendPis(const PolytreeNode& node, int except);
  bool ComputeBelief(const PolytreeNode& node, double* out);
  void CorrectBelief(PolytreeNode& node, const double* exact);

  PolytreeGraph& graph;
  KVN_intArray order;
  KVN_intArray reachedBy;  // along `order`: number of an arc, -1 for the first node
  std::size_t scratchSize = 0;
  std::unique_ptr<double[]> scratch;
};
