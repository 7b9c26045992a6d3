#pragma once

#include <string>
#include <vector>

class KVN_network;

/// Something that a file of the target format won't have, or not as it is.
struct Loss {
  std::string node;  // identifier of the node or submodel; empty for the network itself
  std::string what;  // a fixed word or two: "numbers", "digits", "evidence", ...
  std::string why;
  bool ofSubmodel = false;  // `node` names a submodel
};

/// What writing the network in the format, and reading it back, would lose: first what belongs to
/// the network, then the submodels and nodes. Nothing is written. A format that isn't described
/// gives one loss that says so.
std::vector<Loss> ListLosses(KVN_network& network, int format);
