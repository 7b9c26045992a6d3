// The one place that knows which algorithms the engine has. The model calls them through these
// tables and so depends on none of them.

#include "decision/cooperEvaluator.h"
#include "decision/shachterEvaluator.h"
#include "inference/exact/clusterUpdate.h"
#include "inference/exact/polytree.h"
#include "inference/exact/sepsetJoinTree.h"
#include "network/updateAlgorithm.h"

const KVN_updateAlgorithm theUpdateAlgorithms[] = {
    {KVN_ALG_CLUSTERING,                RunClustering             },
    {KVN_ALG_POLYTREE,                  PolytreeUpdate            },
    {KVN_ALG_SEPSET_JOIN_TREE,          SepsetJoinTreeUpdate      },
    {KVN_ALG_RELEVANCE_DECOMPOSITION,   RunRelevanceDecomposition },
    {KVN_ALG_RELEVANCE_DECOMPOSITION_2, RunRelevanceDecomposition2},
    {-1,                                nullptr                   },
};

// Entries that are left out are null.
const KVN_specialUpdates theSpecialUpdates = {
    .policyEvaluation = RunPolicyEvaluation,
    .bestPolicySearch = RunBestPolicySearch,
    .solveEquations = nullptr,
    .convertToHybrid = nullptr,
    .discretize = nullptr,
    .hybridMode = nullptr,
};
