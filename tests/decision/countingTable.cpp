// In place of the engine's tables: the same evaluators, and an algorithm that counts.

#include "tests/decision/countingTable.h"

#include "decision/cooperEvaluator.h"
#include "decision/shachterEvaluator.h"
#include "inference/exact/clusterUpdate.h"
#include "network/network.h"
#include "network/updateAlgorithm.h"
#include "values/nodeValue.h"

int theUpdateCount = 0;
int theForcedResult = 0;
int theBlindUpdate = 0;

namespace {

int CountedUpdate(KVN_network& network) {
  theUpdateCount++;
  if (theForcedResult != 0) return theForcedResult;
  const int result = ClusteringUpdate(network);
  if (theUpdateCount != theBlindUpdate) return result;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_Dmatrix* posterior = nullptr;
    if (network.ValueOf(h)->GetValue(posterior) == 0) posterior->FillWith(0.0);
  }
  return result;
}

}  // namespace

const KVN_updateAlgorithm theUpdateAlgorithms[] = {
    {KVN_ALG_CLUSTERING, CountedUpdate},
    {-1, nullptr},
};
const KVN_specialUpdates theSpecialUpdates = {
    .policyEvaluation = RunPolicyEvaluation,
    .bestPolicySearch = RunBestPolicySearch,
    .solveEquations = nullptr,
    .convertToHybrid = nullptr,
    .discretize = nullptr,
    .hybridMode = nullptr,
};
