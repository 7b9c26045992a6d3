#include "values/listOfDecisions.h"

#include "foundation/resultCodes.h"
#include "network/network.h"

KVN_listOfDecisions::KVN_listOfDecisions(KVN_network* owningNetwork, int nodeHandle)
    : KVN_nodeValue(owningNetwork, nodeHandle) {}

void KVN_listOfDecisions::CleanUp(int deep) {
  KVN_nodeValue::CleanUp(deep);
  if (deep) matrix.CleanUp();
  decision = 0;
  (void)CheckReadiness(/*deep=*/0);  // only the flag is wanted
}

int KVN_listOfDecisions::Assign(KVN_nodeValue& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeValue::Assign(source); result < 0) return result;
  const int outcome = source.GetEvidence();
  if (source.GetType() == GetType()) {
    KVN_Dmatrix* results = nullptr;
    if (int result = source.GetValue(results); result < 0) return result;
    if (int result = matrix.Assign(*results); result < 0) return result;
  } else if (int result = ReCreate(); result < 0) {
    return result;
  }
  // A choice that doesn't exist here, or that the network refuses, is left out.
  if (outcome >= 0 && IsEvidence()) {
    (void)SetEvidence(outcome);
  } else if (outcome >= 0 && Choose(outcome) == 0) {
    SetValueValid();
  }
  (void)CheckReadiness(/*deep=*/1);  // status only
  (void)CheckConsistency(/*deep=*/1);
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::ReCreate() {
  CleanUp(/*deep=*/1);
  const int alternatives = GetOutcomeCount();
  if (alternatives < 1) {
    SetReady(false);
    return KVN_REFUSED;
  }
  if (int result = matrix.AppendDimension(alternatives); result < 0) return result;
  (void)CheckReadiness(/*deep=*/1);  // status only
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::Choose(int outcome) {
  if (outcome < 0 || outcome >= GetOutcomeCount()) return KVN_REFUSED;
  decision = outcome;
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::GetEvidence() const { return HasEvidence() ? decision : KVN_REFUSED; }

int KVN_listOfDecisions::SetEvidence(int outcome) {
  if (IsEvidence()) (void)ClearEvidence();  // can't fail behind the test
  if (HasEvidence() && decision != outcome) return KVN_REFUSED;
  if (Choose(outcome) < 0) return KVN_SUCCESS;
  ChangeFlags(KVN_VALUE_EVIDENCE | KVN_VALUE_VALID, KVN_VALUE_PROPAGATED_EVIDENCE);
  const int result = network->EvidenceChanged(handle);
  if (result != 0) (void)ClearEvidence();
  return result;
}

int KVN_listOfDecisions::ClearEvidence() {
  if (!IsEvidence()) return KVN_REFUSED;
  ChangeFlags(0, KVN_VALUE_EVIDENCE | KVN_VALUE_VALID);
  (void)network->EvidenceCleared(handle);  // the choice is gone, whatever became stale
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::ClearPropagatedEvidence() {
  if (!IsPropagatedEvidence()) return KVN_REFUSED;
  ChangeFlags(0, KVN_VALUE_PROPAGATED_EVIDENCE | KVN_VALUE_VALID);
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::SetPropagatedEvidence(int outcome) {
  if (HasEvidence()) return KVN_REFUSED;
  if (Choose(outcome) < 0) return KVN_SUCCESS;
  ChangeFlags(KVN_VALUE_PROPAGATED_EVIDENCE | KVN_VALUE_VALID, 0);
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::GetValue(KVN_Dmatrix*& out) {
  out = &matrix;
  return KVN_SUCCESS;
}

int KVN_listOfDecisions::SetValue(const KVN_Dmatrix& source) { return matrix.Assign(source); }
