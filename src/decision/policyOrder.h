#pragma once

#include "foundation/intArray.h"

class KVN_network;

/// The order in which an influence diagram is played: what is observed and decided, one after the
/// other. Both evaluators read a diagram by these rules.

/// A copy of the network's order of all nodes, parents first. KVN_NO_MEMORY where it isn't whole.
[[nodiscard]] int CopyOrderOfNodes(KVN_network& network, KVN_intArray& nodes);

/// Appends the decisions without evidence, and the nodes without evidence that are parents of a
/// decision, in temporal order: before each decision what is known when it is made.
int BuildPolicyNodes(KVN_network& network, KVN_intArray& policyNodes);

/// The nodes of `policyNodes` from `begin` up to and including the next decision, or up to the end.
/// Returns the position behind them, which is `begin` when there are none.
int NextStage(const KVN_network& network, const KVN_intArray& policyNodes, int begin,
              KVN_intArray& stage);

/// Where nothing in the diagram says which of two decisions comes first, their order in
/// `policyNodes` is taken, an arc is added for it, and the log is told with KVN_REFUSED: a notice,
/// not a failure. The arcs stay in the network (intended: the next evaluation reads the diagram in
/// the same way). Appends the two ends of each; an arc that the network refuses is neither recorded
/// nor told.
int AddTemporalArcs(KVN_network& network, const KVN_intArray& policyNodes, KVN_intArray& addedArcs);
