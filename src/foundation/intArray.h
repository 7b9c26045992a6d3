#pragma once

#include "foundation/valueArray.h"

/// List or block of ints: handles, dimensions, coordinates, orders. See KVN_valueArray.
class KVN_intArray : public KVN_valueArray<int, 8> {
 public:
  /// Position of the first equal item among the used ones, or KVN_REFUSED.
  int FindPosition(int value) const;
  bool IsInList(int value) const { return FindPosition(value) >= 0; }
  /// Appends; KVN_REFUSED when the value is already present.
  [[nodiscard]] int AddExclusive(int value);
  /// Deletes the first equal item; KVN_REFUSED when there is none.
  [[nodiscard]] int DeleteByContent(int value);
};

/// 0 when the used items of `order` are the numbers 0..count-1 in any order, each once; otherwise
/// KVN_REFUSED, or KVN_NO_MEMORY.
[[nodiscard]] int CheckPermutation(const KVN_valueArray<int, 8>& order, int count);
