#pragma once

#include <memory>
#include <vector>

#include "values/nodeValue.h"

/// Value of a node with discrete outcomes: its posterior distribution, its evidence and its soft
/// evidence.
///
/// The matrix has the indexing parents in order and the node's outcomes as last dimension; a new
/// value has the outcomes alone. Cells mean nothing until KVN_VALUE_VALID is set. It isn't resized
/// when outcomes come or go: whoever writes results or evidence next shapes it anew.
///
/// A node with evidence is always valid and holds a point mass.
class KVN_beliefVector : public KVN_nodeValue {
 public:
  using KVN_nodeValue::GetValue;
  using KVN_nodeValue::SetEvidence;
  using KVN_nodeValue::SetPropagatedEvidence;

  /// Without a shape until ReCreate; NewValue does both.
  KVN_beliefVector(KVN_network* owningNetwork, int nodeHandle);

  void CleanUp(int deep) override;

  /// Takes over evidence or soft evidence, and from another belief vector the matrix too. Evidence
  /// is set anew, so the network's hooks run; what they refuse is left out.
  int Assign(KVN_nodeValue& source) override;
  /// KVN_REFUSED, with the value not ready, when the node has no outcomes.
  int ReCreate() override;
  int GetType() const override { return KVN_VALUE_BELIEF_VECTOR; }

  int GetEvidence() const override;
  int SetEvidence(int outcome) override;
  /// Also drops soft evidence, if that is what there is. KVN_REFUSED without either, propagated
  /// evidence included.
  int ClearEvidence() override;
  /// Set and cleared by the network when it derives evidence: neither tells it.
  int ClearPropagatedEvidence() override;
  int SetPropagatedEvidence(int outcome) override;
  int GetVirtualEvidence(std::vector<double>& out) const override;
  /// Replaces user evidence. The values are scaled to sum 1 unless they do within 0.000005; a sum
  /// of 0 isn't caught (intended) and stores NaN. KVN_REFUSED for a wrong count.
  int SetVirtualEvidence(const std::vector<double>& values) override;
  int GetValue(KVN_Dmatrix*& out) override;
  int SetValue(const KVN_Dmatrix& source) override;

 private:
  int MakePointMass(int outcome);
  void DropVirtualEvidence();
  int TakeEvidence(KVN_nodeValue& source);

  KVN_Dmatrix matrix;
  int evidence = 0;  // outcome; read it behind the flags only
  // One likelihood per outcome; null exactly when KVN_VALUE_VIRTUAL_EVIDENCE is clear.
  std::unique_ptr<std::vector<double>> virtualEvidence;
};
