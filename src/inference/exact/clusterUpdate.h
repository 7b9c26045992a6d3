#pragma once

#include <cstdint>

class KVN_network;

/// Updates by join trees, and by decomposition into groups of targets where one tree for all would
/// be too large. Each writes posteriors into the values of the network's nodes and marks these
/// valid; values written before a failure stay.

/// One join tree for each independent part of the reduced network.
///
/// `pending` is null, or a byte for each handle: a node whose byte is set is computed whether it is
/// a target or not when a tree that is built anyway holds it, and its byte is cleared. `limit`
/// bounds the total clique weight of a part, 0 for the default. False when a part passes it or
/// memory is short.
///
/// The network's user property KVN_CLUSTERING_EFFORT, a decimal integer, asks for more work on each
/// tree when it is above 0: see JoinTreeOptions.
bool ClusterUpdate(KVN_network& network, unsigned char* pending, std::int64_t limit);

/// ClusterUpdate of everything at once, and DecomposedUpdate when that fails; unless the network
/// has exactly one target or the user property KVN_REL_DECOMP_DISABLE_FALLBACK, whatever its value.
bool ClusteringUpdate(KVN_network& network);

/// Groups of targets (user property KVN_REL_DECOMP_THRESHOLD, 32), children first; a group that
/// fails is halved down to single targets.
bool DecomposedUpdate(KVN_network& network);

/// All targets at once with the limit of halved groups, halved on failure.
bool DecomposedUpdateWhole(KVN_network& network);

/// The same for the table of algorithms: 0, or KVN_NO_MEMORY for false.
int RunClustering(KVN_network& network);
int RunRelevanceDecomposition(KVN_network& network);
int RunRelevanceDecomposition2(KVN_network& network);
