#pragma once

#include <memory>

#include "foundation/intArray.h"
#include "network/screenInfo.h"

class KVN_network;
class KVN_submodel;

/// Set in every submodel handle, so that node handles and submodel handles can't be mistaken for
/// each other.
constexpr int KVN_SUBMODEL_BIT = 0x4000;
/// Handle of the root submodel: index 0 with the bit.
constexpr int KVN_ROOT_SUBMODEL = 16384;

/// Owner of the submodel tree of a network.
///
/// Inside, a submodel is an index into the table; outside, a handle is that index with
/// KVN_SUBMODEL_BIT set. Operations that come in both forms are named ...Index for the first; those
/// that take a handle mask the bit off, so that they accept the bare index as well. There are at
/// most KVN_SUBMODEL_BIT submodels, since a larger index would collide with the bit.
///
/// Invariants while ready: entry 0 is the root; every other used entry leads up to it through
/// `parent` in finitely many steps.
///
/// Results: an index or handle, 0, or KVN_REFUSED for a bad one, KVN_NOT_READY, KVN_NO_MEMORY.
class KVN_submodelHandler : public KVN_object {
 public:
  /// Parent of the root entry, and of a free one.
  static constexpr int kRootParent = -8888;
  static constexpr int kFreeEntry = -8889;

  /// Makes the root alone, with a generated name and the defaults.
  explicit KVN_submodelHandler(KVN_network* network);
  KVN_submodelHandler(const KVN_submodelHandler&) = delete;
  KVN_submodelHandler& operator=(const KVN_submodelHandler&) = delete;
  ~KVN_submodelHandler() override;

  /// Null for an unused entry; takes an index or a handle.
  KVN_submodel* GetSubmodel(int handle) const;
  /// The parent's handle; for the root kRootParent as it stands.
  int GetParent(int handle) const;

  int GetFirst() const;
  int GetNext(int handle) const;
  int GetFirstIndex() const;
  int GetNextIndex(int index) const;

  /// Exact identifier match.
  int Find(const char* id) const;
  int FindIndex(const char* id) const;
  int Exists(const char* id) const;

  /// Append the direct children, in table order.
  int GetChildren(int handle, KVN_intArray& list) const;
  int GetChildrenIndex(int index, KVN_intArray& list) const;
  /// Appends all handles breadth first from the root, the root included.
  int GetDescendants(KVN_intArray& list) const;
  /// Append the nodes that belong to the submodel, in handle order. The handle form returns the
  /// number added, the other one 0.
  int GetNodes(int handle, KVN_intArray& list) const;
  int GetNodesIndex(int index, KVN_intArray& list) const;
  /// 1 if b is an ancestor of a; a isn't its own ancestor. KVN_REFUSED for a free entry.
  int IsDescendantIndex(int a, int b) const;

  /// Makes a submodel below `parent`, with the submodel defaults; the id becomes its name too. A
  /// null id is generated: "Sub" and a number, tested against submodels alone, so that it may be
  /// the identifier of a node (intended). An id that is no legal identifier doesn't fail the call:
  /// it is told to the log and the submodel has only the name. KVN_REFUSED for an id in use by a
  /// submodel: unchanged.
  [[nodiscard]] int Create(int parentHandle, const char* id);
  [[nodiscard]] int CreateIndex(int parentIndex, const char* id);
  /// KVN_REFUSED for the root, and for a target that is the submodel itself or below it.
  [[nodiscard]] int Move(int handle, int newParentHandle);
  [[nodiscard]] int MoveIndex(int index, int newParentIndex);

  /// Destroys all submodels and makes a new root, with the defaults of a new handler.
  int Clear();

  KVN_screenInfo& NodeDefaults() { return nodeDefaults; }
  KVN_screenInfo& SubmodelDefaults() { return submodelDefaults; }

  /// Entries keep their indexes, free ones included; of the defaults only those of nodes are taken
  /// (intended). KVN_NOT_READY if the source isn't ready, KVN_NO_MEMORY: unchanged.
  [[nodiscard]] int Assign(const KVN_submodelHandler& source);
  /// No submodel at all, not even the root; not ready until Clear.
  void CleanUp(int deep) override;
  /// Ready when there is a table and a network.
  int CheckReadiness(int deep) override;

 private:
  struct Entry {
    std::unique_ptr<KVN_submodel> submodel;  // null means a free entry
    int parent = kFreeEntry;                 // index of the parent entry
  };

  bool IsUsed(int index) const;
  /// Index of a free entry, the first one; the table grows if there is none.
  int FindFreeEntry();
  int Grow();
  int CreateRoot();
  void SetDefaults();
  /// Writes an unused name, counting up from `number`.
  void GenerateName(int number, char* buffer, int bufferSize) const;

  int size = 0;
  std::unique_ptr<Entry[]> entries;
  KVN_network* network;  // not owned: the network owns this handler
  int growBy = 10;
  KVN_screenInfo nodeDefaults;
  KVN_screenInfo submodelDefaults;
};
