#pragma once

#include <utility>
#include <vector>

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"
#include "network/network.h"

class KVN_nodeValue;

/// Policy evaluation: solves an influence diagram by repeated belief updating (Cooper, "A Method
/// for Using Belief Networks as Influence Diagrams", 1988). A copy of the network, converted to
/// chance nodes, is updated once for each combination of decisions and observations that matters,
/// and the results are stored in indexed values of the network. Folding these back from the last
/// decision to the first gives the policy (Raiffa, "Decision Analysis", 1968: averaging out and
/// folding back).
///
/// An observation or decision is enumerated when the utility depends on it, all others being known.
/// That leaves out one that matters only through a later observation: what a forecast says of the
/// weather, where the weather itself is seen before the last decision. The policy is then not the
/// best one. With the network's user property KVN_POLICY_EFFORT, a decimal integer above 0, these
/// nodes are enumerated too and the policy is exact, at the price of more updates.
///
/// One object per evaluation; docs/decisions.md says how to read the results.
class CooperEvaluator {
 public:
  CooperEvaluator() = default;
  CooperEvaluator(const CooperEvaluator&) = delete;
  CooperEvaluator& operator=(const CooperEvaluator&) = delete;
  ~CooperEvaluator();

  /// 0, or the code of what failed, with "Error when running Cooper's algorithm" in the log and no
  /// belief valid. A network without utilities is told to the log, and gets beliefs without
  /// policies. Values must have been reset by the caller. Arcs for an assumed order of decisions
  /// stay in the network; everything else in it is as before but for the values.
  int Evaluate(KVN_network& network);

 private:
  int Prepare();
  int FindMainUtility();
  int AddMainUtility(const KVN_intArray& candidates);
  void DropMainUtility();
  int DeleteMauNodes();
  void WidenTargets();

  // What depends on what (scenarioRelevance.cpp).
  int FindRelevantScenarios();
  int ProbeMainUtility();
  int CompleteScenarios();
  int ProbeResults();
  int ProbePolicyNodes();
  int ListScenarioNodesBefore(int policyNode, KVN_intArray& before) const;
  [[nodiscard]] int Probe(int handle, int policyNode, bool& depends);
  void Observe(const KVN_intArray& observed);
  [[nodiscard]] int Forget(int handle);
  void Restore(int handle);
  void KeepSoftEvidence();
  void RestoreSoftEvidence(int handle);

  int EvaluateScenarios();
  int EvaluateScenario();
  int FinishObservation(int handle);
  int TellImpossible() const;
  void StoreResult(int handle);
  void StoreIndexedResults();
  int FinishValues();
  int FoldBack();
  int StoreDecision(int handle, const KVN_Dmatrix& expected, int indexCount);
  int AverageOut(int handle, KVN_Dmatrix& expected) const;
  void MarkValid();

  KVN_network* model = nullptr;  // not owned
  KVN_network working;           // the converted copy; same handles
  KVN_intArray utilities;        // of kind TABLE and MAU, parents first
  KVN_intArray scenarioNodes;    // what is enumerated, in temporal order
  std::vector<int> scenario;     // by handle: present outcome of a node of scenarioNodes
  KVN_intArray policyNodes;      // decisions to make and what is observed before them
  int mainUtility = -1;          // the utility that sums up the diagram
  bool mainUtilityCreated = false;
  bool computePolicy = true;
  bool hasEffort = false;                                         // KVN_POLICY_EFFORT
  KVN_intArray addedArcs;                                         // pairs of handles
  std::vector<bool> stored;                                       // by handle: a result was written
  std::vector<std::pair<int, std::vector<double>>> softEvidence;  // of policyNodes
};

/// The evaluator for the table of special updates.
int RunPolicyEvaluation(KVN_network& network);
