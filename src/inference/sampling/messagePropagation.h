#pragma once

#include <memory>

#include "foundation/dmatrix.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"

class SampleNet;
class SampleNode;

/// What one node receives, holds and is being sent. A message row that sums to 0 becomes uniform:
/// messages never fail.
struct MessageNode {
  KVN_Dmatrix piIn;            // (parents, largest parent outcome count); empty without parents
  KVN_Dmatrix piNext;          // those of the next round
  KVN_Dmatrix lambdaIn;        // (children, outcomes); empty without children
  KVN_Dmatrix lambdaNext;      // those of the next round
  KVN_doubleArray joint;       // product of the parents' messages, by row of the table
  KVN_doubleArray evidence;    // 1.0 at the evidence and 0.0 elsewhere; all 1.0 without
  KVN_doubleArray lambda;      // likelihood of what lies below, by outcome
  KVN_doubleArray pi;          // probability from what lies above, by outcome
  KVN_doubleArray belief;      // by outcome
  KVN_intArray placeAtParent;  // place of this node among the children of each parent
  KVN_intArray placeAtChild;   // place of this node among the parents of each child
};

/// Loopy belief propagation in a sample network (J. Pearl 1988, Probabilistic reasoning in
/// intelligent systems, chapter 4; K. P. Murphy, Y. Weiss and M. I. Jordan 1999, Loopy belief
/// propagation for approximate inference). All messages of a round are computed from those of the
/// round before. Exact on a polytree after as many rounds as its longest path has arcs.
class MessagePropagation {
 public:
  explicit MessagePropagation(SampleNet& theNet) : net(theNet) {}
  MessagePropagation(const MessagePropagation&) = delete;
  MessagePropagation& operator=(const MessagePropagation&) = delete;

  /// All messages are 1.0. KVN_NO_MEMORY.
  [[nodiscard]] int Build();
  /// Runs some rounds without beliefs.
  void Run(int rounds);
  /// Runs some rounds, each with the beliefs of all nodes. KVN_CONFLICTING_EVIDENCE at a node whose
  /// belief sums to 0, or to no number.
  [[nodiscard]] int RunWithBeliefs(int rounds);
  /// Of the last round that computed them.
  const KVN_doubleArray& GetBelief(int place) const { return nodes[place].belief; }
  /// The likelihood of what lies below a node, from the messages that stand. Normalises them.
  const KVN_doubleArray& ComputeLambda(int place);

 private:
  int BuildNode(int place);
  int LinkNode(int place);
  void NormalizeMessages(int place);
  void MultiplyLambda(int place);
  void MultiplyJoint(int place);
  void ComputePi(int place);
  int ComputeBelief(int place);
  void SendToParent(int place, int i);
  void SendToChild(int place, int c);
  int ProcessNode(int place, bool withBelief);
  void EndRound(int place);

  SampleNet& net;
  std::unique_ptr<MessageNode[]> nodes;
  KVN_doubleArray sums;  // scratch, one per outcome of a parent
};
