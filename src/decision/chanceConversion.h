#pragma once

class KVN_network;

/// A diagram becomes a belief network: the copy that an evaluator works on, never the user's
/// network. A decision becomes a chance node without parents whose alternatives are equally likely.
/// A utility becomes a chance node of two outcomes: the first is as likely as the utility is high,
/// on a scale from 0 for the smallest to 1 for the largest number of its table (Cooper, "A Method
/// for Using Belief Networks as Influence Diagrams", 1988). Its posterior is then the expected
/// utility on that scale.

/// Makes `copy` a copy to work on. KVN_NO_MEMORY also where a node would lack its definition or its
/// value, which a copy of a network alone bears with.
[[nodiscard]] int CopyNetwork(const KVN_network& source, KVN_network& copy);

/// Converts every node, parents first. Gates over binary nodes stay what they are, since inference
/// reads the tables that they stand for; so do nodes without a definition. 0, or the first failure.
int ConvertToChance(KVN_network& network);

/// Makes the network ready for evaluation: evidence is tracked and propagated, nothing updates by
/// itself, and no belief counts as valid.
void PrepareForInference(KVN_network& network);
