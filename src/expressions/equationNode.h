#pragma once

#include <string>
#include <vector>

class KVN_network;

/// What the two kinds of equation nodes ask of the network alike.

/// Empty where there is no node.
std::string IdentifierOfNode(const KVN_network* network, int handle);

/// Identifiers of the node's parents in list order, without that of `except`.
std::vector<std::string> IdentifiersOfParents(const KVN_network* network, int handle, int except);

/// KVN_REFUSED, told to the log, unless the definition type is that of an equation node.
int CheckEquationParent(int definitionType);

/// Takes the valid mark off the values of the node and of all that follow from it.
void ForgetResultsFrom(KVN_network* network, int handle);
