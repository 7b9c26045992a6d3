// The table of nodes: walks, look-up, making and deleting nodes.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/caseList.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeEntry.h"
#include "network/nodeInfo.h"
#include "network/submodelHandler.h"
#include "network/temporalEngine.h"
#include "values/nodeValue.h"

namespace {

constexpr int kNameBufferSize = 32;

}  // namespace

// --- Walks.

bool KVN_network::IsLive(int handle) const {
  return handle >= 0 && handle < size && nodes[handle].node != nullptr;
}

int KVN_network::GetFirstNode() const {
  for (int handle = 0; handle < size && numNodes > 0; handle++) {
    if (nodes[handle].node != nullptr) return handle;
  }
  return KVN_REFUSED;
}

int KVN_network::GetNextNode(int handle) const {
  if (handle < 0 || handle >= size) return KVN_REFUSED;
  for (int next = handle + 1; next < size; next++) {
    if (nodes[next].node != nullptr) return next;
  }
  return KVN_REFUSED;
}

int KVN_network::GetLastNode() const {
  for (int handle = size - 1; handle >= 0 && numNodes > 0; handle--) {
    if (nodes[handle].node != nullptr) return handle;
  }
  return KVN_REFUSED;
}

int KVN_network::GetAllNodes(KVN_intArray& list) const {
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    if (int result = list.Add(handle); result < 0) return result;
  }
  return KVN_SUCCESS;
}

// --- Look-up.

const char* KVN_network::IdentifierOf(int handle) const {
  return IsLive(handle) ? nodes[handle].node->GetId() : nullptr;
}

int KVN_network::FindNodeExcept(const char* id, int exceptHandle) const {
  if (id == nullptr) return KVN_REFUSED;
  if (index.IsUsable()) return index.FindLowest(id, exceptHandle);
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    const char* present = IdentifierOf(handle);
    if (handle == exceptHandle || present == nullptr) continue;
    if (std::strcmp(present, id) == 0) return handle;
  }
  return KVN_REFUSED;
}

int KVN_network::FindNode(const char* id) const { return FindNodeExcept(id, /*exceptHandle=*/-1); }

KVN_node* KVN_network::GetNode(int handle) const {
  return handle >= 0 && handle < size ? nodes[handle].node : nullptr;
}

KVN_nodeDefinition* KVN_network::DefinitionOf(int handle) const {
  const KVN_node* node = GetNode(handle);
  return node != nullptr ? node->Definition() : nullptr;
}

KVN_nodeValue* KVN_network::ValueOf(int handle) const {
  const KVN_node* node = GetNode(handle);
  return node != nullptr ? node->Value() : nullptr;
}

int KVN_network::TypeOf(int handle) const {
  const KVN_node* node = GetNode(handle);
  return node != nullptr ? node->GetType() : int{KVN_TYPE_NONE};
}

int KVN_network::IsIdentifierUsed(const char* id, int exceptHandle) const {
  if (id == nullptr || id[0] == '@') return 0;
  if (FindNodeExcept(id, exceptHandle) >= 0) return 1;
  return submodels != nullptr ? submodels->Exists(id) : 0;
}

int KVN_network::AcceptRename(int handle, const char* oldId, const char* newId) {
  if (!IsLive(handle) || newId == nullptr) return 0;
  if (oldId != nullptr && std::strcmp(oldId, newId) == 0) return 1;
  const bool mustBeNew = (loadFlags & KVN_LOAD_REPEATED_IDS) == 0;
  if (mustBeNew && IsIdentifierUsed(newId, handle) != 0) return 0;
  if (oldId == nullptr) return 1;  // nobody can mention it yet
  // An equation names its own node as well as its parents.
  if (KVN_nodeDefinition* own = DefinitionOf(handle); own != nullptr) {
    own->ParentRenamed(handle, oldId, newId);
  }
  for (int child : Entry(handle).children) {
    KVN_nodeDefinition* definition = DefinitionOf(child);
    if (definition != nullptr) definition->ParentRenamed(handle, oldId, newId);
  }
  return 1;
}

void KVN_network::IdentifierChanged(int handle) { index.Add(IdentifierOf(handle), handle); }

// --- Making and deleting.

/// The first slot above the nodes if it is free, else the lowest free one: deleting the last node
/// made and adding another gives the same handle again.
int KVN_network::FindFreeSlot() {
  if (numNodes == size) {
    const int result = GrowTable();
    return result < 0 ? result : numNodes;
  }
  if (nodes[numNodes].node == nullptr) return numNodes;
  while (lowestFree < size && nodes[lowestFree].node != nullptr) lowestFree++;
  return lowestFree < size ? lowestFree : int{KVN_REFUSED};
}

/// `growBy` slots more. The memory grows by half at least: moving every entry at each step would
/// take time quadratic in the number of nodes.
int KVN_network::GrowTable() {
  constexpr int kMost = std::numeric_limits<int>::max() / 2;
  if (size > kMost || growBy > kMost) return KVN_NO_MEMORY;
  const int newSize = size + growBy;
  if (newSize > capacity) {
    const int newCapacity = std::max(newSize, capacity + capacity / 2);
    KVN_nodeEntry* table = new (std::nothrow) KVN_nodeEntry[newCapacity];
    if (table == nullptr) return KVN_NO_MEMORY;
    for (int handle = 0; handle < size; handle++) table[handle].Swap(nodes[handle]);
    delete[] std::exchange(nodes, table);
    capacity = newCapacity;
  }
  size = newSize;
  return KVN_SUCCESS;
}

void KVN_network::GetNewNodeName(char* buffer) const {
  int number = numNodes;
  do {
    std::snprintf(buffer, kNameBufferSize, "Node%d", number++);
  } while (IsIdentifierUsed(buffer) != 0);
}

int KVN_network::AddNode(int definitionType, const char* id) {
  if (submodels == nullptr) return KVN_NOT_READY;
  char generated[kNameBufferSize];
  if (id == nullptr) {
    GetNewNodeName(generated);
    id = generated;
  } else if ((loadFlags & KVN_LOAD_REPEATED_IDS) == 0 && IsIdentifierUsed(id) != 0) {
    return KVN_REFUSED;
  }
  const int handle = FindFreeSlot();
  if (handle < 0) return handle;
  KVN_node* node = new (std::nothrow) KVN_node(this, handle);
  if (node == nullptr || !node->IsWhole()) {
    delete node;
    return KVN_NO_MEMORY;
  }
  Entry(handle).node = node;
  if (int result = NameNewNode(handle, id); result < 0) {
    index.Remove(handle);
    Entry(handle).CleanUp(/*deep=*/0);
    return result == KVN_NO_MEMORY ? result : int{KVN_REFUSED};
  }
  Entry(handle).marks = 0;
  Entry(handle).temporalType = 0;
  numNodes++;

  int result = node->ChangeDefinition(definitionType);
  if (result == 0) result = node->ChangeValue(definitionType);
  if (result < 0) LogError(result);
  (void)node->Info().Screen().FillUnset(submodels->NodeDefaults());
  (void)node->CheckReadiness(/*deep=*/1);
  return handle;
}

/// An illegal identifier doesn't fail: the node gets a generated one, and keeps the text that its
/// maker wanted as its name, so that a reader of foreign files loses no node and no text.
int KVN_network::NameNewNode(int handle, const char* id) {
  KVN_node& node = *GetNode(handle);
  int result = node.SetId(id);
  if (result < 0 && result != KVN_NO_MEMORY) {
    char generated[kNameBufferSize];
    GetNewNodeName(generated);
    result = node.SetId(generated);
  }
  return result < 0 ? result : node.SetName(id);
}

int KVN_network::DeleteNode(int handle) {
  if (!IsLive(handle)) return KVN_REFUSED;
  const struct {
    KVN_intArray KVN_nodeEntry::*list;
    int layer;
    bool asParent;
  } steps[] = {
      {&KVN_nodeEntry::children, 0, true},
      {&KVN_nodeEntry::parents, 0, false},
      {&KVN_nodeEntry::costChildren, 1, true},
      {&KVN_nodeEntry::costParents, 1, false},
  };
  for (const auto& step : steps) {
    const int result = RemoveArcsOf(handle, step.list, step.layer, step.asParent);
    if (result < 0) return result;
  }
  if ((Entry(handle).marks & KVN_MARK_TARGET) != 0) numTargets--;
  index.Remove(handle);
  Entry(handle).CleanUp(/*deep=*/0);
  if (cases != nullptr) cases->NodeDeleted(handle);
  if (temporal != nullptr) temporal->NodeDeleted(handle);
  numNodes--;
  lowestFree = std::min(lowestFree, handle);
  return KVN_SUCCESS;
}
