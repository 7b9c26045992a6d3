#pragma once

#include <memory>

#include "foundation/doubleArray.h"
#include "foundation/intArray.h"

class KVN_Dmatrix;
class KVN_network;
class KVN_node;

/// An arc with its two messages, both over the outcomes of the parent.
struct PolytreeArc {
  int parent = -1;  // positions of nodes in the graph
  int child = -1;
  double* pi = nullptr;      // to the child: what the rest of the tree says of the parent
  double* lambda = nullptr;  // to the parent: likelihood of what is known below
  bool isPiReceived = false;
};

struct PolytreeNode {
  KVN_node* node = nullptr;            // not owned
  const KVN_Dmatrix* table = nullptr;  // not owned: the definition's
  double* belief = nullptr;            // not owned: the cells of the node's value
  int outcomes = 0;
  int evidence = -1;  // observed outcome, or -1
  int firstArc = 0;   // the arcs from the parents, in definition order, begin here
  int parentCount = 0;
  KVN_intArray children;  // numbers of the arcs to the children
  double* lambda = nullptr;
  double* pi = nullptr;
  bool isDone = false;  // an observed node that has been visited

  bool HasEvidence() const { return evidence >= 0; }
};

/// A network as a graph of messages, and the sums that messages are made of. Nodes are numbered in
/// the network's parents-first order.
class PolytreeGraph {
 public:
  explicit PolytreeGraph(KVN_network& theNetwork) : network(theNetwork) {}
  PolytreeGraph(const PolytreeGraph&) = delete;
  PolytreeGraph& operator=(const PolytreeGraph&) = delete;

  /// Takes the network over and ends with Initialise. Values that don't have one dimension of the
  /// node's outcomes are shaped anew.
  /// KVN_NO_MEMORY, KVN_REFUSED, or KVN_EXPRESSION_ERROR (-3) when the lists of parents and
  /// children contradict each other.
  [[nodiscard]] int Build();
  /// Every message becomes 1.0 throughout, lambda too; pi the prior of a node without parents; both
  /// a point mass where there is evidence.
  void Initialise();

  int GetSize() const { return size; }
  PolytreeNode& Node(int position) { return nodes[position]; }
  PolytreeArc& Arc(int number) { return arcs[number]; }
  PolytreeArc& ParentArc(const PolytreeNode& node, int place) {
    return arcs[node.firstArc + place];
  }
  PolytreeArc& ChildArc(const PolytreeNode& node, int place) { return arcs[node.children[place]]; }
  int GetOutcomesOfParent(const PolytreeArc& arc) const { return nodes[arc.parent].outcomes; }

  /// out(x) = sum over the configurations of the parents, in table order, of the table's cell times
  /// the product of the parents' pi messages.
  void SumOverParents(const PolytreeNode& node, double* out);
  /// First step to the lambda messages: for each configuration, the sum of cell times lambda(x).
  void WeighRows(const PolytreeNode& node, const double* lambda);
  /// out(u) = sum over the configurations with the parent at outcome u of the row's weight times
  /// the product of the other parents' pi messages. WeighRows comes before.
  void SumOverOtherParents(const PolytreeNode& node, int place, double* out);

 private:
  int TakeNodes(const KVN_intArray& order);
  int TakeNode(PolytreeNode& made, int handle);
  int TakeValue(PolytreeNode& made);
  int LinkArcs();
  int AllocateNumbers();
  template <typename Visit>
  void ForEachRow(const PolytreeNode& node, int except, Visit visit);

  KVN_network& network;
  int size = 0;
  int arcCount = 0;
  std::unique_ptr<PolytreeNode[]> nodes;
  std::unique_ptr<PolytreeArc[]> arcs;
  std::unique_ptr<double[]> numbers;  // all messages and vectors
  KVN_doubleArray rowWeights;
  KVN_doubleArray products;  // of the messages of the first parents, by how many
  KVN_intArray coordinates;  // of the parents in the present row
  KVN_intArray positionOf;   // by handle
};
