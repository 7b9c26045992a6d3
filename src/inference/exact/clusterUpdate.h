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
/// bounds the total clique weight of a part, 0 for the default. KVN_NO_MEMORY when a part passes it
/// or memory is short, KVN_REFUSED for a node without definition or value.
///
/// The network's user property KVN_CLUSTERING_EFFORT, a decimal integer, asks for more work on each
/// tree when it is above 0: see JoinTreeOptions.
[[nodiscard]] int ClusterUpdate(KVN_network& network, unsigned char* pending, std::int64_t limit);

/// ClusterUpdate of everything at once, and DecomposedUpdate when that is too large; unless the
/// network has exactly one target or the user property KVN_REL_DECOMP_DISABLE_FALLBACK, whatever
/// its value.
[[nodiscard]] int ClusteringUpdate(KVN_network& network);

/// Groups of targets (user property KVN_REL_DECOMP_THRESHOLD, 32), children first; a group that
/// is too large is halved down to single targets.
[[nodiscard]] int DecomposedUpdate(KVN_network& network);

/// All targets at once with the limit of halved groups, halved when that is too much.
[[nodiscard]] int DecomposedUpdateWhole(KVN_network& network);
