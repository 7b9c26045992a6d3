#pragma once

/// Pool of released blocks of doubles, for programs that allocate and release tables of the same
/// sizes over and over.
///
/// The system starts with the pool unconfigured (`entries` null) and nothing configures it yet, so
/// that every block goes straight to the allocator; Configure is the hook for doing so.
/// Slots of the pool are not reused: after `capacity` releases, further blocks are freed.
///
/// Process-wide and unguarded. The class has no destructor, so that arrays with static storage can
/// still return their blocks while the process ends.
class KVN_doublePool {
 public:
  /// Frees the pooled blocks and makes room for `newCapacity` entries; 0 switches the pool off.
  /// KVN_REFUSED below 0; KVN_NO_MEMORY leaves it switched off.
  [[nodiscard]] int Configure(int newCapacity);

  /// Block of at least `wanted` doubles, not initialised; null when memory is out. An exact fit
  /// from the pool wins, then the smallest larger block, then the heap.
  double* Obtain(int wanted);
  /// Takes back a block from Obtain, `size` being the number that was asked for. Null is ignored.
  void Return(int size, double* block);

  bool IsConfigured() const { return entries != nullptr; }
  int GetCount() const { return count; }
  int GetFirst() const { return first; }

 private:
  struct Entry {
    int size;       // in doubles
    double* block;  // owned; null when handed out again
  };

  int FindBlock(int wanted) const;

  int capacity = 0;
  int first = 0;             // entries before this one hold no block
  int count = 0;             // entries filled so far
  Entry* entries = nullptr;  // owned
};

/// The pool that KVN_doubleArray uses.
KVN_doublePool& KVN_theDoublePool();
