#pragma once

#include "definitions/binaryGate.h"

/// Parent types of a KVN_demorgan; the words are those of files.
enum KVN_demorganParentType : int {
  KVN_DEMORGAN_INHIBITOR = 0,    // lowers while its coordinate is 0
  KVN_DEMORGAN_REQUIREMENT = 1,  // lowers while its coordinate isn't 0
  KVN_DEMORGAN_CAUSE = 2,        // raises while its coordinate is 0
  KVN_DEMORGAN_BARRIER = 3,      // raises while its coordinate isn't 0
};

/// Gate of opposing influences: parents that raise the probability of "True" act as in a noisy OR,
/// and those that lower it as in a noisy AND, the two being duals by De Morgan's laws (noisy gates:
/// J. Pearl, Probabilistic Reasoning in Intelligent Systems, 1988, section 4.3.2).
///
/// A row starts with p = priorBelief; then each active raising parent, in parent list order, does
/// p = p + (1 - p) * weight, and after all of those each active lowering parent does
/// p = p * (1 - weight). A type outside 0 to 3 takes part in neither pass.
class KVN_demorgan : public KVN_binaryGate {
 public:
  using KVN_binaryGate::KVN_binaryGate;

  int GetType() const override { return KVN_TYPE_DEMORGAN; }
  const char* GetTypeName() const override { return "DEMORGAN"; }

  const KVN_intArray& GetParentTypes() const { return parentTypes; }
  /// One type per parent, which isn't checked here; KVN_REFUSED for another count: unchanged.
  int SetParentTypes(const KVN_intArray& types);
  const KVN_doubleArray& GetParentWeights() const { return weights; }
  /// One weight per parent, of any size; KVN_REFUSED for another count: unchanged.
  int SetParentWeights(const KVN_doubleArray& values);
  double GetPriorBelief() const { return priorBelief; }
  /// KVN_REFUSED outside 0 to 1, bounds included: unchanged.
  int SetPriorBelief(double value);

  /// Permutes types, then weights. It is meant that the types stay permuted when the weights
  /// refuse the order.
  int ReorderParents(const KVN_intArray& order) override;
  /// Weight 1.0 for each parent, on purpose another default than the 0.0 of a parent that is added
  /// later. KVN_REFUSED when a parent has no type, or none of 0 to 3: the gate then has no weights
  /// and its table no parent dimensions.
  int ReCreate() override;
  /// KVN_NOT_APPLICABLE from any other class: a node that becomes a gate starts with the defaults.
  /// No notification. KVN_NOT_READY, KVN_NO_MEMORY: unchanged.
  int Assign(KVN_nodeDefinition& source) override;
  /// Nothing for a target of another class.
  void CopyParametersTo(KVN_nodeDefinition& target) override;
  void CleanUp(int deep) override;

 protected:
  int CountOfNumbers() const override { return weights.GetNumItems(); }
  int InsertNumbers(int position) override;
  int DeleteNumbers(int position) override;
  double RowProbability(const int* coordinates, int parentCount) const override;

 private:
  int CopyNumbers(const KVN_demorgan& source);

  KVN_intArray parentTypes;  // as many items as `weights`, in parent list order
  KVN_doubleArray weights;
  double priorBelief = kDefaultBase;  // probability of "True" before any parent acts
};
