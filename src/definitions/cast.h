#pragma once

#include "definitions/binaryGate.h"

/// Causal strength gate: each parent pushes the probability of "True" up (positive weight) or down
/// (negative weight), with one weight for each of its two outcomes; the pushes are aggregated and
/// applied to a baseline (K. C. Chang, P. E. Lehner, A. H. Levis, A. K. Zaidi, X. Zhao, On Causal
/// Influence Logic, George Mason University, 1994).
///
/// A row starts with a = b = 1. A parent with weight w < 0 does a = a * (1 + w), another one
/// b = b * (1 - w). The influence r is 0 if a + b is 0, 1 - b / a if b < a, else a / b - 1. Then p
/// is r * (1 - baseline) + baseline for r >= 0, and r * baseline + baseline otherwise: a full push
/// reaches 1 or 0, and no push leaves the baseline.
class KVN_cast : public KVN_binaryGate {
 public:
  using KVN_binaryGate::KVN_binaryGate;

  int GetType() const override { return KVN_TYPE_CAST; }
  const char* GetTypeName() const override { return "CAST"; }

  /// The weights that apply while the parent's coordinate is 0 (isn't 0). One per parent, of any
  /// size; KVN_REFUSED for another count: unchanged.
  const KVN_doubleArray& GetPositiveWeights() const { return positiveWeights; }
  int SetPositiveWeights(const KVN_doubleArray& values);
  const KVN_doubleArray& GetNegativeWeights() const { return negativeWeights; }
  int SetNegativeWeights(const KVN_doubleArray& values);
  double GetBaseline() const { return baseline; }
  /// KVN_REFUSED outside 0 to 1, bounds included: unchanged.
  int SetBaseline(double value);

  /// Permutes positive, then negative weights. It is meant that the first stay permuted when the
  /// second refuse the order.
  int ReorderParents(const KVN_intArray& order) override;
  /// Weights 0.0 for each parent.
  int ReCreate() override;
  /// KVN_NOT_APPLICABLE from any other class: a node that becomes a gate starts with the defaults.
  /// No notification. KVN_NOT_READY, KVN_NO_MEMORY: unchanged.
  int Assign(KVN_nodeDefinition& source) override;
  /// Nothing for a target of another class.
  void CopyParametersTo(KVN_nodeDefinition& target) override;
  void CleanUp(int deep) override;

 protected:
  int CountOfNumbers() const override { return positiveWeights.GetNumItems(); }
  int InsertNumbers(int position) override;
  int DeleteNumbers(int position) override;
  double RowProbability(const int* coordinates, int parentCount) const override;

 private:
  int CopyNumbers(const KVN_cast& source);

  KVN_doubleArray positiveWeights;  // in parent list order
  KVN_doubleArray negativeWeights;  // as many items
  double baseline = kDefaultBase;   // probability of "True" when no parent pushes either way
};
