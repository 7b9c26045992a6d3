#include "values/valEqEvaluation.h"

#include <cmath>

#include "expressions/equation.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr double kNotComputed = -1.0;

}  // namespace

KVN_valEqEvaluation::KVN_valEqEvaluation(KVN_network* owningNetwork, int nodeHandle)
    : KVN_nodeValue(owningNetwork, nodeHandle) {}

void KVN_valEqEvaluation::CleanUp(int deep) {
  KVN_nodeValue::CleanUp(deep);
  evidenceValue = 0.0;
  ResetSamples();
}

int KVN_valEqEvaluation::Assign(KVN_nodeValue& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeValue::Assign(source); result < 0) return result;
  if (source.GetType() == GetType()) {
    const auto& other = static_cast<const KVN_valEqEvaluation&>(source);
    double number = 0.0;
    if (source.IsEvidence() && source.GetValue(number) == 0) (void)SetEvidence(number);
    samples = other.samples;
    mean = other.mean;
    deviation = other.deviation;
    discretized = other.discretized;
    sampleCount = other.sampleCount;
    keepSamples = other.keepSamples;
  }
  (void)CheckReadiness(/*deep=*/1);  // status only
  (void)CheckConsistency(/*deep=*/1);
  return KVN_SUCCESS;
}

int KVN_valEqEvaluation::GetSize() { return KVN_NOT_APPLICABLE; }

int KVN_valEqEvaluation::GetValue(double& out) {
  out = evidenceValue;
  return KVN_SUCCESS;
}

int KVN_valEqEvaluation::SetEvidence(double value) {
  evidenceValue = value;
  ChangeFlags(KVN_VALUE_EVIDENCE | KVN_VALUE_VALID, KVN_VALUE_PROPAGATED_EVIDENCE);
  return KVN_SUCCESS;
}

int KVN_valEqEvaluation::ClearEvidence() {
  if (!HasEvidence()) return KVN_REFUSED;
  ChangeFlags(0, KVN_VALUE_EVIDENCE | KVN_VALUE_VALID | KVN_VALUE_PROPAGATED_EVIDENCE);
  return KVN_SUCCESS;
}

int KVN_valEqEvaluation::ClearPropagatedEvidence() {
  if (!IsPropagatedEvidence()) return KVN_REFUSED;
  return ClearEvidence();
}

int KVN_valEqEvaluation::SetPropagatedEvidence(double value) {
  evidenceValue = value;
  ChangeFlags(KVN_VALUE_EVIDENCE | KVN_VALUE_VALID | KVN_VALUE_PROPAGATED_EVIDENCE, 0);
  return KVN_SUCCESS;
}

void KVN_valEqEvaluation::ResetSamples() {
  samples.clear();
  discretized.clear();
  ClearValueValid();
  mean = 0.0;
  deviation = 0.0;
  sampleCount = 0;
}

void KVN_valEqEvaluation::FinishSamples() {
  if (sampleCount == 0) return;
  const double average = mean / sampleCount;
  const double variance = deviation / sampleCount - average * average;
  mean = average;
  // Rounding can leave a little below 0; what isn't a number counts as 0 too.
  deviation = variance > 0.0 ? std::sqrt(variance) : 0.0;
  SetValueValid();
}

void KVN_valEqEvaluation::SetWeightedSamples(const std::vector<KVN_weightedSample>& pairs) {
  samples = pairs;
  bool anyWeight = false;
  for (const KVN_weightedSample& sample : samples) anyWeight = anyWeight || sample.weight != 0.0;
  double weights = 0.0;
  double sum = 0.0;
  for (KVN_weightedSample& sample : samples) {
    if (!anyWeight) sample.weight = 1.0;
    weights += sample.weight;
    sum += sample.value * sample.weight;
  }
  deviation = kNotComputed;
  if (weights > 0.0) {
    mean = sum / weights;
  } else {
    mean = samples.empty() ? 0.0 : samples.front().value;
    deviation = 0.0;
  }
  discretized.clear();
  SetValueValid();
}

int KVN_valEqEvaluation::SetDiscretized(const std::vector<double>& probabilities) {
  const KVN_nodeDefinition* definition =
      network != nullptr ? network->DefinitionOf(handle) : nullptr;
  if (definition == nullptr || definition->GetType() != KVN_TYPE_EQUATION) {
    return KVN_NOT_APPLICABLE;
  }
  const auto& intervals = static_cast<const KVN_equation*>(definition)->GetDiscIntervals();
  if (intervals.empty()) return KVN_NOT_APPLICABLE;
  if (probabilities.size() != intervals.size()) return KVN_REFUSED;
  discretized = probabilities;
  samples.clear();
  mean = kNotComputed;
  deviation = kNotComputed;
  SetValueValid();
  return KVN_SUCCESS;
}

void KVN_valEqEvaluation::SetPoint(double value) {
  ResetSamples();
  mean = value;
  SetValueValid();
}
