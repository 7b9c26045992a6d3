#pragma once

#include "foundation/object.h"

/// Base of the lists of owned objects: the counts, without the items.
///
/// `size` is the number of slots, `numItems` the number in use, `growBy` how many slots a full list
/// gains. In contrast to the value arrays, which double, these lists grow by a fixed step.
class KVN_array : public KVN_object {
 public:
  static constexpr int kDefaultGrowBy = 10;

  /// A step of 0 or below becomes 10.
  explicit KVN_array(int step = kDefaultGrowBy) : growBy(step > 0 ? step : int{kDefaultGrowBy}) {}

  /// Both counts to 0. It is meant that growBy returns to 10, whatever it was before.
  void CleanUp(int deep) override;

  int GetSize() const { return size; }
  int GetNumItems() const { return numItems; }
  int GetGrowBy() const { return growBy; }
  /// numItems becomes `count`, or `size` when count is negative or above it. A list that was sized
  /// and then filled by position is published as full with -1.
  void UseAsList(int count) { numItems = count >= 0 && count <= size ? count : size; }

 protected:
  /// The readiness rule of the lists: either nothing at all, or a sound pair of counts.
  int SetReadyByCounts(bool hasItems);

  int size = 0;
  int numItems = 0;
  int growBy;
};

/// numItems when that is above 0, else size: see the function of the same name for value arrays.
inline int UsedCount(const KVN_array& array) {
  return array.GetNumItems() > 0 ? array.GetNumItems() : array.GetSize();
}
