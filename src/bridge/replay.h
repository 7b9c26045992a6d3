#pragma once

#include "bridge/bridgeState.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"

class KVN_network;
class KVN_node;
class KVN_noisyMAX;

/// Results of ReplaySubmodels. A bad handle doesn't stop a walk (intended): the host gets the rest
/// of the tree.
constexpr int kReplayBadSubmodel = 1;
constexpr int kReplayFailed = -1;

/// Calls of the host's methods with the network in `state`. A failure leaves an exception pending,
/// the one a callback threw or the JVM's where it had no memory, but for memory that the engine
/// lacked.

/// "putNetworkParameter" for each user property of the network, in stored order.
bool ReplayNetworkParameters(const BridgeState& state);

/// "loadSubmodel" for the submodel and all below it, depth first, parents before children, children
/// in table order. 0, kReplayBadSubmodel with a line on standard error when `handle` names none,
/// kReplayFailed.
int ReplaySubmodels(const BridgeState& state, int handle);

/// "loadNode" for each node by ascending handle, which is no topological order.
bool ReplayNodes(const BridgeState& state);

/// "loadNode" for one node. Only plain tables, noisy-MAX gates and truth tables can be told to the
/// host; a node of another kind is a failure.
bool ReplayNode(const BridgeState& state, int handle);

/// The `int[]` of "loadNode":
///
///     0 .. 3   centre x and y, width and height on the diagram
///     4        kind: 0 probability table, 1 noisy-MAX, 2 truth table
///     5        diagnosis type: 0 target, 1 observation, 2 auxiliary
///     6, 7     mandatory, ranked
///     8        default outcome, or -1
///     9        handle of the submodel, with KVN_SUBMODEL_BIT
///     10       number of faults
///     11 ..    the outcomes that are faults, ascending
///
/// KVN_NO_MEMORY.
[[nodiscard]] int MakeNodeRecord(KVN_node& node, int kind, KVN_intArray& record);

/// The identifiers of the nodes. A handle without a node is reported on standard error; it and all
/// after it are then unset. KVN_NO_MEMORY.
[[nodiscard]] int MakeNodeIDList(const KVN_network& network, const KVN_intArray& handles,
                                 KVN_stringArray& ids);

/// The strengths of all parents, one after the other: as many numbers as the parents have outcomes
/// together. A handle without a node is reported on standard error, and ends the list before it.
/// KVN_NO_MEMORY.
[[nodiscard]] int MakeStrengthsArray(const KVN_noisyMAX& gate, const KVN_intArray& parents,
                                     KVN_intArray& strengths);
