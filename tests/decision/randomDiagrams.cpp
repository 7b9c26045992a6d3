#include "tests/decision/randomDiagrams.h"

#include <string>

#include "decision/policyOrder.h"
#include "definitions/cpt.h"
#include "definitions/table.h"
#include "network/network.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/randomNetwork.h"

namespace {

class Filler {
 public:
  Filler(KVN_network& n, std::uint64_t seed, const RandomDiagramOptions& o)
      : network(n), random(seed), options(o) {}

  void Fill() {
    AddNodes();
    for (std::size_t i = 0; i < nodes.size(); i++) AddParents(i);
    for (int node : nodes) {
      if (network.TypeOf(node) == KVN_TYPE_CPT) SetRows(node);
    }
    AddUtilities();
    if (options.evidence && random.Chance(0.5)) SetEvidence();
  }

 private:
  /// Decisions and chance nodes in a random order, which the arcs follow; the handles don't.
  void AddNodes() {
    std::vector<int> kinds(random.Between(1, options.maxDecisions), KVN_TYPE_LIST);
    kinds.resize(kinds.size() + random.Between(1, options.maxChance), KVN_TYPE_CPT);
    nodes.assign(kinds.size(), -1);
    const std::vector<int> places = random.Permutation(static_cast<int>(kinds.size()));
    for (std::size_t i = 0; i < kinds.size(); i++) {
      const std::string id = (kinds[i] == KVN_TYPE_LIST ? "D" : "C") + std::to_string(i);
      const int outcomes = random.Chance(0.25) ? 3 : 2;
      nodes[places[i]] = AddNodeBelow(network, kinds[i], id.c_str(), outcomes, {});
    }
  }

  void AddParents(std::size_t place) {
    const int child = nodes[place];
    const bool isDecision = network.TypeOf(child) == KVN_TYPE_LIST;
    int wanted = random.Between(0, 3);
    for (int before : random.Permutation(static_cast<int>(place))) {
      const int parent = nodes[before];
      const bool links = isDecision && network.TypeOf(parent) == KVN_TYPE_LIST;
      if (links && random.Chance(0.7)) wanted++;
      if (wanted-- > 0 && network.IsArcEitherWay(parent, child) == 0) {
        EXPECT_EQ(network.AddArc(parent, child, 0), 0);
      }
    }
  }

  void SetRows(int node) {
    auto& cpt = static_cast<KVN_cpt&>(*network.DefinitionOf(node));
    std::vector<double> cells;
    while (static_cast<int>(cells.size()) < cpt.GetSize()) {
      const double zeros = random.Chance(0.5) ? options.zeroShare : 0.0;
      const std::vector<double> row = random.Distribution(cpt.GetNumberOfOutcomes(), zeros);
      cells.insert(cells.end(), row.begin(), row.end());
    }
    EXPECT_EQ(cpt.SetProbabilities(DoublesOf(cells)), 0);
  }

  void AddUtilities() {
    std::vector<int> utilities;
    const int count = random.Between(1, options.maxUtilities);
    for (int i = 0; i < count; i++) {
      std::vector<int> parents;
      for (int place : random.Permutation(static_cast<int>(nodes.size()))) {
        if (static_cast<int>(parents.size()) < random.Between(1, 4)) {
          parents.push_back(nodes[place]);
        }
      }
      utilities.push_back(
          AddNodeBelow(network, KVN_TYPE_TABLE, ("U" + std::to_string(i)).c_str(), 0, parents));
      SetUtilities(utilities.back());
    }
    if (options.combine && random.Chance(0.3)) Combine(utilities);
  }

  void SetUtilities(int node) {
    auto& table = static_cast<KVN_table&>(*network.DefinitionOf(node));
    const bool isFlat = random.Chance(0.1);
    const bool isCoarse = random.Chance(0.3);  // equal numbers make ties
    std::vector<double> cells;
    for (int i = 0; i < table.GetSize(); i++) {
      double number = 100.0 * random.Unit() - 50.0;
      if (isCoarse) number = 10.0 * random.Between(-2, 1);
      cells.push_back(isFlat && i > 0 ? cells[0] : number);
    }
    EXPECT_EQ(table.SetUtilities(DoublesOf(cells)), 0);
  }

  void Combine(std::vector<int> parents) {
    for (int node : nodes) {
      if (network.TypeOf(node) == KVN_TYPE_LIST && random.Chance(0.3)) parents.push_back(node);
    }
    const int top = AddNodeBelow(network, KVN_TYPE_MAU, "M", 0, parents);
    KVN_Dmatrix& weights = TableOfNode(network, top);
    for (int i = 0; i < weights.GetSize(); i++) weights[i] = 4.0 * random.Unit() - 1.0;
  }

  /// Some first decisions are made, and some nodes are observed that nothing to be decided
  /// influences: as one scenario has them, which is drawn from the tables.
  void SetEvidence() {
    std::vector<int> outcomes(network.GetSize(), -1);
    for (int node : nodes) {
      outcomes[node] = DrawOutcome(node, outcomes);
      if (random.Chance(0.6) || HasOpenDecisionAbove(node)) continue;
      EXPECT_EQ(network.ValueOf(node)->SetEvidence(outcomes[node]), 0);
    }
  }

  bool HasOpenDecisionAbove(int node) const {
    for (int parent : network.GetParents(node)) {
      const bool isOpen =
          network.TypeOf(parent) == KVN_TYPE_LIST && !network.ValueOf(parent)->HasEvidence();
      if (isOpen || HasOpenDecisionAbove(parent)) return true;
    }
    return false;
  }

  int DrawOutcome(int node, const std::vector<int>& outcomes) {
    const int count = network.DefinitionOf(node)->GetNumberOfOutcomes();
    if (network.TypeOf(node) == KVN_TYPE_LIST) return random.Below(count);
    const KVN_Dmatrix& table = TableOfNode(network, node);
    const KVN_intArray& parents = network.GetParents(node);
    int row = 0;
    for (int i = 0; i < parents.GetNumItems(); i++) {
      row += table.GetMultipliers()[i] * outcomes[parents[i]];
    }
    double rest = random.Unit();
    int last = -1;  // possible
    for (int k = 0; k < count && rest >= 0.0; k++) {
      if (table[row + k] > 0.0) last = k;
      rest -= table[row + k];
    }
    return last;
  }

  KVN_network& network;
  RandomSource random;
  const RandomDiagramOptions& options;
  std::vector<int> nodes;  // in an order that parents come first
};

}  // namespace

void FillRandomDiagram(KVN_network& network, std::uint64_t seed,
                       const RandomDiagramOptions& options) {
  Filler(network, seed, options).Fill();
}

std::vector<int> PolicyNodesOf(KVN_network& network) {
  KVN_intArray list;
  EXPECT_EQ(BuildPolicyNodes(network, list), 0);
  return std::vector<int>(list.begin(), list.end());
}
