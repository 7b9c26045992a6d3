#pragma once

#include <memory>

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"

class KVN_nodeValue;

/// One node of a sample network: its outcome in the current sample, the tables it is drawn from,
/// and the weight that its outcomes have gathered.
///
/// The tables have one shape, parents first and the node's own outcomes last. `coordinates` points
/// at the `state` of each parent and, last, at this node's own, so that nothing has to be filled in
/// to find the cells of a sample.
class SampleNode {
 public:
  SampleNode() = default;
  SampleNode(const SampleNode&) = delete;
  SampleNode& operator=(const SampleNode&) = delete;

  int state = -1;  // outcome in the current sample; that of the evidence for good
  int outcomes = 0;
  int evidence = -1;                          // observed outcome, or -1
  int cell = 0;                               // the current sample's, in all three tables
  std::unique_ptr<const int*[]> coordinates;  // one more than parents
  const KVN_Dmatrix* cpt = nullptr;           // not owned
  KVN_Dmatrix icpt;                           // the importance table, to draw from
  KVN_Dmatrix score;                          // what the configurations gathered while learning
  double* belief = nullptr;       // not owned; accumulated weight by outcome, then the posterior
  bool relevantAncestor = false;  // lies above some evidence
  KVN_intArray parents;           // places in the sample network, in the order of the table
  KVN_intArray children;

  bool HasEvidence() const { return evidence >= 0; }
  int GetParentCount() const { return parents.GetNumItems(); }
  int GetChildCount() const { return children.GetNumItems(); }
  int GetRowCount() const { return cpt->GetSize() / outcomes; }
  /// Flat index of the row at the parents' states.
  int FindRow() const {
    const int* multipliers = cpt->GetMultipliers().GetItems();
    int row = 0;
    for (int i = 0; i < parents.GetNumItems(); ++i) row += multipliers[i] * *coordinates[i];
    return row;
  }

  /// `out` has one slot per outcome.
  void CopyBelief(double* out) const;
  /// The belief into the value, which becomes valid. KVN_NO_MEMORY.
  [[nodiscard]] int WriteToValue(KVN_nodeValue& value) const;
};
