#pragma once

#include <string>
#include <utility>
#include <vector>

class KVN_network;
class Output;

/// Evidence as the command line and evidence files give it.
struct EvidenceInput {
  /// Node, and a state by name or "#index", or a number for a continuous node.
  std::vector<std::pair<std::string, std::string>> findings;
  std::vector<std::pair<std::string, std::vector<double>>> likelihoods;  // node, one per state
};

/// Splits "NODE=STATE" at its first "=". A usage error is told and gives kExitBadUsage.
int ParseFinding(const std::string& text, EvidenceInput& input, Output& output);
/// "NODE=p1,p2,...".
int ParseLikelihood(const std::string& text, EvidenceInput& input, Output& output);

/// Reads a file of lines "NODE=STATE" (blank lines and lines that start with "#" are skipped) or a
/// JSON object {"NODE": "STATE", index or number}. kExitBadFile, told with the line, for anything
/// else.
int ReadEvidenceFile(const std::string& fileName, EvidenceInput& input, Output& output);

/// Handle of a node by its identifier; below 0 after telling which nodes there are and which one is
/// nearest.
int FindNodeOrTell(KVN_network& network, const std::string& id, Output& output);

/// Sets all evidence in order. kExitImpossible with the engine's message for impossible or
/// conflicting evidence, kExitBadUsage for an unknown node or state, kExitRefused where a node
/// takes no such evidence.
int SetEvidence(KVN_network& network, const EvidenceInput& input, Output& output);

/// The item of `names` that takes the fewest edits to become `word`; empty when none is near.
std::string NearestOf(const std::string& word, const std::vector<std::string>& names);
