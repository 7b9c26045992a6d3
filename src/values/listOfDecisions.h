#pragma once

#include "values/nodeValue.h"

/// Value of a decision node: the expected utility of each alternative, and as evidence the
/// alternative that was chosen.
///
/// The matrix has the indexing parents in order and the alternatives as last dimension. In contrast
/// to a belief vector a choice doesn't touch it, so that the utilities stay readable after the
/// decision was made: a decision with evidence counts as valid although its matrix may be empty or
/// stale. There is no soft evidence.
class KVN_listOfDecisions : public KVN_nodeValue {
 public:
  using KVN_nodeValue::GetValue;
  using KVN_nodeValue::SetEvidence;
  using KVN_nodeValue::SetPropagatedEvidence;

  /// Without a shape until ReCreate; NewValue does both.
  KVN_listOfDecisions(KVN_network* owningNetwork, int nodeHandle);

  void CleanUp(int deep) override;

  int Assign(KVN_nodeValue& source) override;
  /// KVN_REFUSED, with the value not ready, when the node has no alternatives.
  int ReCreate() override;
  int GetType() const override { return KVN_VALUE_LIST_OF_DECISIONS; }

  int GetEvidence() const override;
  /// It is meant that a bad alternative is ignored with 0, unlike in a belief vector; an earlier
  /// choice has been taken back by then.
  int SetEvidence(int outcome) override;
  int ClearEvidence() override;
  int ClearPropagatedEvidence() override;
  /// A bad alternative is ignored here too.
  int SetPropagatedEvidence(int outcome) override;
  int GetValue(KVN_Dmatrix*& out) override;
  int SetValue(const KVN_Dmatrix& source) override;

 private:
  int Choose(int outcome);

  KVN_Dmatrix matrix;
  int decision = 0;  // chosen alternative; read it behind the flags only
};
