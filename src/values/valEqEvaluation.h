#pragma once

#include <vector>

#include "values/nodeValue.h"
#include "values/weightedSample.h"

/// Value of an equation node: a number when it is known, else the summary of a run over samples
/// (mean, standard deviation, and the samples themselves or probabilities over the node's
/// intervals).
///
/// It is meant that the flags differ from those of a belief vector: evidence makes the value valid
/// at once, propagated evidence counts as evidence too, and no evidence operation checks a range or
/// tells the network. GetValue gives the number of the evidence, never the mean.
class KVN_valEqEvaluation : public KVN_nodeValue {
 public:
  using KVN_nodeValue::GetValue;
  using KVN_nodeValue::SetEvidence;
  using KVN_nodeValue::SetPropagatedEvidence;

  KVN_valEqEvaluation(KVN_network* owningNetwork, int nodeHandle);

  void CleanUp(int deep) override;
  /// Takes evidence and results of a value of the same type. Of another type only the flags and
  /// the place come along.
  int Assign(KVN_nodeValue& source) override;
  int GetType() const override { return KVN_VALUE_EQUATION; }
  int GetSize() override;
  int GetValue(double& out) override;
  int SetEvidence(double value) override;
  /// KVN_REFUSED without evidence of either kind; both go.
  int ClearEvidence() override;
  /// KVN_REFUSED without propagated evidence; evidence goes with it.
  int ClearPropagatedEvidence() override;
  int SetPropagatedEvidence(double value) override;

  // --- Results. A run calls ResetSamples, AddSample for each sample, and FinishSamples.

  void ResetSamples();
  void AddSample(double value) {
    sampleCount++;
    mean += value;
    deviation += value * value;
    if (keepSamples) samples.push_back({value, 1.0});
  }
  /// Turns the sums into mean and standard deviation, in the order the samples came, and makes the
  /// value valid. Without samples nothing happens.
  void FinishSamples();
  /// Takes a finished list. Where every weight is exactly 0, all count as 1, in the stored copy
  /// too (intended). The deviation is not computed: -1.
  void SetWeightedSamples(const std::vector<KVN_weightedSample>& pairs);
  /// Takes one probability for each interval of the node's definition. KVN_NOT_APPLICABLE for a
  /// definition without intervals, KVN_REFUSED for another count: unchanged.
  [[nodiscard]] int SetDiscretized(const std::vector<double>& probabilities);
  /// The result is one number without spread.
  void SetPoint(double value);

  /// Sum while samples are added, then the mean; -1 beside probabilities over intervals.
  double GetMean() const { return mean; }
  /// Standard deviation; -1 where it hasn't been computed.
  double GetDeviation() const { return deviation; }
  const std::vector<KVN_weightedSample>& GetSamples() const { return samples; }
  /// Empty unless the last result was over intervals.
  const std::vector<double>& GetDiscretized() const { return discretized; }
  int GetSampleCount() const { return sampleCount; }
  bool GetKeepSamples() const { return keepSamples; }
  /// Whether a run stores its samples (default); without them a long run costs no memory.
  void SetKeepSamples(bool keep) { keepSamples = keep; }

 private:
  double evidenceValue = 0.0;
  std::vector<KVN_weightedSample> samples;
  bool keepSamples = true;
  int sampleCount = 0;
  double mean = 0.0;       // sum of the samples between ResetSamples and FinishSamples
  double deviation = 0.0;  // sum of squares between the two
  std::vector<double> discretized;
};
