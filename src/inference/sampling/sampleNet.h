#pragma once

#include <memory>

#include "foundation/doubleArray.h"
#include "foundation/random.h"
#include "inference/sampling/partView.h"
#include "inference/sampling/sampleNode.h"

/// One part of a reduced network made ready for the adaptive samplers and for loopy propagation.
/// Nodes stand parents first. Lives for one part.
class SampleNet {
 public:
  /// The part is sorted by Build and must outlive this.
  explicit SampleNet(RelevanceGraph& thePart) : part(thePart), view(thePart) {}
  SampleNet(const SampleNet&) = delete;
  SampleNet& operator=(const SampleNet&) = delete;

  /// Makes the nodes. KVN_NO_MEMORY, or KVN_REFUSED for a table that doesn't have the shape its
  /// parents ask for.
  [[nodiscard]] int Build();
  /// The importance tables, equal to the nodes' own, and the scores, 0. KVN_NO_MEMORY.
  [[nodiscard]] int PrepareTables();

  int GetCount() const { return nodeCount; }
  SampleNode& operator[](int place) { return nodes[place]; }
  const PartView& View() const { return view; }
  /// All beliefs, node by node.
  const KVN_doubleArray& GetBeliefs() const { return beliefs; }

  void ClearScores();
  /// To 0; those of observed nodes to 1.0 at the evidence.
  void ClearBeliefs();
  /// Draws all nodes without evidence from their importance tables. Returns the weight of the
  /// sample, the product of table over importance for these and of the table for observed nodes. It
  /// is meant that a weight of 0 or below ends the sample at once: later nodes keep the states that
  /// they had before. NaN when a row that is all zero, or not a number, was drawn from.
  double DrawSample(KVN_random& random);
  /// Returns the sum, by which a positive one divides.
  static double NormalizeBelief(SampleNode& node);

 private:
  int MakeNode(int place);
  int LinkNode(int place);
  int MarkRelevantAncestors();
  static double DrawNode(SampleNode& node, KVN_random& random);

  RelevanceGraph& part;
  PartView view;
  std::unique_ptr<SampleNode[]> nodes;
  int nodeCount = 0;
  KVN_doubleArray beliefs;
};
