// The one place that knows which algorithms the engine has. The model calls them through these
// tables and so depends on none of them.

#include "decision/cooperEvaluator.h"
#include "decision/shachterEvaluator.h"
#include "inference/exact/clusterUpdate.h"
#include "inference/exact/polytree.h"
#include "inference/exact/sepsetJoinTree.h"
#include "inference/hybrid/discretizingUpdate.h"
#include "inference/hybrid/equationSolver.h"
#include "inference/hybrid/hybridConversion.h"
#include "inference/sampling/aisSampling.h"
#include "inference/sampling/backwardSampling.h"
#include "inference/sampling/episSampling.h"
#include "inference/sampling/likelihoodWeighting.h"
#include "inference/sampling/logicSampling.h"
#include "inference/sampling/loopyPropagation.h"
#include "inference/sampling/selfImportance.h"
#include "network/updateAlgorithm.h"

const KVN_updateAlgorithm theUpdateAlgorithms[] = {
    {KVN_ALG_CLUSTERING, ClusteringUpdate},
    {KVN_ALG_LOGIC_SAMPLING, RunLogicSampling},
    {KVN_ALG_POLYTREE, PolytreeUpdate},
    {KVN_ALG_LIKELIHOOD_WEIGHTING, RunLikelihoodWeighting},
    {KVN_ALG_SELF_IMPORTANCE, RunSelfImportance},
    {KVN_ALG_LIKELIHOOD_WEIGHTING_2, RunLikelihoodWeighting},
    {KVN_ALG_BACKWARD_SAMPLING, RunBackwardSampling},
    {KVN_ALG_AIS_SAMPLING, RunAisSampling},
    {KVN_ALG_EPIS_SAMPLING, RunEpisSampling},
    {KVN_ALG_LOOPY_PROPAGATION, RunLoopyPropagation},
    {KVN_ALG_SEPSET_JOIN_TREE, SepsetJoinTreeUpdate},
    {KVN_ALG_RELEVANCE_DECOMPOSITION, DecomposedUpdate},
    {KVN_ALG_RELEVANCE_DECOMPOSITION_2, DecomposedUpdateWhole},
    {-1, nullptr},
};

const KVN_specialUpdates theSpecialUpdates = {
    .policyEvaluation = RunPolicyEvaluation,
    .bestPolicySearch = RunBestPolicySearch,
    .solveEquations = SolveEquations,
    .convertToHybrid = ConvertToHybrid,
    .discretize = DiscretizingUpdate,
    .hybridMode = nullptr,
};
