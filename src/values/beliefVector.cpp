#include "values/beliefVector.h"

#include <cmath>
#include <new>

#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

// Likelihoods whose sum is that near to 1 are stored untouched, so that what a file or a caller
// gave comes back bit for bit.
constexpr double kSumTolerance = 0.000005;

}  // namespace

KVN_beliefVector::KVN_beliefVector(KVN_network* owningNetwork, int nodeHandle)
    : KVN_nodeValue(owningNetwork, nodeHandle) {}

void KVN_beliefVector::CleanUp(int deep) {
  KVN_nodeValue::CleanUp(deep);
  if (deep) matrix.CleanUp();
  evidence = 0;
  virtualEvidence.reset();
  (void)CheckReadiness(/*deep=*/0);  // only the flag is wanted
}

int KVN_beliefVector::Assign(KVN_nodeValue& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeValue::Assign(source); result < 0) return result;
  // The bit came with the source's flags, the likelihoods didn't.
  DropVirtualEvidence();
  if (int result = TakeEvidence(source); result < 0) return result;
  (void)CheckReadiness(/*deep=*/1);  // status only
  (void)CheckConsistency(/*deep=*/1);
  return KVN_SUCCESS;
}

int KVN_beliefVector::TakeEvidence(KVN_nodeValue& source) {
  const int outcome = source.GetEvidence();
  // What the network or the outcome count refuses is left out on purpose: the source's evidence
  // needn't be possible in the present definition.
  if (source.GetType() != KVN_VALUE_BELIEF_VECTOR) {
    if (int result = ReCreate(); result < 0) return result;
    if (outcome >= 0) (void)SetEvidence(outcome);
    return KVN_SUCCESS;
  }
  KVN_Dmatrix* results = nullptr;
  if (int result = source.GetValue(results); result < 0) return result;
  if (int result = matrix.Assign(*results); result < 0) return result;
  if (outcome >= 0) {
    if (IsEvidence()) {
      (void)SetEvidence(outcome);
    } else if (MakePointMass(outcome) == 0) {
      SetValueValid();
    }
    return KVN_SUCCESS;
  }
  std::vector<double> likelihoods;
  if (source.GetVirtualEvidence(likelihoods) == 0) (void)SetVirtualEvidence(likelihoods);
  return KVN_SUCCESS;
}

int KVN_beliefVector::ReCreate() {
  CleanUp(/*deep=*/1);
  const int outcomes = GetOutcomeCount();
  if (outcomes < 1) {
    SetReady(false);
    return KVN_REFUSED;
  }
  if (int result = matrix.AppendDimension(outcomes); result < 0) return result;
  (void)CheckReadiness(/*deep=*/1);  // status only
  return KVN_SUCCESS;
}

int KVN_beliefVector::MakePointMass(int outcome) {
  const int outcomes = GetOutcomeCount();
  if (outcome < 0 || outcome >= outcomes) return KVN_REFUSED;
  if (matrix.GetNumberOfDimensions() != 1 || matrix.GetSize() != outcomes) {
    // Indexing parents go with their dimensions: evidence makes the result independent of them.
    if (int result = ReCreate(); result < 0) return result;
  }
  evidence = outcome;
  matrix.FillWith(0.0);
  matrix[outcome] = 1.0;
  return KVN_SUCCESS;
}

void KVN_beliefVector::DropVirtualEvidence() {
  virtualEvidence.reset();
  ChangeFlags(0, KVN_VALUE_VIRTUAL_EVIDENCE);
}

int KVN_beliefVector::GetEvidence() const { return HasEvidence() ? evidence : KVN_REFUSED; }

int KVN_beliefVector::SetEvidence(int outcome) {
  if (IsEvidence()) (void)ClearEvidence();  // can't fail behind the test
  // Without the old evidence the network may have derived this node's outcome from that of others.
  if (HasEvidence() && evidence != outcome) return KVN_REFUSED;
  DropVirtualEvidence();
  if (int result = MakePointMass(outcome); result < 0) return result;
  ChangeFlags(KVN_VALUE_EVIDENCE | KVN_VALUE_VALID, KVN_VALUE_PROPAGATED_EVIDENCE);
  const int result = network->EvidenceChanged(handle);
  if (result != 0) (void)ClearEvidence();
  return result;
}

int KVN_beliefVector::ClearEvidence() {
  if (!IsEvidence()) {
    if (!IsVirtualEvidence()) return KVN_REFUSED;
    DropVirtualEvidence();
    (void)network->VirtualEvidenceChanged(handle);  // an update's failure shows in the values
    return KVN_SUCCESS;
  }
  ChangeFlags(0, KVN_VALUE_EVIDENCE | KVN_VALUE_VALID | KVN_VALUE_RESERVED);
  (void)network->EvidenceCleared(handle);  // the evidence is gone, whatever became stale
  return KVN_SUCCESS;
}

int KVN_beliefVector::ClearPropagatedEvidence() {
  if (!IsPropagatedEvidence()) return KVN_REFUSED;
  ChangeFlags(0, KVN_VALUE_PROPAGATED_EVIDENCE | KVN_VALUE_VALID);
  return KVN_SUCCESS;
}

int KVN_beliefVector::SetPropagatedEvidence(int outcome) {
  if (HasEvidence()) return KVN_REFUSED;
  DropVirtualEvidence();
  if (int result = MakePointMass(outcome); result < 0) return result;
  ChangeFlags(KVN_VALUE_PROPAGATED_EVIDENCE | KVN_VALUE_VALID, 0);
  return KVN_SUCCESS;
}

int KVN_beliefVector::GetVirtualEvidence(std::vector<double>& out) const {
  if (virtualEvidence == nullptr) return KVN_REFUSED;
  out = *virtualEvidence;
  return KVN_SUCCESS;
}

int KVN_beliefVector::SetVirtualEvidence(const std::vector<double>& values) {
  if (static_cast<int>(values.size()) != GetOutcomeCount()) return KVN_REFUSED;
  std::unique_ptr<std::vector<double>> taken(new (std::nothrow) std::vector<double>(values));
  if (taken == nullptr) return KVN_NO_MEMORY;
  // Propagated evidence isn't ClearEvidence's to remove: it stays beside the soft evidence until
  // the network derives anew.
  if (HasEvidence()) (void)ClearEvidence();
  double sum = 0.0;
  for (double value : *taken) sum += value;
  if (std::fabs(sum - 1.0) > kSumTolerance) {
    for (double& value : *taken) value /= sum;
  }
  virtualEvidence = std::move(taken);
  ChangeFlags(KVN_VALUE_VIRTUAL_EVIDENCE, 0);
  return network->VirtualEvidenceChanged(handle);
}

int KVN_beliefVector::GetValue(KVN_Dmatrix*& out) {
  out = &matrix;
  return KVN_SUCCESS;
}

int KVN_beliefVector::SetValue(const KVN_Dmatrix& source) { return matrix.Assign(source); }
