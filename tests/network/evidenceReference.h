#pragma once

#include <vector>

#include "definitions/nodeDefinition.h"
#include "network/network.h"
#include "tests/support/networkBuilder.h"
#include "values/nodeValue.h"

/// The rules of evidence written down as plainly as possible, with recursion and copies: what the
/// network's iterative walks must agree with, down to where a failure stops them. Holds its own
/// image of a network with discrete nodes, decisions and utilities.
class EvidenceReference {
 public:
  struct Node {
    int type = 0;
    std::vector<int> parents, children;
    int outcomes = 0;
    bool hasTable = false;
    std::vector<int> sizes;
    std::vector<double> cells;
    bool user = false, propagated = false, valid = false;
    int outcome = 0;
    int marks = 0;

    bool HasEvidence() const { return user || propagated; }
  };

  explicit EvidenceReference(KVN_network& network) : nodes(network.GetSize()) {
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      Node& node = nodes[h];
      node.type = network.TypeOf(h);
      node.parents.assign(network.GetParents(h).begin(), network.GetParents(h).end());
      node.children.assign(network.GetChildren(h).begin(), network.GetChildren(h).end());
      node.outcomes = network.DefinitionOf(h)->GetNumberOfOutcomes();
      KVN_Dmatrix* table = nullptr;
      node.hasTable = network.DefinitionOf(h)->GetDefinition(table) == 0;
      if (!node.hasTable) continue;
      for (int d = 0; d < table->GetNumberOfDimensions(); d++) {
        node.sizes.push_back(table->GetSizeOfDimension(d));
      }
      node.cells.assign(table->GetData(), table->GetData() + table->GetSize());
    }
  }

  int SetEvidence(int h, int outcome) {
    Node& node = nodes[h];
    if (node.user) ClearEvidence(h);
    if (node.HasEvidence() && node.outcome != outcome) return -2;
    node.outcome = outcome;
    node.valid = node.user = true;
    node.propagated = false;
    const int result = EvidenceChanged(h);
    if (result != 0) ClearEvidence(h);
    return result;
  }

  int ClearEvidence(int h) {
    Node& node = nodes[h];
    if (!node.user) return -2;
    node.user = node.valid = false;
    node.marks |= 512;
    Cascade(h);
    node.marks &= ~512;
    return 0;
  }

  int Cascade(int h) {
    Node& node = nodes[h];
    for (Node& n : nodes) {
      if (n.propagated) n.propagated = n.valid = false;
      n.marks &= ~2;
    }
    for (int e : EvidenceNodes()) Propagate(e);
    MarkAllAncestors();
    node.marks |= 2;
    const bool isEvidence = node.HasEvidence();
    bool needDecisions = false;
    if (!isEvidence) {
      node.valid = false;
      if (node.type & 8) needDecisions = true;
      for (int c : node.children) Spread(c, 256, needDecisions);
    }
    if ((node.type & 1) == 0 && (isEvidence || (node.marks & (4 | 512)) != 0)) {
      for (int p : node.parents) Spread(p, 128, needDecisions);
    }
    if (needDecisions) InvalidateDecisions();
    return 0;
  }

  std::vector<Node> nodes;

 private:
  std::vector<int> EvidenceNodes() const {
    std::vector<int> list;
    for (size_t h = 0; h < nodes.size(); h++) {
      if (nodes[h].HasEvidence()) list.push_back(static_cast<int>(h));
    }
    return list;
  }

  int EvidenceChanged(int h) {
    Node& node = nodes[h];
    if (node.hasTable && SliceIs(node, 0.0, Coordinates(h))) return -2;
    MarkAllAncestors();
    node.marks |= 2;
    bool needDecisions = false;
    for (int c : node.children) Spread(c, 256, needDecisions);
    for (int p : node.parents) Spread(p, 128, needDecisions);
    for (Node& n : nodes) n.marks &= ~2;
    const int result = Propagate(h);
    if (needDecisions) InvalidateDecisions();
    return result;
  }

  void MarkAncestors(int h) {
    for (int p : nodes[h].parents) {
      nodes[p].marks |= 4;
      MarkAncestors(p);
    }
  }

  void MarkAllAncestors() {
    for (Node& n : nodes) n.marks &= ~390;
    for (int e : EvidenceNodes()) {
      if (!nodes[e].propagated) MarkAncestors(e);
    }
  }

  void Spread(int h, int direction, bool& needDecisions) {
    Node& node = nodes[h];
    if (node.type & 1) {
      if (direction == 128 && !node.HasEvidence()) node.valid = false;
      return;
    }
    if (node.propagated && (node.marks & 4) == 0) return;
    if (!node.HasEvidence() && (node.marks & 512) == 0) {
      if (node.marks & 2) {
        if (direction != 128 || (node.marks & 256) == 0) return;
        node.marks &= ~256;
        for (int p : node.parents) Spread(p, 128, needDecisions);
        return;
      }
      const int onEntry = node.marks;
      node.marks |= direction | 2;
      node.valid = false;
      if (node.type & 8) needDecisions = true;
      for (int c : node.children) Spread(c, 256, needDecisions);
      if (direction == 128 || (onEntry & 4) != 0) {
        for (int p : node.parents) Spread(p, 128, needDecisions);
      }
      return;
    }
    if ((node.marks & 2) == 0 && direction == 256) {
      node.marks |= 2;
      for (int p : node.parents) Spread(p, 128, needDecisions);
    }
  }

  void InvalidateDecisions() {
    for (Node& n : nodes) {
      if ((n.type & 1) != 0 && n.HasEvidence() && n.valid) n.valid = false;
    }
  }

  std::vector<int> Coordinates(int h) const {
    std::vector<int> list;
    for (int p : nodes[h].parents) list.push_back(nodes[p].HasEvidence() ? nodes[p].outcome : -1);
    list.push_back(nodes[h].HasEvidence() ? nodes[h].outcome : -1);
    return list;
  }

  static bool SliceIs(const Node& node, double value, const std::vector<int>& coordinates) {
    for (size_t i = 0; i < node.cells.size(); i++) {
      size_t rest = i;
      bool inside = true;
      for (size_t d = node.sizes.size(); d-- > 0; rest /= node.sizes[d]) {
        const int at = static_cast<int>(rest % node.sizes[d]);
        if (coordinates[d] >= 0 && coordinates[d] != at) inside = false;
      }
      if (inside && node.cells[i] != value) return false;
    }
    return true;
  }

  int Propagate(int h) {
    Node& node = nodes[h];
    if (!node.HasEvidence()) return -2;
    node.marks |= 2;
    for (int c : node.children) {
      if ((nodes[c].type & 9) != 0 || !nodes[c].hasTable) continue;
      std::vector<int> at = Coordinates(c);
      for (int k = 0; k < nodes[c].outcomes; k++) {
        at.back() = k;
        if (!SliceIs(nodes[c], 1.0, at)) continue;
        if (int result = Conclude(c, k); result != 0) return result;
      }
    }
    if ((node.type & 1) != 0 || !node.hasTable) return 0;
    std::vector<int> at = Coordinates(h);
    for (size_t i = 0; i < node.parents.size(); i++) {
      const int p = node.parents[i];
      if (nodes[p].type & 9) continue;
      int count = 0, only = -1;
      for (int k = 0; k < nodes[p].outcomes; k++) {
        at[i] = k;
        if (SliceIs(node, 0.0, at)) continue;
        count++;
        only = k;
      }
      at[i] = -1;
      if (count != 1) continue;
      if (int result = Conclude(p, only); result != 0) return result;
    }
    return 0;
  }

  int Conclude(int h, int outcome) {
    Node& node = nodes[h];
    if (node.HasEvidence()) return node.outcome == outcome ? 0 : -26;
    node.propagated = node.valid = true;
    node.outcome = outcome;
    return (node.marks & 2) != 0 ? 0 : Propagate(h);
  }
};
