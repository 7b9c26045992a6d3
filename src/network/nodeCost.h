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
class KVN_nodeCost : public KVN_object {
 public:
  KVN_nodeCost(KVN_network* network, int handle);
  KVN_nodeCost(const KVN_nodeCost&) = delete;
  KVN_nodeCost& operator=(const KVN_nodeCost&) = delete;

  /// Events, as in a definition: 0 and nothing done.
  virtual int EventQuery(int code);
  virtual int ForwardEvent(int code);

  KVN_Dmatrix& GetCosts() { return costs; }
  /// One number per cell, in cell order; KVN_REFUSED for another count: unchanged.
  [[nodiscard]] int SetCosts(const KVN_doubleArray& values);

  /// The network has just added (is about to remove) the cost arc. KVN_REFUSED for a parent whose
  /// kind has no outcomes to index by.
  [[nodiscard]] int AddParent(int parent);
  int RemoveParent(int parent);
  int ParentOutcomeAdded(int parent, int position);
  int ParentOutcomeRemoved(int parent, int position);
  int ParentOutcomesReordered(int parent, const KVN_intArray& order);

  /// Builds the table anew from the list of cost parents; every cost becomes 0.0. A parent that
  /// can't be added is told to the log with "Parent could not be added" and left out.
  int Rebuild();

  /// KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_nodeCost& source);
  void Attach(KVN_network* newNetwork) { network = newNetwork; }
  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;

 private:
  int PositionOf(int parent) const;

  KVN_network* network;  // not owned
  int handle;
  KVN_Dmatrix costs;
};
