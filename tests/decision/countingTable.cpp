// In place of the engine's tables: the same evaluators, and an algorithm that counts.

#include "tests/decision/countingTable.h"

#include "decision/cooperEvaluator.h"
#include "decision/shachterEvaluator.h"
#include "inference/exact/clusterUpdate.h"
#include "network/updateAlgorithm.h"

int theUpdateCount = 0;
int theForcedResult = 0;

namespace {

int CountedUpdate(KVN_network& network) {
  theUpdateCount++;
  return theForcedResult != 0 ? theForcedResult : RunClustering(network);
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
