#include "foundation/valueArray.h"

#include <algorithm>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "foundation/doublePool.h"
#include "foundation/intArray.h"
#include "foundation/resultCodes.h"

template <typename T, int kInline>
T* KVN_valueArray<T, kInline>::ObtainBlock(int count) {
  if constexpr (std::is_same_v<T, double>) {
    return KVN_theDoublePool().Obtain(count);
  } else {
    return new (std::nothrow) T[count];
  }
}

template <typename T, int kInline>
void KVN_valueArray<T, kInline>::ReturnBlock(int count, T* block) {
  if constexpr (std::is_same_v<T, double>) {
    KVN_theDoublePool().Return(count, block);
  } else {
    delete[] block;
  }
}

template <typename T, int kInline>
KVN_valueArray<T, kInline>::KVN_valueArray(const KVN_valueArray& source) {
  // A failure leaves the copy empty, as the header tells.
  (void)Assign(source);
}

template <typename T, int kInline>
KVN_valueArray<T, kInline>::KVN_valueArray(KVN_valueArray&& source) noexcept {
  Swap(source);
}

template <typename T, int kInline>
KVN_valueArray<T, kInline>& KVN_valueArray<T, kInline>::operator=(const KVN_valueArray& source) {
  if (Assign(source) < 0) CleanUp();
  return *this;
}

template <typename T, int kInline>
KVN_valueArray<T, kInline>& KVN_valueArray<T, kInline>::operator=(
    KVN_valueArray&& source) noexcept {
  if (this != &source) {
    CleanUp();
    Swap(source);
  }
  return *this;
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::Insert(int position, T value) {
  if (position < 0 || position > numItems) return KVN_REFUSED;
  if (numItems == size) {
    if (int result = Grow(); result < 0) return result;
  }
  std::copy_backward(items + position, items + numItems, items + numItems + 1);
  items[position] = value;
  numItems++;
  return KVN_SUCCESS;
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::Delete(int position) {
  if (position < 0 || position >= size) return KVN_REFUSED;
  std::copy(items + position + 1, items + size, items + position);
  numItems = std::max(numItems - 1, 0);
  return KVN_SUCCESS;
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::Resize(int count, bool zeroFill) {
  if (count < 0) return KVN_REFUSED;
  if (count != size) {
    T* block = count <= kInline ? inlineItems : ObtainBlock(count);
    if (block == nullptr) return KVN_NO_MEMORY;
    ReleaseBlock();
    items = block;
    size = count;
    if (zeroFill || IsInline()) std::fill_n(items, IsInline() ? kInline : size, T{});
  }
  numItems = 0;
  return KVN_SUCCESS;
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::SetSize(int count) {
  return Resize(count, /*zeroFill=*/true);
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::SetSizeUnwritten(int count) {
  return Resize(count, /*zeroFill=*/false);
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::SetSizeFlush(int count) {
  if (count < 0) return KVN_REFUSED;
  if (count > size) return Resize(count, /*zeroFill=*/true);
  numItems = 0;
  return KVN_SUCCESS;
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::Grow() {
  if (size > std::numeric_limits<int>::max() / 2) return KVN_NO_MEMORY;
  const int newSize = size == 0 ? kInline : 2 * size;
  if (newSize <= kInline) {  // slots beyond `size` of the inline storage may hold old numbers
    std::fill(inlineItems + size, inlineItems + newSize, T{});
    size = newSize;
    return KVN_SUCCESS;
  }
  T* block = ObtainBlock(newSize);
  if (block == nullptr) return KVN_NO_MEMORY;
  std::copy_n(items, size, block);
  std::fill(block + size, block + newSize, T{});
  ReleaseBlock();
  items = block;
  size = newSize;
  return KVN_SUCCESS;
}

template <typename T, int kInline>
void KVN_valueArray<T, kInline>::CleanUp() {
  ReleaseBlock();
  items = inlineItems;
  size = 0;
  numItems = 0;
}

template <typename T, int kInline>
void KVN_valueArray<T, kInline>::FillWith(T value) {
  std::fill_n(items, size, value);
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::Assign(const KVN_valueArray& source) {
  if (this == &source) return KVN_SUCCESS;
  if (int result = SetSizeUnwritten(source.size); result < 0) return result;
  std::copy_n(source.items, size, items);
  numItems = source.numItems;
  return KVN_SUCCESS;
}

template <typename T, int kInline>
void KVN_valueArray<T, kInline>::CopyItems(const KVN_valueArray& source) {
  if (this != &source) std::copy_n(source.items, std::min(size, source.size), items);
}

template <typename T, int kInline>
void KVN_valueArray<T, kInline>::Swap(KVN_valueArray& other) noexcept {
  if (this == &other) return;
  const bool wasInline = IsInline();
  const bool otherWasInline = other.IsInline();
  if (wasInline || otherWasInline) std::swap(inlineItems, other.inlineItems);
  std::swap(items, other.items);
  // A pointer that came from the other side's inline storage is aimed at the own one.
  if (otherWasInline) items = inlineItems;
  if (wasInline) other.items = other.inlineItems;
  std::swap(size, other.size);
  std::swap(numItems, other.numItems);
}

template <typename T, int kInline>
int KVN_valueArray<T, kInline>::ChangeOrder(const KVN_valueArray<int, 8>& order) {
  const int count = UsedCount(order);
  if (count != numItems && count != size) return KVN_REFUSED;
  if (int result = CheckPermutation(order, count); result < 0) return result;
  KVN_valueArray old;
  if (int result = old.Assign(*this); result < 0) return result;
  for (int i = 0; i < count; i++) items[i] = old.items[order[i]];
  return KVN_SUCCESS;
}

template class KVN_valueArray<int, 8>;
template class KVN_valueArray<double, 4>;
