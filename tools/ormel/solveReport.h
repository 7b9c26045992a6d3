#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

class KVN_network;

/// The answer of `solve`, ready to be shown.
struct SolveReport {
  /// A decision that is still to be made.
  struct Decision {
    std::string id;
    std::vector<std::string> given;  // what is known before it and matters
    std::vector<std::vector<std::string>> givenStates;
    std::vector<std::string> alternatives;
    /// Row by row, the last of `given` fastest; each row has a number for each alternative. Empty
    /// for the method that finds the best alternative only.
    std::vector<double> expected;
    std::vector<int> best;  // of each row; -1 for one that can't come about
    bool matters = true;    // a utility depends on it
  };
  struct Node {
    std::string id;
    std::vector<std::string> states;
    std::vector<double> posterior;
  };

  std::string network;                                    // its identifier
  std::string method;                                     // by the name of the command line
  std::vector<Decision> decisions;                        // in the order in which they are made
  std::vector<std::pair<std::string, double>> utilities;  // under the best strategy
  double expectedUtility = 0.0;                           // of it: those that none combines
  std::vector<Node> posteriors;                           // under it
  std::vector<std::string> notices;
};

/// What becomes known or is decided, in order. To be asked before the evaluation, which adds arcs.
std::vector<int> OpenNodesInOrder(KVN_network& network);

/// Collects what policy evaluation has left in the values. `order` is that of OpenNodesInOrder.
void CollectPolicy(KVN_network& network, const std::vector<int>& order, SolveReport& report);
/// The same of best policy search: the first decision of `order` and its alternative.
void CollectBestChoice(KVN_network& network, const std::vector<int>& order, SolveReport& report);

/// For people; numbers with `digits` decimals, 4 if that is negative.
void PrintSolveTable(const SolveReport& report, int digits, bool colour, std::ostream& stream);
/// Numbers as the shortest decimals that read back to the same double; with `digits` at least 0
/// rounded to them. What can't come about is null.
void PrintSolveJson(const SolveReport& report, int digits, std::ostream& stream);
/// One line "decision,given,alternative,expected,best" per alternative of each row.
void PrintSolveCsv(const SolveReport& report, int digits, std::ostream& stream);
