#pragma once

#include "foundation/intArray.h"
#include "network/network.h"

/// Best policy search: answers which alternative of the next decision is best, given what is
/// observed now, and nothing else. All utilities are merged into one, which becomes a chance node
/// whose first outcome is observed; the most probable alternative of a decision is then the best
/// one (Shachter and Peot, "Decision Making Using Probabilistic Inference Methods", 1992).
///
/// Later decisions are settled first, each by one alternative whatever will be observed before it.
/// So the answer is exact for a single decision, and for several of them a rule of thumb: policy
/// evaluation with KVN_POLICY_EFFORT is the exact method.
class ShachterEvaluator {
 public:
  ShachterEvaluator() = default;
  ShachterEvaluator(const ShachterEvaluator&) = delete;
  ShachterEvaluator& operator=(const ShachterEvaluator&) = delete;

  /// 0: the value of the next decision is 1.0 at the best alternative and 0.0 elsewhere, and it is
  /// the only valid one. KVN_REFUSED, with the reason in the log, when the next decision has an
  /// unobserved parent or there are too many parents of utilities; the latter leaves the change
  /// mask of the network at 0 (intended). Values must have been reset by the caller.
  int Evaluate(KVN_network& network);

 private:
  bool CheckApplicable() const;
  int Prepare();
  int FoldMauNodes();
  int MergeUtilities();
  int ListUtilitiesAndParents(KVN_intArray& utilities, KVN_intArray& parents);
  int AddUtility(int utility);
  int SolveDecisions();

  KVN_network* model = nullptr;  // not owned
  KVN_network working;           // the converted copy; same handles
  KVN_intArray order;            // temporal, of the model
  KVN_intArray decisions;        // without evidence, in temporal order
  int mergedUtility = -1;        // in `working`
  KVN_intArray policyNodes;
  KVN_intArray addedArcs;  // pairs of handles
};

/// The evaluator for the table of special updates.
int RunBestPolicySearch(KVN_network& network);
