#pragma once

#include <cstdint>

#include "foundation/intArray.h"
#include "foundation/object.h"

class KVN_node;

/// Bits of KVN_nodeEntry::marks: the target bit and the scratch bits of the graph walks. Scratch
/// bits survive between operations only by accident; every walk begins by clearing its own.
enum KVN_entryMark : int {
  KVN_MARK_TARGET = 1,
  KVN_MARK_VISITED = 2,
  KVN_MARK_EVIDENCE_BELOW = 4,
  KVN_MARK_DESCENDANT = 8,
  KVN_MARK_ORDERED = 16,
  KVN_MARK_ON_STACK = 32,
  KVN_MARK_LEAF_SEEN = 64,
  KVN_MARK_FROM_CHILD = 128,
  KVN_MARK_FROM_PARENT = 256,
  KVN_MARK_VALUE_CHANGE = 512,
};

/// One slot of a network's node table, in the order of handles. Plain record: the network keeps
/// the lists of both ends of an arc in step.
class KVN_nodeEntry : public KVN_object {
 public:
  KVN_nodeEntry() = default;
  KVN_nodeEntry(const KVN_nodeEntry&) = delete;
  KVN_nodeEntry& operator=(const KVN_nodeEntry&) = delete;
  ~KVN_nodeEntry() override;

  KVN_node* node = nullptr;   // owned; null means a free slot
  KVN_intArray parents;       // handles, layer 0, in definition order
  KVN_intArray children;      // layer 0
  KVN_intArray costParents;   // layer 1
  KVN_intArray costChildren;  // layer 1
  int temporalType = 0;       // 0 plain, 1 anchor, 2 terminal, 3 in plate
  int marks = 0;              // KVN_entryMark bits
  int level = 0;              // result of ComputeLevels
  /// Number of the arc test that was here last; it spares that test the clearing of `marks`.
  std::int64_t arcTest = 0;

  /// Destroys the node and empties the slot.
  void CleanUp(int deep) override;

  /// Exchanges node, temporal type, marks, level and the four lists.
  void Swap(KVN_nodeEntry& other);
};
