#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "network/network.h"
#include "network/node.h"
#include "tests/support/builders.h"

constexpr int kPlain = 0;  // layers
constexpr int kCost = 1;

/// Adds nodes of one kind; the handles are expected to follow each other.
inline void AddNodes(KVN_network& network, int type, const std::vector<const char*>& ids) {
  for (const char* id : ids) EXPECT_GE(network.AddNode(type, id), 0) << id;
}

struct Arc {
  const char* parent;
  const char* child;
};

inline void AddArcs(KVN_network& network, const std::vector<Arc>& arcs) {
  for (const Arc& arc : arcs) {
    EXPECT_EQ(network.AddArc(network.FindNode(arc.parent), network.FindNode(arc.child), kPlain), 0)
        << arc.parent << " -> " << arc.child;
  }
}

/// Identifiers of a list of handles, separated by blanks.
inline std::string NamesOf(const KVN_network& network, const KVN_intArray& handles) {
  std::string names;
  for (int handle : handles) {
    const KVN_node* node = network.GetNode(handle);
    names += (names.empty() ? "" : " ");
    names += node == nullptr ? "(free)" : node->GetId();
  }
  return names;
}

/// Number of messages in the process's log, to see what an operation adds.
inline int MessageCount() { return KVN_errorLog().GetNumItems(); }

/// Both ends of every arc know it, on both layers, and every list names live nodes only.
inline void ExpectListsInStep(const KVN_network& network) {
  for (int layer : {kPlain, kCost}) {
    long balance = 0;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      balance += network.GetNumberOfParents(h, layer) - network.GetNumberOfChildren(h, layer);
      for (int parent : network.GetParents(h, layer)) {
        ASSERT_TRUE(network.IsLive(parent)) << parent << " above " << h;
        EXPECT_TRUE(network.GetChildren(parent, layer).IsInList(h)) << parent << " -> " << h;
      }
    }
    EXPECT_EQ(balance, 0) << "layer " << layer;
  }
}
