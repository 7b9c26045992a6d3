#pragma once

class KVN_network;
struct EvidenceInput;

/// What relevance reasoning has settled by itself, before any sum that could turn out to be 0: a
/// node that is certainly in a state which its table excludes, given what its parents certainly
/// are, or that may be in a state whose likelihood was told to be 0. The evidence is impossible
/// then. The handle of the first such node of an updated network, or -1.
int FindContradiction(KVN_network& network, const EvidenceInput& input);
