#include "inference/sampling/partView.h"

#include "network/node.h"

int PartView::GetHandle(int place) const {
  const KVN_node* node = part->Node(place).node;
  return node == nullptr ? -1 : node->Handle();
}

KVN_nodeValue* PartView::GetValue(int place) const {
  const KVN_node* node = part->Node(place).node;
  return node == nullptr ? nullptr : node->Value();
}
