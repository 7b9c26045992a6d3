#include "values/valcontinuous.h"

#include "foundation/resultCodes.h"

KVN_valcontinuous::KVN_valcontinuous(KVN_network* owningNetwork, int nodeHandle)
    : KVN_nodeValue(owningNetwork, nodeHandle) {}

void KVN_valcontinuous::CleanUp(int deep) {
  KVN_nodeValue::CleanUp(deep);
  discretizedBuckets = 0;
  samples.clear();
  evidenceValue = 0.0;
  accumulator = 0;
}

int KVN_valcontinuous::Assign(KVN_nodeValue& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeValue::Assign(source); result < 0) return result;
  if (source.GetType() != GetType()) return KVN_SUCCESS;
  const auto& other = static_cast<const KVN_valcontinuous&>(source);
  discretizedBuckets = other.discretizedBuckets;
  samples = other.samples;
  hybridSettings = other.hybridSettings;
  accumulator = other.accumulator;
  evidenceValue = other.evidenceValue;
  return KVN_SUCCESS;
}

int KVN_valcontinuous::GetValue(double& /*out*/) { return KVN_NOT_APPLICABLE; }

int KVN_valcontinuous::SetEvidence(double value) {
  evidenceValue = value;
  ChangeFlags(KVN_VALUE_EVIDENCE, KVN_VALUE_PROPAGATED_EVIDENCE);
  return KVN_SUCCESS;
}

int KVN_valcontinuous::ClearEvidence() {
  ChangeFlags(0, KVN_VALUE_EVIDENCE);
  accumulator = 0;
  return KVN_SUCCESS;
}

int KVN_valcontinuous::ClearPropagatedEvidence() {
  ChangeFlags(0, KVN_VALUE_PROPAGATED_EVIDENCE);
  accumulator = 0;
  return KVN_SUCCESS;
}

int KVN_valcontinuous::SetPropagatedEvidence(double value) {
  evidenceValue = value;
  ChangeFlags(KVN_VALUE_PROPAGATED_EVIDENCE, KVN_VALUE_EVIDENCE);
  return KVN_SUCCESS;
}

void KVN_valcontinuous::ResetSamples() {
  samples.clear();
  accumulator = 0;
  ClearValueValid();
}

void KVN_valcontinuous::FinishSamples() {
  accumulator = static_cast<int>(samples.size());
  SetValueValid();
}
