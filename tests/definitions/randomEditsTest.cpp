#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>

#include "definitions/cpt.h"
#include "tests/support/definitionBuilder.h"

namespace {

/// What the table of a node should hold, told without positions: every outcome has a tag of its
/// own that stays with it, and a cell is found by the tags of its configuration.
class TableModel {
 public:
  using Key = std::vector<int>;  // tags: parents in order, then the own outcome

  explicit TableModel(int outcomes) : variables{NewTags(outcomes)} { Rebuild(); }

  int GetNumberOfParents() const { return static_cast<int>(variables.size()) - 1; }
  int GetNumberOfOutcomes(int variable) const {
    return static_cast<int>(variables[variable].size());
  }
  int Own() const { return GetNumberOfParents(); }

  void Set(const std::vector<double>& values) {
    std::size_t next = 0;
    ForEachKey([&](const Key& key) { cells[key] = values[next++]; });
  }
  std::vector<double> GetCells() const {
    std::vector<double> list;
    ForEachKey([&](const Key& key) { list.push_back(cells.at(key)); });
    return list;
  }

  void AddParent(int outcomes) {
    const std::vector<int> tags = NewTags(outcomes);
    const int position = GetNumberOfParents();
    variables.insert(variables.end() - 1, tags);
    Refill([&](Key key) {
      key.erase(key.begin() + position);
      return key;
    });
    Normalize();
  }
  void RemoveParent(int parent) {
    const int first = variables[parent][0];
    variables.erase(variables.begin() + parent);
    Refill([&](Key key) {
      key.insert(key.begin() + parent, first);
      return key;
    });
  }
  void InsertOutcome(int variable, int position) {
    std::vector<int>& tags = variables[variable];
    tags.insert(tags.begin() + position, nextTag++);
    Refill([](const Key& key) { return key; });
    if (variable != Own()) Normalize();
  }
  void RemoveOutcome(int variable, int position) {
    variables[variable].erase(variables[variable].begin() + position);
    Refill([](const Key& key) { return key; });
  }
  void ReorderOutcomes(int variable, const std::vector<int>& order) {
    const std::vector<int> old = variables[variable];
    for (std::size_t i = 0; i < order.size(); i++) variables[variable][i] = old[order[i]];
  }
  void ReorderParents(const std::vector<int>& order) {
    const std::vector<std::vector<int>> old = variables;
    for (std::size_t i = 0; i < order.size(); i++) variables[i] = old[order[i]];
    Refill([&](const Key& key) {
      Key oldKey = key;
      for (std::size_t i = 0; i < order.size(); i++) oldKey[order[i]] = key[i];
      return oldKey;
    });
  }

 private:
  std::vector<int> NewTags(int count) {
    std::vector<int> tags(count);
    std::iota(tags.begin(), tags.end(), nextTag);
    nextTag += count;
    return tags;
  }
  template <class Visit>
  void ForEachKey(Visit visit) const {
    std::vector<std::size_t> at(variables.size(), 0);
    while (true) {
      Key key;
      for (std::size_t i = 0; i < at.size(); i++) key.push_back(variables[i][at[i]]);
      visit(key);
      int i = static_cast<int>(at.size()) - 1;
      while (i >= 0 && ++at[i] == variables[i].size()) at[i--] = 0;
      if (i < 0) return;
    }
  }
  /// Every cell of the present configurations from the old cell at `oldKey(key)`, 0.0 if none.
  template <class OldKey>
  void Refill(OldKey oldKey) {
    std::map<Key, double> filled;
    ForEachKey([&](const Key& key) {
      const auto found = cells.find(oldKey(key));
      filled[key] = found == cells.end() ? 0.0 : found->second;
    });
    cells.swap(filled);
  }
  void Rebuild() {
    Refill([](const Key& key) { return key; });
    Normalize();
  }
  void Normalize() {
    std::map<Key, double> sums;
    ForEachKey([&](const Key& key) { sums[Key(key.begin(), key.end() - 1)] += cells[key]; });
    ForEachKey([&](const Key& key) {
      const double sum = sums[Key(key.begin(), key.end() - 1)];
      cells[key] =
          sum == 0.0 ? 1.0 / static_cast<double>(variables.back().size()) : cells[key] / sum;
    });
  }

  int nextTag = 0;
  std::vector<std::vector<int>> variables;  // tags of each outcome; the node itself is last
  std::map<Key, double> cells;
};

/// A node and its parents in a network, edited at random together with the model.
class EditRun {
 public:
  explicit EditRun(unsigned seed) : random(seed) {}

  void Step() {
    const int parents = model.GetNumberOfParents();
    const int variable = Pick(parents + 1);
    const int outcomes = model.GetNumberOfOutcomes(variable);
    KVN_nodeDefinition& definition = *network.DefinitionOf(NodeOf(variable));
    switch (Pick(8)) {
      case 0:
        if (parents < 4) AddParent(2 + Pick(3));
        break;
      case 1:
        if (parents > 0 && Pick(2) == 0) RemoveParent(Pick(parents));
        break;
      case 2: {
        if (outcomes > 4) break;
        const int position = Pick(outcomes + 1);
        EXPECT_EQ(definition.InsertOutcome(position, nullptr), 0);
        model.InsertOutcome(variable, position);
        break;
      }
      case 3: {
        if (outcomes < 3) break;
        const int position = Pick(outcomes);
        EXPECT_EQ(definition.RemoveOutcome(position), 0);
        model.RemoveOutcome(variable, position);
        break;
      }
      case 4: {
        const std::vector<int> order = PickOrder(outcomes);
        EXPECT_EQ(definition.ChangeOrderOfOutcomes(IntsOf(order)), 0);
        model.ReorderOutcomes(variable, order);
        break;
      }
      case 5: {
        if (parents < 2) break;
        const std::vector<int> order = PickOrder(parents);
        EXPECT_EQ(network.ChangeOrderOfParents(node, IntsOf(order)), 0);
        model.ReorderParents(order);
        break;
      }
      default: {
        std::vector<double> values(TableOfNode(network, node).GetSize());
        for (double& value : values) value = Pick(4) == 0 ? 0.0 : Pick(1000) / 1000.0;
        EXPECT_EQ(DefinitionAs<KVN_cpt>(network, node).SetProbabilities(DoublesOf(values)), 0);
        model.Set(values);
      }
    }
  }

  testing::AssertionResult Agrees() {
    // A few divisions by row sums separate the two.
    return CellsNear(TableOfNode(network, node), model.GetCells(), 1e-12);
  }

 private:
  int Pick(int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); }
  std::vector<int> PickOrder(int count) {
    std::vector<int> order(count);
    std::iota(order.begin(), order.end(), 0);
    for (int i = count - 1; i > 0; i--) std::swap(order[i], order[Pick(i + 1)]);
    return order;
  }
  int NodeOf(int variable) const {
    return variable == model.Own() ? node : network.GetParents(node)[variable];
  }
  void AddParent(int outcomes) {
    const int parent =
        AddNodeOf(network, Pick(2) == 0 ? KVN_TYPE_CPT : KVN_TYPE_LIST, nullptr, outcomes);
    AddArcs(network, {parent}, node);
    model.AddParent(outcomes);
  }
  void RemoveParent(int position) {
    EXPECT_EQ(network.DeleteNode(network.GetParents(node)[position]), 0);
    model.RemoveParent(position);
  }

  std::mt19937 random;  // its numbers are the same everywhere
  KVN_network network;
  int node = AddNodeOf(network, KVN_TYPE_CPT, "node");
  TableModel model{2};
};

TEST(RandomEdits, TableKeepsEveryNumberAtItsConfiguration) {
  for (unsigned seed = 1; seed <= 25; seed++) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    EditRun run(seed);
    for (int step = 0; step < 60; step++) {
      run.Step();
      ASSERT_TRUE(run.Agrees()) << "after step " << step;
    }
  }
}

}  // namespace
