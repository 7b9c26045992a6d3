#include "network/nodeEntry.h"

#include <utility>

#include "network/node.h"

KVN_nodeEntry::~KVN_nodeEntry() { delete node; }

void KVN_nodeEntry::CleanUp(int deep) {
  delete std::exchange(node, nullptr);
  for (KVN_intArray* list : {&parents, &children, &costParents, &costChildren}) list->CleanUp();
  temporalType = 0;
  marks = 0;
  level = 0;
  KVN_object::CleanUp(deep);
}

void KVN_nodeEntry::Swap(KVN_nodeEntry& other) {
  std::swap(node, other.node);
  parents.Swap(other.parents);
  children.Swap(other.children);
  costParents.Swap(other.costParents);
  costChildren.Swap(other.costChildren);
  std::swap(temporalType, other.temporalType);
  std::swap(marks, other.marks);
  std::swap(level, other.level);
}
