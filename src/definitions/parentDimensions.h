#pragma once

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"

class KVN_network;

/// Result of an edit that found a parent without a dimension: nothing was done, and this is no
/// failure.
constexpr int KVN_PARENT_IGNORED = 1;

/// Finds the position of `parent` in the parent list of `handle`. KVN_REFUSED for a handle without
/// a node, for a utility (KVN_TYPE_TABLE) and for a node that is no parent. KVN_PARENT_IGNORED for
/// every other kind without a dimension: it is meant that these pass in silence, although AddParent
/// refuses them, so that an arc that came about by a change of type can be removed.
int FindParentDimension(const KVN_network* network, int handle, int parent, int& position);

/// The edits of a definition's table that follow edits of the graph around its node: what
/// probability tables and utility tables have in common. A short-lived local.
///
/// The position of a parent in the network's list is its dimension. Results: 0, KVN_PARENT_IGNORED,
/// or a negative code with the table unchanged; but want of memory in RemoveOutcome leaves a last
/// slice of 0.0 in place of the one removed.
class KVN_parentDimensions {
 public:
  KVN_parentDimensions(const KVN_network* theNetwork, int theHandle, KVN_Dmatrix& theTable)
      : network(theNetwork), handle(theHandle), table(theTable) {}

  /// Repeats the table along a new dimension. Every kind without dimension is refused; a parent
  /// without outcomes is ignored.
  [[nodiscard]] int Add(int parent);
  /// Keeps the slice of the parent's first outcome.
  [[nodiscard]] int Remove(int parent);
  /// Keeps the slice of the parent's evidence; KVN_REFUSED when it has none.
  [[nodiscard]] int AbsorbEvidence(int parent);
  /// Sums the dimension out with the first cells of the parent's own table as weights: right for a
  /// parent that has no parents itself. KVN_REFUSED for a decision or when there is evidence.
  [[nodiscard]] int Marginalize(int parent);
  /// The cells of a new outcome are 0.0.
  [[nodiscard]] int InsertOutcome(int parent, int position);
  [[nodiscard]] int RemoveOutcome(int parent, int position);
  [[nodiscard]] int ReorderOutcomes(int parent, const KVN_intArray& order);
  /// The own dimension stays last.
  [[nodiscard]] int Reorder(const KVN_intArray& order);

 private:
  int KeepSlice(int position, int outcome);

  const KVN_network* network;  // not owned
  int handle;
  KVN_Dmatrix& table;
};
