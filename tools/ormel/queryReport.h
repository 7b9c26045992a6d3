#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

class KVN_network;
class SamplingQuality;

/// The answer of a query, ready to be shown: the wanted nodes in handle order.
struct QueryReport {
  struct Node {
    int handle = -1;
    std::string id;
    std::vector<std::string> states;
    std::vector<double> posterior;  // one per state
    int observed = -1;              // the state that is evidence, given or implied
    // Of a sampling run only. One error per state, NaN where the run was too short to tell; 0, and
    // a share of 1, for a node that was settled without sampling.
    std::vector<double> standardErrors;
    double effectiveShare = 1.0;  // samples that counted, of those that were drawn
  };
  struct Sampling {
    int samples = 0;
    std::uint32_t seed = 0;  // gives the same answer again
  };

  std::string network;                                        // its identifier
  std::string algorithm;                                      // by the name of the command line
  std::vector<std::pair<std::string, std::string>> evidence;  // as given: node and state
  std::vector<Node> nodes;                                    // those with a posterior
  std::vector<std::string> invalid;                           // those that stayed without one
  std::optional<Sampling> sampling;                           // of a sampling run only
  bool isApproximate = false;                                 // by an amount that nobody knows
  bool isDiagram = false;                                     // it has decisions or utilities
};

/// Collects the posteriors of `targets` (handles, in order). Those of an approximate report are
/// taken without the mark that they are valid, since its algorithm gives none.
void CollectPosteriors(KVN_network& network, const std::vector<int>& targets, QueryReport& report);

/// Adds what a sampling run knows of its own errors to the posteriors.
void AddQuality(const SamplingQuality& quality, QueryReport& report);

/// For people: each node with its states, probabilities of `digits` decimals, and a bar.
void PrintQueryTable(const QueryReport& report, int digits, bool colour, std::ostream& stream);
/// The shortest decimals that read back to the same double; with `digits` at least 0 rounded to
/// them.
void PrintQueryJson(const QueryReport& report, int digits, std::ostream& stream);
/// One line "node,state,probability" per state, quoted where needed; two more columns for a
/// sampling run, "standard_error,effective_share".
void PrintQueryCsv(const QueryReport& report, int digits, std::ostream& stream);
