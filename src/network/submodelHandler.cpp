#include "network/submodelHandler.h"

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/submodel.h"

namespace {

// "Sub", ten digits and the end.
constexpr int kNameSize = 16;

constexpr int kDefaultWidth = 76;
constexpr int kDefaultHeight = 36;
constexpr int kDefaultColor = 0xF7F6E5;
constexpr int kDefaultSelColor = 0xBBBBBB;
constexpr int kDefaultBorderColor = 0xBB0000;
constexpr int kRootWindowColor = 0xFFFFFF;

int IndexOfHandle(int handle) { return handle & ~KVN_SUBMODEL_BIT; }

/// The handle of a result: codes below 0 pass through.
int HandleOf(int index) { return index < 0 ? index : index | KVN_SUBMODEL_BIT; }

KVN_screenInfo MakeDefaults(int borderThickness) {
  KVN_screenInfo made;
  made.position.width = kDefaultWidth;
  made.position.height = kDefaultHeight;
  made.color = kDefaultColor;
  made.selColor = kDefaultSelColor;
  made.font = 1;
  made.fontColor = 0;
  made.borderThickness = borderThickness;
  made.borderColor = kDefaultBorderColor;
  made.screenFlags = KVN_screenInfo::kShowInArcs | KVN_screenInfo::kShowOutArcs;
  return made;
}

/// Links the entries below each parent, in table order: `firstChild` and `nextSibling` get one slot
/// per entry, -1 at the end of a chain.
template <typename Entries>
int LinkChildren(const Entries* entries, int size, KVN_intArray& firstChild,
                 KVN_intArray& nextSibling) {
  if (int result = firstChild.SetSize(size); result < 0) return result;
  if (int result = nextSibling.SetSize(size); result < 0) return result;
  firstChild.FillWith(-1);
  nextSibling.FillWith(-1);
  for (int i = size - 1; i > 0; i--) {
    const int parent = entries[i].parent;
    if (entries[i].submodel == nullptr || parent < 0) continue;
    nextSibling[i] = firstChild[parent];
    firstChild[parent] = i;
  }
  return KVN_SUCCESS;
}

}  // namespace

KVN_submodelHandler::KVN_submodelHandler(KVN_network* ofNetwork) : network(ofNetwork) {
  SetReady(false);
  (void)CreateRoot();  // without memory the handler isn't ready, which every operation reports
}

KVN_submodelHandler::~KVN_submodelHandler() = default;

bool KVN_submodelHandler::IsUsed(int index) const {
  return index >= 0 && index < size && entries[index].submodel != nullptr;
}

KVN_submodel* KVN_submodelHandler::GetSubmodel(int handle) const {
  const int index = IndexOfHandle(handle);
  return IsUsed(index) ? entries[index].submodel.get() : nullptr;
}

int KVN_submodelHandler::GetParent(int handle) const {
  if (!IsReady()) return KVN_NOT_READY;
  const int index = IndexOfHandle(handle);
  if (!IsUsed(index)) return KVN_REFUSED;
  // It is meant that the root's mark is handed out as it is: callers test for any negative result.
  return HandleOf(entries[index].parent);
}

int KVN_submodelHandler::GetFirst() const { return HandleOf(GetFirstIndex()); }

int KVN_submodelHandler::GetNext(int handle) const {
  return HandleOf(GetNextIndex(IndexOfHandle(handle)));
}

int KVN_submodelHandler::GetFirstIndex() const {
  if (!IsReady()) return KVN_NOT_READY;
  return IsUsed(0) ? 0 : GetNextIndex(0);
}

int KVN_submodelHandler::GetNextIndex(int index) const {
  if (!IsReady()) return KVN_NOT_READY;
  if (index < 0 || index >= size) return KVN_REFUSED;
  for (int i = index + 1; i < size; i++) {
    if (IsUsed(i)) return i;
  }
  return KVN_REFUSED;
}

int KVN_submodelHandler::Find(const char* id) const { return HandleOf(FindIndex(id)); }

int KVN_submodelHandler::FindIndex(const char* id) const {
  if (!IsReady()) return KVN_NOT_READY;
  if (id == nullptr) return KVN_REFUSED;
  for (int i = 0; i < size; i++) {
    if (!IsUsed(i)) continue;
    const char* present = entries[i].submodel->Header().GetId();
    if (present != nullptr && std::strcmp(present, id) == 0) return i;
  }
  return KVN_REFUSED;
}

int KVN_submodelHandler::Exists(const char* id) const { return FindIndex(id) >= 0 ? 1 : 0; }

int KVN_submodelHandler::GetChildren(int handle, KVN_intArray& list) const {
  const int before = list.GetNumItems();
  const int result = GetChildrenIndex(IndexOfHandle(handle), list);
  for (int i = before; i < list.GetNumItems(); i++) list[i] = HandleOf(list[i]);
  return result;
}

int KVN_submodelHandler::GetChildrenIndex(int index, KVN_intArray& list) const {
  if (!IsReady()) return KVN_NOT_READY;
  if (!IsUsed(index)) return KVN_REFUSED;
  for (int i = 0; i < size; i++) {
    if (!IsUsed(i) || entries[i].parent != index) continue;
    if (int result = list.Add(i); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_submodelHandler::GetDescendants(KVN_intArray& list) const {
  if (!IsReady()) return KVN_NOT_READY;
  KVN_intArray firstChild;
  KVN_intArray nextSibling;
  if (int result = LinkChildren(entries.get(), size, firstChild, nextSibling); result < 0)
    return result;

  // The part of the list that this call adds is the queue of the walk.
  int next = list.GetNumItems();
  if (int result = list.Add(KVN_ROOT_SUBMODEL); result < 0) return result;
  for (; next < list.GetNumItems(); next++) {
    for (int i = firstChild[IndexOfHandle(list[next])]; i >= 0; i = nextSibling[i]) {
      if (int result = list.Add(HandleOf(i)); result < 0) return result;
    }
  }
  return KVN_SUCCESS;
}

int KVN_submodelHandler::GetNodes(int handle, KVN_intArray& list) const {
  const int before = list.GetNumItems();
  const int result = GetNodesIndex(IndexOfHandle(handle), list);
  return result < 0 ? result : list.GetNumItems() - before;
}

int KVN_submodelHandler::GetNodesIndex(int index, KVN_intArray& list) const {
  if (!IsReady()) return KVN_NOT_READY;
  if (!IsUsed(index)) return KVN_REFUSED;
  for (int node = network->GetFirstNode(); node >= 0; node = network->GetNextNode(node)) {
    if (IndexOfHandle(network->GetNode(node)->GetSubmodel()) != index) continue;
    if (int result = list.Add(node); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_submodelHandler::IsDescendantIndex(int a, int b) const {
  if (!IsReady()) return KVN_NOT_READY;
  if (!IsUsed(a) || !IsUsed(b)) return KVN_REFUSED;
  for (int i = entries[a].parent; i >= 0; i = entries[i].parent) {
    if (i == b) return 1;
  }
  return 0;
}

int KVN_submodelHandler::Create(int parentHandle, const char* id) {
  return HandleOf(CreateIndex(IndexOfHandle(parentHandle), id));
}

int KVN_submodelHandler::CreateIndex(int parentIndex, const char* id) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!IsUsed(parentIndex)) return KVN_REFUSED;
  if (id != nullptr && Exists(id) != 0) return KVN_REFUSED;
  const int index = FindFreeEntry();
  if (index < 0) return index;

  char generated[kNameSize];
  if (id == nullptr) {
    GenerateName(index, generated, kNameSize);
    id = generated;
  }
  std::unique_ptr<KVN_submodel> made(new (std::nothrow) KVN_submodel);
  if (made == nullptr) return KVN_NO_MEMORY;
  // An illegal identifier is in the log already and leaves the submodel with its name alone, as an
  // illegal one given to a node doesn't stop that node either.
  if (made->Header().SetId(id) == KVN_NO_MEMORY) return KVN_NO_MEMORY;
  if (int result = made->Header().SetName(id); result < 0) return result;
  if (int result = made->Screen().Assign(submodelDefaults); result < 0) return result;
  entries[index].submodel = std::move(made);
  entries[index].parent = parentIndex;
  return index;
}

int KVN_submodelHandler::Move(int handle, int newParentHandle) {
  return MoveIndex(IndexOfHandle(handle), IndexOfHandle(newParentHandle));
}

int KVN_submodelHandler::MoveIndex(int index, int newParentIndex) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!IsUsed(index) || !IsUsed(newParentIndex)) return KVN_REFUSED;
  if (entries[index].parent == kRootParent) return KVN_REFUSED;
  if (index == newParentIndex || IsDescendantIndex(newParentIndex, index) != 0) return KVN_REFUSED;
  entries[index].parent = newParentIndex;
  return KVN_SUCCESS;
}

int KVN_submodelHandler::Clear() {
  CleanUp(/*deep=*/1);
  return CreateRoot();
}

int KVN_submodelHandler::Assign(const KVN_submodelHandler& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  std::unique_ptr<Entry[]> made(new (std::nothrow) Entry[static_cast<std::size_t>(source.size)]);
  if (made == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < source.size; i++) {
    made[i].parent = source.entries[i].parent;
    if (!source.IsUsed(i)) continue;
    made[i].submodel.reset(new (std::nothrow) KVN_submodel);
    if (made[i].submodel == nullptr) return KVN_NO_MEMORY;
    if (int result = made[i].submodel->Assign(*source.entries[i].submodel); result < 0) {
      return result;
    }
  }
  entries = std::move(made);
  size = source.size;
  (void)CheckReadiness(0);
  // It is meant that the defaults of submodels and the step of growth stay those of this handler.
  return nodeDefaults.Assign(source.nodeDefaults);
}

void KVN_submodelHandler::CleanUp(int /*deep*/) {
  entries.reset();
  size = 0;
  (void)CheckReadiness(0);
}

int KVN_submodelHandler::CheckReadiness(int /*deep*/) {
  SetReady(entries != nullptr && network != nullptr);
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_submodelHandler::FindFreeEntry() {
  for (int i = 0; i < size; i++) {
    if (!IsUsed(i)) return i;
  }
  const int index = size;
  if (int result = Grow(); result < 0) return result;
  return index;
}

int KVN_submodelHandler::Grow() {
  if (size >= KVN_SUBMODEL_BIT) return KVN_REFUSED;
  const int room = KVN_SUBMODEL_BIT - size;
  const int newSize = size + (growBy < room ? growBy : room);
  std::unique_ptr<Entry[]> made(new (std::nothrow) Entry[static_cast<std::size_t>(newSize)]);
  if (made == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < size; i++) made[i] = std::move(entries[i]);
  entries = std::move(made);
  size = newSize;
  return KVN_SUCCESS;
}

int KVN_submodelHandler::CreateRoot() {
  SetDefaults();
  std::unique_ptr<KVN_submodel> root(new (std::nothrow) KVN_submodel);
  std::unique_ptr<Entry[]> table(new (std::nothrow) Entry[1]);
  if (root == nullptr || table == nullptr) return KVN_NO_MEMORY;
  char name[kNameSize];
  GenerateName(0, name, kNameSize);
  if (int result = root->Header().SetId(name); result < 0) return result;
  if (int result = root->Header().SetName(name); result < 0) return result;
  if (int result = root->Screen().Assign(submodelDefaults); result < 0) return result;
  root->SetWindowColor(kRootWindowColor);
  table[0].submodel = std::move(root);
  table[0].parent = kRootParent;
  entries = std::move(table);
  size = 1;
  return CheckReadiness(0);
}

void KVN_submodelHandler::SetDefaults() {
  nodeDefaults = MakeDefaults(/*borderThickness=*/1);
  submodelDefaults = MakeDefaults(/*borderThickness=*/3);
}

void KVN_submodelHandler::GenerateName(int number, char* buffer, int bufferSize) const {
  do {
    std::snprintf(buffer, static_cast<std::size_t>(bufferSize), "Sub%d", number++);
  } while (Exists(buffer) != 0);
}
