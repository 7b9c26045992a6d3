#pragma once

#include <vector>

#include "values/nodeValue.h"
#include "values/weightedSample.h"

/// Settings that the value of a hybrid node carries for the sampler of hybrid networks. Nothing
/// reads them yet; copies keep them.
struct KVN_hybridSettings {
  int kind = 2;
  double low = 0.0;
  double high = 1.0;
  int firstCount = 0;
  int secondCount = 0;
  double smallest = 0.001;
  double largest = 10.0;
};

/// Value of a hybrid node: evidence, and the weighted samples of the last run.
///
/// Unlike with equations, evidence doesn't touch the valid mark. The evidence operations neither
/// check a range nor tell the network. Means are for the reader of the samples to compute.
class KVN_valcontinuous : public KVN_nodeValue {
 public:
  using KVN_nodeValue::GetValue;
  using KVN_nodeValue::SetEvidence;
  using KVN_nodeValue::SetPropagatedEvidence;

  KVN_valcontinuous(KVN_network* owningNetwork, int nodeHandle);

  void CleanUp(int deep) override;
  int Assign(KVN_nodeValue& source) override;
  int GetType() const override { return KVN_VALUE_CONTINUOUS; }
  /// KVN_NOT_APPLICABLE: the number of the evidence is behind GetEvidenceValue.
  int GetValue(double& out) override;
  int SetEvidence(double value) override;
  int ClearEvidence() override;
  int ClearPropagatedEvidence() override;
  int SetPropagatedEvidence(double value) override;

  double GetEvidenceValue() const { return evidenceValue; }
  void ResetSamples();
  void AddSample(double value, double weight) { samples.push_back({value, weight}); }
  /// Notes the number of samples and makes the value valid.
  void FinishSamples();
  const std::vector<KVN_weightedSample>& GetSamples() const { return samples; }
  int GetAccumulator() const { return accumulator; }
  int GetDiscretizedBuckets() const { return discretizedBuckets; }
  void SetDiscretizedBuckets(int count) { discretizedBuckets = count; }
  const KVN_hybridSettings& GetHybridSettings() const { return hybridSettings; }
  void SetHybridSettings(const KVN_hybridSettings& settings) { hybridSettings = settings; }

 private:
  int discretizedBuckets = 0;
  std::vector<KVN_weightedSample> samples;
  double evidenceValue = 0.0;
  int accumulator = 0;  // samples of the last finished run
  KVN_hybridSettings hybridSettings;
};
