#pragma once

class KVN_network;

/// Loopy belief propagation alone (see MessagePropagation), with as many rounds as the network's
/// settings of importance sampling say, whatever its depth.
///
/// It is meant that the values get the numbers and not the valid mark: the beliefs are approximate
/// to a degree that nobody knows, and a caller who wants them takes them as such. Values that the
/// reduction of the network settled are valid as always. See RunOnParts for the results.
int RunLoopyPropagation(KVN_network& network);
