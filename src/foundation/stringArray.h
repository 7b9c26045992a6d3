#pragma once

#include "foundation/array.h"

class KVN_intArray;

/// List of owned C strings: every text is copied on the way in, and a caller's pointer is never
/// kept. Slots not in use are null; a used slot may be null too (an unset text).
///
/// Like the value arrays it is filled either by Add, or by SetSize, SetString and UseAsList(-1).
/// A list that is not ready answers KVN_NOT_READY or "not found"; CleanUp makes it ready again.
class KVN_stringArray : public KVN_array {
 public:
  explicit KVN_stringArray(int step = kDefaultGrowBy) : KVN_array(step) {}
  /// Copying cannot give a code: a failure leaves the new list empty. See Assign.
  KVN_stringArray(const KVN_stringArray& source);
  KVN_stringArray(KVN_stringArray&& source) noexcept;
  KVN_stringArray& operator=(const KVN_stringArray& source);
  KVN_stringArray& operator=(KVN_stringArray&& source) noexcept;

  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  ~KVN_stringArray() override;

  /// Replaces one slot; a null text clears it. KVN_REFUSED unless 0 <= position < size.
  [[nodiscard]] virtual int SetString(int position, const char* text);
  /// Insert at the end of the used items.
  [[nodiscard]] virtual int Add(const char* text);
  /// KVN_REFUSED unless 0 <= position <= numItems. A null text takes a slot and leaves it unset.
  [[nodiscard]] virtual int Insert(int position, const char* text);

  /// Null when unset; unchecked.
  const char* operator[](int position) const { return items[position]; }
  /// Null when unset or when the position is outside [0, size).
  const char* GetString(int position) const {
    return position >= 0 && position < size ? items[position] : nullptr;
  }

  /// `count` null slots, none in use, growBy back to 10. It is meant that the present size keeps
  /// the texts in their slots (and growBy) and only sets numItems to 0.
  /// KVN_REFUSED below 0; KVN_NO_MEMORY leaves the slots as they were.
  [[nodiscard]] int SetSize(int count);
  /// growBy more null slots.
  [[nodiscard]] int Grow();
  /// Frees one slot and moves the later ones down; numItems loses 1, though never below 0, also
  /// for a position in the unused part. KVN_REFUSED when not ready or outside [0, size).
  [[nodiscard]] int Delete(int position);
  /// Frees every text; size stays.
  void Flush();

  /// Position of the first equal used item, or KVN_REFUSED. Case counts. Null is never found.
  int FindPosition(const char* text) const;
  bool IsInList(const char* text) const { return FindPosition(text) >= 0; }

  /// Same size, counts, step and texts as `source`. KVN_NOT_READY, KVN_NO_MEMORY: unchanged.
  [[nodiscard]] int Assign(const KVN_stringArray& source);
  /// Exchanges all contents without allocation.
  void Swap(KVN_stringArray& other) noexcept;
  /// Slot i receives the old slot order[i]. `order` is a permutation of as many positions as this
  /// list has items, or slots; otherwise KVN_REFUSED and nothing changes.
  [[nodiscard]] int ChangeOrder(const KVN_intArray& order);

 protected:
  /// Position of an equal used item other than `skip`, or KVN_REFUSED.
  int FindPositionExcept(const char* text, int skip) const;

 private:
  int Reserve(int count);
  void ReleaseItems();

  char** items = nullptr;  // owned, as are the texts; slots from `size` to `capacity` are null
  int capacity = 0;        // >= size: spares long lists a move of all pointers at every step
};
