#include "tests/support/randomNetwork.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "definitions/table.h"
#include "definitions/truthTable.h"
#include "foundation/numberText.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "tests/support/builders.h"

namespace {

/// Whether the child's kind takes the parent's, in a way that every operation handles. An adder
/// below an adder is left out: its numbers don't follow the parent's outcomes.
bool MayBeParent(int parentKind, int childKind) {
  if (childKind == KVN_TYPE_CAST || childKind == KVN_TYPE_DEMORGAN) return parentKind == childKind;
  if (childKind == KVN_TYPE_MAU) {
    return parentKind == KVN_TYPE_LIST || (parentKind & KVN_TYPE_BIT_UTILITY) != 0;
  }
  if (childKind == KVN_TYPE_NOISY_ADDER && parentKind == childKind) return false;
  return HasTableDimension(parentKind);
}

bool IsBinaryGate(int kind) { return kind == KVN_TYPE_CAST || kind == KVN_TYPE_DEMORGAN; }

/// A step that has to succeed.
void Must(int result) { EXPECT_GE(result, 0); }

class Filler {
 public:
  Filler(KVN_network& n, std::uint64_t seed, const RandomNetworkOptions& o)
      : network(n), random(seed), options(o) {}

  void Fill() {
    if (options.descriptions) DescribeNetwork();
    AddNodes();
    AddArcs();
    for (int handle : handles) {
      SetNumbers(handle);
      if (options.descriptions) DescribeNode(handle);
      if (options.diagnosis) SetDiagnosis(*network.GetNode(handle)->ExtraDefinition());
    }
    if (options.costs) AddCosts();
  }

 private:
  KVN_nodeDefinition& DefinitionOf(int handle) { return *network.DefinitionOf(handle); }

  /// Nodes are made in random order, with a hole in the table now and then.
  void AddNodes() {
    handles.assign(options.nodes, -1);
    for (int rank : random.Permutation(options.nodes)) {
      const int kind = options.kinds[random.Below(static_cast<int>(options.kinds.size()))];
      const int hole = random.Chance(0.1) ? network.AddNode(KVN_TYPE_CPT, "Hole") : -1;
      handles[rank] = network.AddNode(kind, ("N" + std::to_string(rank)).c_str());
      if (hole >= 0) Must(network.DeleteNode(hole));
      const bool isUtility = (kind & KVN_TYPE_BIT_UTILITY) != 0;
      if (!isUtility && !IsBinaryGate(kind)) NameOutcomes(DefinitionOf(handles[rank]));
    }
  }

  void NameOutcomes(KVN_nodeDefinition& definition) {
    const char* const words[] = {"yes", "no", "High", "low_1", "State0", "unknown", "TYPE", "net"};
    KVN_stringArray names;
    const int count = random.Between(options.minOutcomes, options.maxOutcomes);
    for (int word : random.Permutation(8)) {
      if (names.GetNumItems() < std::min(count, 8)) Must(names.Add(words[word]));
    }
    while (names.GetNumItems() < count) {
      Must(names.Add(("S" + std::to_string(names.GetNumItems())).c_str()));
    }
    Must(definition.SetNumberOfOutcomes(names));
  }

  void AddArcs() {
    for (int child = 1; child < options.nodes; child++) {
      int wanted = random.Between(0, options.maxParents);
      for (int parent : random.Permutation(child)) {
        if (wanted == 0) break;
        const int kind = network.TypeOf(handles[parent]);
        if (!MayBeParent(kind, network.TypeOf(handles[child]))) continue;
        Must(network.AddArc(handles[parent], handles[child], /*layer=*/0));
        wanted--;
      }
    }
  }

  std::vector<double> Weights(int count, double low) {
    std::vector<double> weights;
    for (int i = 0; i < count; i++) weights.push_back(low + (1.0 - low) * random.Unit());
    return weights;
  }

  void SetNumbers(int handle) {
    KVN_nodeDefinition& definition = DefinitionOf(handle);
    const int parents = network.GetNumberOfParents(handle);
    switch (definition.GetType()) {
      case KVN_TYPE_CPT:
        return SetRows(static_cast<KVN_cpt&>(definition));
      case KVN_TYPE_TRUTHTABLE:
        return SetStates(static_cast<KVN_truthTable&>(definition));
      case KVN_TYPE_TABLE:
        return SetUtilities(static_cast<KVN_table&>(definition));
      case KVN_TYPE_MAU:
        return Must(definition.SetDefinition(DoublesOf(Weights(definition.GetSize(), -3.0))));
      case KVN_TYPE_CAST: {
        auto& gate = static_cast<KVN_cast&>(definition);
        Must(gate.SetPositiveWeights(DoublesOf(Weights(parents, -1.0))));
        Must(gate.SetNegativeWeights(DoublesOf(Weights(parents, -1.0))));
        Must(gate.SetBaseline(random.Unit()));
        return;
      }
      case KVN_TYPE_DEMORGAN: {
        auto& gate = static_cast<KVN_demorgan&>(definition);
        std::vector<int> types;
        for (int i = 0; i < parents; i++) types.push_back(random.Below(4));
        Must(gate.SetParentTypes(IntsOf(types)));
        Must(gate.SetParentWeights(DoublesOf(Weights(parents, 0.0))));
        Must(gate.SetPriorBelief(random.Unit()));
        return;
      }
      case KVN_TYPE_NOISY_MAX:
        return SetNoisyMax(static_cast<KVN_noisyMAX&>(definition));
      case KVN_TYPE_NOISY_ADDER:
        return SetAdder(static_cast<KVN_noisyAdder&>(definition));
      default:
        return;
    }
  }

  void SetRows(KVN_cpt& definition) {
    const int outcomes = definition.GetNumberOfOutcomes();
    std::vector<double> cells;
    while (static_cast<int>(cells.size()) < definition.GetSize()) {
      const std::vector<double> row = random.Distribution(outcomes, options.zeroShare);
      cells.insert(cells.end(), row.begin(), row.end());
    }
    Must(definition.SetProbabilities(DoublesOf(cells)));
  }

  void SetStates(KVN_truthTable& definition) {
    const int outcomes = definition.GetNumberOfOutcomes();
    std::vector<int> states;
    for (int row = 0; row < definition.GetSize() / outcomes; row++) {
      states.push_back(random.Below(outcomes));
    }
    Must(definition.SetResultingStates(IntsOf(states)));
  }

  void SetUtilities(KVN_table& definition) {
    std::vector<double> cells;
    for (int i = 0; i < definition.GetSize(); i++) {
      cells.push_back(random.Chance(0.05) ? KVN_UNDEFINED_VALUE : 2000.0 * random.Unit() - 1000.0);
    }
    Must(definition.SetUtilities(DoublesOf(cells)));
  }

  /// Fills the rows of a gate's parameters that `isFixed(row)` doesn't hold.
  template <typename IsFixed>
  void FillRows(KVN_ciDefinition& gate, IsFixed isFixed) {
    KVN_Dmatrix& parameters = gate.GetParameters();
    const int outcomes = gate.GetNumberOfOutcomes();
    for (int row = 0; row < parameters.GetSizeOfDimension(0); row++) {
      if (isFixed(row)) continue;
      // No zeros: the leak of a noisy-MAX is divided by.
      const std::vector<double> cells = random.Distribution(outcomes, /*zeroShare=*/0.0);
      for (int i = 0; i < outcomes; i++) parameters[row * outcomes + i] = cells[i];
    }
    gate.MarkCptStale();
  }

  void SetNoisyMax(KVN_noisyMAX& gate) {
    const int outcomes = gate.GetNumberOfOutcomes();
    FillRows(gate,
             [&](int row) { return gate.IsConstrained(gate.GetParameters(), row * outcomes); });
    for (int i = 0; gate.GetStrengths(i) != nullptr; i++) {
      const std::vector<int> order = random.Permutation(gate.GetStrengths(i)->GetNumItems());
      Must(gate.SetParentOutcomeStrengths(i, IntsOf(order)));
    }
  }

  void SetAdder(KVN_noisyAdder& gate) {
    const KVN_intArray& parents = network.GetParents(gate.GetHandle());
    Must(gate.SetDistinguishedState(random.Below(gate.GetNumberOfOutcomes())));
    std::vector<int> fixed;
    for (int i = 0; i < parents.GetNumItems(); i++) {
      const int state = random.Below(DefinitionOf(parents[i]).GetNumberOfOutcomes());
      Must(gate.SetParentDistinguishedState(i, state));
      fixed.push_back(gate.RowOffset(i) + state);
    }
    FillRows(gate,
             [&](int row) { return std::find(fixed.begin(), fixed.end(), row) != fixed.end(); });
    Must(gate.SetWeights(DoublesOf(Weights(parents.GetNumItems() + 1, 0.1))));
    Must(gate.SetFunction(random.Below(2)));
  }

  // Descriptions.

  /// Never empty, so that the text can be told from an unset one.
  std::string Text() {
    static const char* const pieces[] = {
        "plain words ",
        "\"quoted\" ",
        "back\\slash ",
        "tab\t",
        "line\nbreak",
        "  wide   blanks  ",
        "\r",
        "a word that goes on_and_on_and_on_and_on_and_on_and_on_and_on_and_on_and_on_until ",
        "\xC3\xA9\xE9 ",
        "} ; { ",
        "\\| ",
        "\\n ",
        "// no comment ",
        "/* nor this */ ",
        "%"};
    std::string text = "t";
    for (int left = random.Between(0, 8); left > 0; left--) text += pieces[random.Below(15)];
    return text;
  }

  int Number() { return random.Between(-5, 1500); }

  void Fill(KVN_rectangle& r) {
    for (int* number : {&r.center_X, &r.center_Y, &r.width, &r.height}) *number = Number();
  }

  void Fill(KVN_screenInfo& s) {
    Fill(s.position);
    for (int* number :
         {&s.color, &s.selColor, &s.font, &s.fontColor, &s.borderThickness, &s.borderColor}) {
      *number = random.Below(0x1000000);
    }
    s.screenFlags = random.Below(4);
  }

  void Fill(KVN_documentation& documents) {
    for (int left = random.Between(0, 2); left > 0; left--) {
      const std::string title = Text();  // arguments have no order of evaluation
      Must(documents.AddDocument(title.c_str(), Text().c_str()));
    }
  }

  void Fill(KVN_userProperties& properties) {
    for (int i = random.Between(0, 3); i > 0; i--) {
      const std::string key = "key" + std::to_string(i);
      Must(properties.AddProperty(key.c_str(), Text().c_str()));
    }
  }

  void Fill(KVN_submodel& submodel) {
    Must(submodel.Header().SetName(Text().c_str()));
    if (random.Chance(0.5)) Must(submodel.Header().SetComment(Text().c_str()));
    Fill(submodel.Screen());
    Fill(submodel.Window());
    submodel.SetWindowColor(random.Below(0x1000000));
    for (int left = random.Between(0, 2); left > 0; left--) {
      KVN_rectangle place;
      Fill(place);
      Must(submodel.TextBoxes().AddTextBox(place, Text().c_str()));
    }
  }

  void DescribeNetwork() {
    Must(network.Header().SetId("Random"));
    Fill(*network.Submodels().GetSubmodel(KVN_ROOT_SUBMODEL));
    if (random.Chance(0.7)) Must(network.Creation().SetCreator(Text().c_str()));
    if (random.Chance(0.7)) Must(network.Creation().SetModified(Text().c_str()));
    Fill(network.UserProperties());
    Fill(network.Documentation());
    network.SetNumberOfSamples(random.Between(1, 100000));
    network.SetShowAs(random.Below(4));
    // A submodel may come before its parent in the table, since it can be moved later.
    for (int i = random.Between(0, 4); i > 0; i--) {
      const int made =
          network.Submodels().Create(KVN_ROOT_SUBMODEL, ("Group" + std::to_string(i)).c_str());
      ASSERT_GE(made, 0);
      Fill(*network.Submodels().GetSubmodel(made));
      submodels.push_back(made);
    }
    for (std::size_t i = 1; i < submodels.size(); i++) {
      const int parent = submodels[random.Below(static_cast<int>(i))];
      const bool up = random.Chance(0.5);
      const int moved = up ? network.Submodels().Move(parent, submodels[i])
                           : network.Submodels().Move(submodels[i], parent);
      EXPECT_TRUE(moved == 0 || up) << "only a move below itself may be refused";
    }
  }

  void DescribeNode(int handle) {
    KVN_node& node = *network.GetNode(handle);
    Must(node.SetName(Text().c_str()));
    if (random.Chance(0.5)) Must(node.SetComment(Text().c_str()));
    Fill(node.Info().Screen());
    Fill(node.Info().UserProperties());
    Fill(node.Info().Documentation());
    if (random.Chance(0.3)) Must(network.SetTarget(handle));
    if (!submodels.empty() && random.Chance(0.5)) {
      const int group = submodels[random.Below(static_cast<int>(submodels.size()))];
      Must(node.SetSubmodel(group));
    }
  }

  void SetDiagnosis(KVN_extraDefinition& extra) {
    const int count = extra.GetOutcomeCount();
    extra.SetDiagnosisType(random.Below(3));
    extra.SetRanked(random.Below(2));
    extra.SetMandatory(random.Below(2));
    extra.SetSetAsDefault(random.Below(2));
    extra.SetShowAs(random.Below(5));
    Must(extra.SetQuestion(Text().c_str()));
    if (count == 0) return;
    Must(extra.SetDefaultOutcome(random.Below(count)));
    for (int i = 0; i < count; i++) {
      if (random.Chance(0.3)) Must(extra.SetFaultState(i, 1));
      if (random.Chance(0.5)) Must(extra.SetFaultName(i, Text().c_str()));
      if (random.Chance(0.5)) Must(extra.SetStateComment(i, Text().c_str()));
      if (random.Chance(0.5)) Must(extra.SetStateRepairInfo(i, Text().c_str()));
      Fill(*extra.GetStateDocumentation(i));
      const std::string label = "Label" + std::to_string(labels++);
      if (random.Chance(0.5)) Must(extra.SetFaultLabel(i, label.c_str()));
    }
  }

  /// Cost arcs may go either way round, since they have no order to keep.
  void AddCosts() {
    for (int handle : handles) {
      for (int parent : handles) {
        if (parent == handle || !HasTableDimension(network.TypeOf(parent))) continue;
        if (random.Below(options.nodes) == 0) {
          Must(network.AddArc(parent, handle, /*layer=*/1));
        }
      }
      KVN_nodeCost& cost = *network.GetNode(handle)->Cost();
      std::vector<double> costs;
      for (int i = 0; i < cost.GetCosts().GetSize(); i++) costs.push_back(100.0 * random.Unit());
      Must(cost.SetCosts(DoublesOf(costs)));
    }
  }

  KVN_network& network;
  RandomSource random;
  const RandomNetworkOptions& options;
  std::vector<int> handles;  // by rank: parents first
  std::vector<int> submodels;
  int labels = 0;
};

}  // namespace

std::vector<double> RandomSource::Distribution(int outcomes, double zeroShare) {
  std::vector<double> row;
  double sum = 0.0;
  for (int i = 0; i < outcomes; i++) {
    row.push_back(Chance(zeroShare) ? 0.0 : 1.0 + Below(1000000));
    sum += row.back();
  }
  if (sum == 0.0) {
    row[Below(outcomes)] = 1.0;
    return row;
  }
  for (double& cell : row) cell /= sum;
  return row;
}

std::vector<int> RandomSource::Permutation(int count) {
  std::vector<int> order;
  for (int i = 0; i < count; i++) order.push_back(i);
  for (int i = count - 1; i > 0; i--) std::swap(order[i], order[Below(i + 1)]);
  return order;
}

void FillRandomNetwork(KVN_network& network, std::uint64_t seed,
                       const RandomNetworkOptions& options) {
  Filler(network, seed, options).Fill();
}
