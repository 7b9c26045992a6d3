#pragma once

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
/// KVN_SUBMODEL_BIT set. Operations that come in both forms are named ...Index for the first.
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
  /// Append the nodes that belong to the submodel, in handle order; the number added.
  int GetNodes(int handle, KVN_intArray& list) const;
  int GetNodesIndex(int index, KVN_intArray& list) const;
  /// 1 if b is an ancestor of a; a isn't its own ancestor. KVN_REFUSED for a free entry.
  int IsDescendantIndex(int a, int b) const;

  /// Makes a submodel below `parent`; a null id is generated ("Sub" and a number, tested against
  /// submodels alone). KVN_REFUSED for an id in use by a submodel: unchanged.
  int Create(int parentHandle, const char* id);
  int CreateIndex(int parentIndex, const char* id);
  /// KVN_REFUSED for the root, and for a target that is the submodel itself or below it.
  int Move(int handle, int newParentHandle);
  int MoveIndex(int index, int newParentIndex);

  /// Destroys all submodels and makes a new root.
  int Clear();

  KVN_screenInfo& NodeDefaults() { return nodeDefaults; }
  KVN_screenInfo& SubmodelDefaults() { return submodelDefaults; }

  /// Entries keep their indexes, free ones included; of the defaults only those of nodes are
  /// taken. KVN_NOT_READY, unchanged, if the source isn't ready.
  int Assign(const KVN_submodelHandler& source);
  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  int CheckConsistency(int deep) override;

 private:
  struct Entry {
    KVN_submodel* submodel = nullptr;  // owned; null means a free entry
    int parent = kFreeEntry;           // index of the parent entry
  };

  bool IsUsed(int index) const;
  int TakeFreeEntry();
  int CreateRoot();

  int size = 0;
  Entry* entries = nullptr;  // owned
  KVN_network* network;      // not owned: the network owns this handler
  int growBy = 10;
  KVN_screenInfo nodeDefaults;
  KVN_screenInfo submodelDefaults;
};
