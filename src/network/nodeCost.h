#pragma once

#include "foundation/dmatrix.h"
#include "foundation/object.h"

class KVN_network;

/// What it costs to observe a node: one number for each configuration of its cost parents (layer 1
/// of the graph). No influence on inference.
///
/// Layout of `costs`: one dimension for each cost parent, in the order of the network's list, with
/// that parent's outcome count, and a last dimension of size 1. Without cost parents that is a
/// single cell.
///
/// A new object has that single cell, 0.0, whatever the network says: its maker calls Rebuild once
/// the node stands in the network.
///
/// The operations that are told of a cost parent answer KVN_NOT_READY when this isn't ready, and
/// KVN_REFUSED for a node that isn't in the list of cost parents: both unchanged. Other codes are
/// those of the table. Ready when there is a network.
class KVN_nodeCost : public KVN_object {
 public:
  KVN_nodeCost(KVN_network* network, int handle);
  KVN_nodeCost(const KVN_nodeCost&) = delete;
  KVN_nodeCost& operator=(const KVN_nodeCost&) = delete;

  /// Events, as in a definition: 0 and nothing done.
  virtual int EventQuery(int code);
  virtual int ForwardEvent(int code);

  KVN_Dmatrix& GetCosts() { return costs; }
  const KVN_Dmatrix& GetCosts() const { return costs; }
  /// One number per cell, in cell order; KVN_REFUSED for another count: unchanged.
  [[nodiscard]] int SetCosts(const KVN_doubleArray& values);

  /// The network has just added the cost arc: the costs repeat along the new dimension. KVN_REFUSED
  /// for a parent whose kind has no outcomes to index by. A parent that has no outcomes at present
  /// gets no dimension.
  [[nodiscard]] int AddParent(int parent);
  /// The network is about to remove the cost arc: the costs for the parent's first outcome stay.
  /// KVN_REFUSED for a utility; other kinds that have no dimension change nothing.
  int RemoveParent(int parent);
  /// The parent's definition has changed its outcomes; a new one costs 0.0.
  int ParentOutcomeAdded(int parent, int position);
  int ParentOutcomeRemoved(int parent, int position);
  int ParentOutcomesReordered(int parent, const KVN_intArray& order);

  /// Builds the table anew from the list of cost parents; every cost becomes 0.0. A parent that
  /// can't be added is told to the log with "Parent could not be added" and left out; the result is
  /// 0 all the same, and KVN_NO_MEMORY only when not even the single cell could be made.
  int Rebuild();

  /// Takes network and handle too. KVN_NOT_READY if the source isn't ready, KVN_NO_MEMORY:
  /// unchanged.
  int Assign(const KVN_nodeCost& source);
  void Attach(KVN_network* newNetwork) { network = newNetwork; }
  /// The table is empty afterwards, until Rebuild.
  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;

 private:
  int PositionOf(int parent) const;

  KVN_network* network;  // not owned
  int handle;
  KVN_Dmatrix costs;
};
