#pragma once

#include <iosfwd>
#include <string>
#include <vector>

class KVN_network;

/// The answer of a query, ready to be shown: the wanted nodes in handle order.
struct QueryReport {
  struct Node {
    std::string id;
    std::vector<std::string> states;
    std::vector<double> posterior;  // one per state
    int observed = -1;              // the state that is evidence, given or implied
  };

  std::string network;                                        // its identifier
  std::string algorithm;                                      // by the name of the command line
  std::vector<std::pair<std::string, std::string>> evidence;  // as given: node and state
  std::vector<Node> nodes;                                    // those with a posterior
  std::vector<std::string> invalid;                           // those that stayed without one
};

/// Collects the posteriors of `targets` (handles, in order).
void CollectPosteriors(KVN_network& network, const std::vector<int>& targets, QueryReport& report);

/// For people: each node with its states, probabilities of `digits` decimals, and a bar.
void PrintQueryTable(const QueryReport& report, int digits, bool colour, std::ostream& stream);
/// The shortest decimals that read back to the same double; with `digits` at least 0 rounded to
/// them.
void PrintQueryJson(const QueryReport& report, int digits, std::ostream& stream);
/// One line "node,state,probability" per state, quoted where needed.
void PrintQueryCsv(const QueryReport& report, int digits, std::ostream& stream);
