#pragma once

#include <vector>

#include "expressions/expression.h"

/// Walks over trees without recursion: a formula from a file or from a node with many parents may
/// be thousands of levels deep, and a host's thread has no more than 512 KB of stack. The virtual
/// operations of the nodes with children end here.

/// Places for children: 2, 3, or all 30 of a call; 0 for a leaf. A place may hold null.
int GetChildPlaces(const KVN_expression& node);
/// The node's own pointer to a child. `place` is below GetChildPlaces.
KVN_expression** GetChildSlot(KVN_expression& node, int place);
const KVN_expression* GetChild(const KVN_expression& node, int place);

/// Deletes a whole tree, null too, without allocating.
void DeleteTree(KVN_expression* root);
/// KVN_expression::Clone of a node with children.
KVN_expression* CloneTree(const KVN_expression& root);
/// IsDeterministic and Accept of a node with children, and CollectDistributions below it.
bool IsTreeDeterministic(const KVN_expression& root);
void AcceptTree(KVN_expression& root, KVN_variableVisitor& visitor);
void CollectInTree(KVN_expression& root, std::vector<KVN_expression**>& found);
/// Simplify of a node with children.
bool SimplifyTree(KVN_expression*& root);

/// What is still to be visited. Small trees need no heap block.
template <typename Item>
class KVN_pendingItems {
 public:
  bool IsEmpty() const { return count == 0; }
  void Push(const Item& item) {
    if (count < kInline) {
      first[count] = item;
    } else {
      more.push_back(item);
    }
    count++;
  }
  Item Pop() {
    count--;
    if (count < kInline) return first[count];
    const Item item = more.back();
    more.pop_back();
    return item;
  }

 private:
  static constexpr int kInline = 48;
  Item first[kInline];
  std::vector<Item> more;
  int count = 0;
};

/// Calls visit(node, slot) for the root, with `slot` as given, and every node below it, parents
/// before children, children in order. A visit that answers false keeps the walk from going below
/// that node. The visit may replace the node through its slot when it answers false.
template <typename Visit>
void WalkTree(KVN_expression** root, Visit visit) {
  if (*root == nullptr) return;
  KVN_pendingItems<KVN_expression**> pending;
  pending.Push(root);
  while (!pending.IsEmpty()) {
    KVN_expression** slot = pending.Pop();
    KVN_expression& node = **slot;
    if (!visit(node, slot)) continue;
    for (int place = GetChildPlaces(node) - 1; place >= 0; place--) {
      KVN_expression** child = GetChildSlot(node, place);
      if (*child != nullptr) pending.Push(child);
    }
  }
}
