#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

class KVN_network;

/// The answer of a query of an equation network, ready to be shown: the wanted nodes in handle
/// order.
struct EquationReport {
  struct Range {
    std::string id;  // of an interval; empty for a bar of the histogram
    double lower = 0.0;
    double upper = 0.0;
    double probability = 0.0;  // or share of the samples
  };
  struct Node {
    std::string id;
    bool isObserved = false;
    bool hasMoments = false;  // mean and deviation
    double mean = 0.0;
    double deviation = 0.0;
    bool hasQuantiles = false;
    double low = 0.0;              // 5 % of the samples are at or below
    double high = 0.0;             // 95 % are
    int samples = 0;               // that the numbers come from; 0: one number without spread
    int undefined = 0;             // samples that are no numbers
    std::vector<Range> histogram;  // of the samples that are finite; empty without spread
    std::vector<Range> intervals;  // with probabilities, when the network was discretised
  };

  std::string network;                                   // its identifier
  std::string method;                                    // "solver" or "intervals"
  std::vector<std::pair<std::string, double>> evidence;  // as given
  std::vector<Node> nodes;                               // those with an answer
  std::vector<std::string> invalid;                      // those that stayed without one
};

/// Whether the update driver takes the network for one of equations.
bool HasEquations(const KVN_network& network);

/// Sets what a run should keep: samples of the wanted nodes, unless they would take too much
/// memory. Answers are then without quantiles and histogram; false tells so.
bool PrepareEquations(KVN_network& network, const std::vector<int>& targets);

/// The nodes that can have an answer when the network is discretised: those with intervals, and
/// observed ones.
std::vector<int> DiscretizedNodes(const KVN_network& network);

/// Collects the answers for `targets` (handles, in order) and the evidence of all nodes.
void CollectValues(const KVN_network& network, const std::vector<int>& targets,
                   EquationReport& report);

/// For people: each node with its numbers and a histogram, or its intervals with a bar each.
/// Numbers have six significant digits, those of the histogram four, or `digits` decimals when that
/// is 0 or more.
void PrintEquationTable(const EquationReport& report, int digits, bool colour,
                        std::ostream& stream);
/// What has not been computed, and what is no number, is null.
void PrintEquationJson(const EquationReport& report, int digits, std::ostream& stream);
/// Lines "node,quantity,value"; the quantity of an interval is "interval " and its name.
void PrintEquationCsv(const EquationReport& report, int digits, std::ostream& stream);
