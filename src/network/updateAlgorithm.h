#pragma once

class KVN_network;

/// Codes of KVN_network::SetDefaultBNAlgorithm.
enum KVN_algorithm : int {
  KVN_ALG_CLUSTERING = 0,
  KVN_ALG_LOGIC_SAMPLING = 1,
  KVN_ALG_POLYTREE = 2,
  KVN_ALG_LIKELIHOOD_WEIGHTING = 3,
  KVN_ALG_SELF_IMPORTANCE = 4,
  KVN_ALG_LIKELIHOOD_WEIGHTING_2 = 5,
  KVN_ALG_BACKWARD_SAMPLING = 6,
  KVN_ALG_AIS_SAMPLING = 7,
  KVN_ALG_EPIS_SAMPLING = 8,
  KVN_ALG_LOOPY_PROPAGATION = 9,
  KVN_ALG_SEPSET_JOIN_TREE = 10,
  KVN_ALG_RELEVANCE_DECOMPOSITION = 11,
  KVN_ALG_RELEVANCE_DECOMPOSITION_2 = 12,
};

/// One row per algorithm that stands: the model knows that there are algorithms, not which. A code
/// without a row answers KVN_REFUSED; nothing falls back silently.
struct KVN_updateAlgorithm {
  int code;                          // KVN_ALG_...; -1 ends the table
  int (*run)(KVN_network& network);  // 0 or a negative result
};
extern const KVN_updateAlgorithm theUpdateAlgorithms[];  // defined in inference/algorithmTable.cpp

/// The ways to update a network that isn't a plain discrete one. A null entry answers KVN_REFUSED.
struct KVN_specialUpdates {
  int (*policyEvaluation)(KVN_network& network);  // decisions, algorithm 0
  int (*bestPolicySearch)(KVN_network& network);  // decisions, algorithm 1
  int (*solveEquations)(KVN_network& network);    // equations, plain
  int (*convertToHybrid)(KVN_network& network);   // equations with evidence below
  // Equations on intervals, started from one equation node. Answers KVN_NOT_APPLICABLE, with
  // nothing done, for a node that has none: the next equation node is asked then.
  int (*discretize)(KVN_network& network, int equationHandle);
  int (*hybridMode)(KVN_network& network, int mode);  // modes 13 to 16
};
extern const KVN_specialUpdates theSpecialUpdates;  // defined in inference/algorithmTable.cpp
