#pragma once

/// Growable array of numbers with a small inline storage: the type behind KVN_intArray (8 inline)
/// and KVN_doubleArray (4 inline), both 32 bytes inline, so that coordinates and parent lists of
/// most nodes need no heap block.
///
/// `size` is the number of slots, `numItems` the number of slots in use. An array is either a list
/// (filled by Add and Insert, numItems counts) or a fixed block (SetSize, then writing by index;
/// numItems stays 0 until UseAsList publishes it). UsedCount() answers for both.
///
/// Slots that were never written hold 0, so that results never depend on stale memory.
/// Allocation failures give KVN_NO_MEMORY and leave the array as it was. Copy construction and
/// `operator=` cannot give a code: after a failure the copy is empty; use Assign where a failure
/// must be told from an empty source.
template <typename T, int kInline>
class KVN_valueArray {
 public:
  KVN_valueArray() = default;
  KVN_valueArray(const KVN_valueArray& source);
  KVN_valueArray(KVN_valueArray&& source) noexcept;
  KVN_valueArray& operator=(const KVN_valueArray& source);
  KVN_valueArray& operator=(KVN_valueArray&& source) noexcept;
  ~KVN_valueArray() { ReleaseBlock(); }

  int GetSize() const { return size; }
  int GetNumItems() const { return numItems; }
  T* GetItems() { return items; }
  const T* GetItems() const { return items; }
  /// Unchecked.
  T& operator[](int position) { return items[position]; }
  const T& operator[](int position) const { return items[position]; }
  /// Ranges go over the first numItems slots.
  T* begin() { return items; }
  T* end() { return items + numItems; }
  const T* begin() const { return items; }
  const T* end() const { return items + numItems; }

  /// Appends. A full array doubles its size; an empty one takes the whole inline storage.
  [[nodiscard]] int Add(T value) {
    if (numItems == size) {
      if (int result = Grow(); result < 0) return result;
    }
    items[numItems++] = value;
    return 0;
  }
  /// KVN_REFUSED unless 0 <= position <= numItems.
  [[nodiscard]] int Insert(int position, T value);
  /// KVN_REFUSED unless 0 <= position < size. It is meant that the size is tested and not the used
  /// length: a position in the unused part still takes 1 off numItems, though never below 0.
  [[nodiscard]] int Delete(int position);

  /// Exactly `count` slots, none in use. The present size keeps storage and contents; any other
  /// gives fresh storage full of 0, inline where it fits. KVN_REFUSED for a negative count.
  [[nodiscard]] int SetSize(int count);
  /// As SetSize, but a heap block is left unwritten: for callers that write every slot at once.
  [[nodiscard]] int SetSizeUnwritten(int count);
  /// At least `count` slots, none in use: the storage only grows, so a scratch array can be reused
  /// without allocation. The contents are undefined afterwards. KVN_REFUSED for a negative count.
  [[nodiscard]] int SetSizeFlush(int count);
  /// numItems 0; the storage stays.
  void Flush() { numItems = 0; }
  /// Size 0 and no heap block.
  void CleanUp();
  /// Writes all `size` slots.
  void FillWith(T value);
  /// numItems becomes `count`, or `size` when count is negative or above it (so -1 means "all").
  void UseAsList(int count) { numItems = count >= 0 && count <= size ? count : size; }

  /// Same size, numItems and slots as `source`; KVN_NO_MEMORY leaves this array unchanged.
  [[nodiscard]] int Assign(const KVN_valueArray& source);
  /// Copies the first min(size, source size) slots. No allocation, numItems stays.
  void CopyItems(const KVN_valueArray& source);
  /// Exchanges all contents without allocation.
  void Swap(KVN_valueArray& other) noexcept;
  /// Slot i receives the old slot order[i]. `order` is a permutation of as many positions as this
  /// array has items, or slots; otherwise KVN_REFUSED and nothing changes.
  [[nodiscard]] int ChangeOrder(const KVN_valueArray<int, 8>& order);

 private:
  static T* ObtainBlock(int count);
  static void ReturnBlock(int count, T* block);

  bool IsInline() const { return items == inlineItems; }
  /// Gives the heap block back, if any; `items` and `size` are stale until set again.
  void ReleaseBlock() {
    if (!IsInline()) ReturnBlock(size, items);
  }
  int Grow();
  int Resize(int count, bool zeroFill);

  T inlineItems[kInline] = {};
  T* items = inlineItems;
  int size = 0;
  int numItems = 0;
};

/// Number of items in an array from a caller, whether it was filled as a list or as a fixed block:
/// numItems when that is above 0, else size.
template <typename T, int kInline>
int UsedCount(const KVN_valueArray<T, kInline>& array) {
  return array.GetNumItems() > 0 ? array.GetNumItems() : array.GetSize();
}

extern template class KVN_valueArray<int, 8>;
extern template class KVN_valueArray<double, 4>;
