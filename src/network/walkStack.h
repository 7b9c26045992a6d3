#pragma once

#include <memory>
#include <new>
#include <utility>

#include "foundation/resultCodes.h"

/// The frames of a depth-first walk, kept on the heap: a host thread may have no more than 512 KB
/// of stack, and a recursion over a chain of nodes would overflow it. A frame says how far the walk
/// has come with one node, so that the order of visits is that of the recursion.
template <typename Frame>
class KVN_walkStack {
 public:
  bool IsEmpty() const { return count == 0; }
  /// The frame of the node that the walk is at; a Push makes the reference stale.
  Frame& Top() { return frames[count - 1]; }
  void Pop() { count--; }

  /// KVN_NO_MEMORY leaves the stack as it was.
  [[nodiscard]] int Push(Frame frame) {
    if (count == capacity) {
      if (int result = Grow(); result < 0) return result;
    }
    frames[count++] = std::move(frame);
    return KVN_SUCCESS;
  }

 private:
  int Grow() {
    const int wanted = capacity == 0 ? 64 : 2 * capacity;
    std::unique_ptr<Frame[]> grown(new (std::nothrow) Frame[wanted]);
    if (grown == nullptr) return KVN_NO_MEMORY;
    for (int i = 0; i < count; i++) grown[i] = std::move(frames[i]);
    frames = std::move(grown);
    capacity = wanted;
    return KVN_SUCCESS;
  }

  std::unique_ptr<Frame[]> frames;
  int capacity = 0;
  int count = 0;
};
