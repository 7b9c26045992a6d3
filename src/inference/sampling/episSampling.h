#pragma once

class KVN_network;

/// Importance sampling with tables from loopy propagation (C. Yuan and M. J. Druzdzel 2003, An
/// importance sampling algorithm based on evidence pre-propagation): each table is multiplied by
/// the likelihood of what lies below its node, and small probabilities are raised to a cutoff. The
/// rounds of propagation, the cutoffs and the outcome counts they hold for are settings of the
/// network; no more rounds are made than the longest chain of arcs of the whole network is long.
///
/// Each part is drawn with a new seed; see NewAdaptiveSeed. See RunOnParts for the results.
int RunEpisSampling(KVN_network& network);
