#include "foundation/stringArray.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "foundation/intArray.h"
#include "foundation/resultCodes.h"

namespace {

/// Copies a text into `copy`; a null text gives null.
int Duplicate(const char* text, std::unique_ptr<char[]>& copy) {
  copy.reset();
  if (text == nullptr) return KVN_SUCCESS;
  const std::size_t length = std::strlen(text) + 1;
  copy.reset(new (std::nothrow) char[length]);
  if (copy == nullptr) return KVN_NO_MEMORY;
  std::memcpy(copy.get(), text, length);
  return KVN_SUCCESS;
}

}  // namespace

KVN_stringArray::KVN_stringArray(const KVN_stringArray& source) : KVN_array() {
  // A failure leaves the copy empty, as the header tells.
  (void)Assign(source);
}

KVN_stringArray::KVN_stringArray(KVN_stringArray&& source) noexcept : KVN_array() { Swap(source); }

KVN_stringArray& KVN_stringArray::operator=(const KVN_stringArray& source) {
  if (Assign(source) == KVN_NO_MEMORY) CleanUp(0);
  return *this;
}

KVN_stringArray& KVN_stringArray::operator=(KVN_stringArray&& source) noexcept {
  if (this != &source) {
    KVN_stringArray emptied;
    Swap(source);
    source.Swap(emptied);
  }
  return *this;
}

KVN_stringArray::~KVN_stringArray() { ReleaseItems(); }

void KVN_stringArray::ReleaseItems() {
  for (int i = 0; i < size; i++) delete[] items[i];
  delete[] std::exchange(items, nullptr);
  capacity = 0;
}

void KVN_stringArray::CleanUp(int deep) {
  ReleaseItems();
  KVN_array::CleanUp(deep);
}

int KVN_stringArray::CheckReadiness(int /*deep*/) { return SetReadyByCounts(items != nullptr); }

int KVN_stringArray::Reserve(int count) {
  if (count <= capacity) return KVN_SUCCESS;
  char** block = new (std::nothrow) char*[count];
  if (block == nullptr) return KVN_NO_MEMORY;
  std::copy_n(items, size, block);
  std::fill(block + size, block + count, nullptr);
  delete[] std::exchange(items, block);
  capacity = count;
  return KVN_SUCCESS;
}

int KVN_stringArray::SetSize(int count) {
  if (count < 0) return KVN_REFUSED;
  if (!IsReady()) CleanUp(0);
  if (count == size) {
    numItems = 0;
    return KVN_SUCCESS;
  }
  char** block = nullptr;
  if (count > 0) {
    block = new (std::nothrow) char* [count] {};
    if (block == nullptr) return KVN_NO_MEMORY;
  }
  CleanUp(0);
  items = block;
  size = capacity = count;
  return KVN_SUCCESS;
}

int KVN_stringArray::Grow() {
  if (!IsReady()) return KVN_NOT_READY;
  if (size > std::numeric_limits<int>::max() - growBy) return KVN_NO_MEMORY;
  const int newSize = size + growBy;
  // The step decides the visible size only: moving all pointers at each step would make the time
  // of a long list grow with its square.
  if (newSize > capacity) {
    const int wanted =
        static_cast<int>(std::min<long long>(std::max<long long>(newSize, 2LL * size), 0x7fffffff));
    if (int result = Reserve(size == 0 ? newSize : wanted); result < 0) return result;
  }
  size = newSize;
  return KVN_SUCCESS;
}

int KVN_stringArray::SetString(int position, const char* text) {
  if (!IsReady()) return KVN_NOT_READY;
  if (position < 0 || position >= size) return KVN_REFUSED;
  std::unique_ptr<char[]> copy;
  if (int result = Duplicate(text, copy); result < 0) return result;
  delete[] std::exchange(items[position], copy.release());
  return KVN_SUCCESS;
}

int KVN_stringArray::Add(const char* text) { return Insert(numItems, text); }

int KVN_stringArray::Insert(int position, const char* text) {
  if (!IsReady()) return KVN_NOT_READY;
  if (position < 0 || position > numItems) return KVN_REFUSED;
  std::unique_ptr<char[]> copy;
  if (int result = Duplicate(text, copy); result < 0) return result;
  if (size == numItems) {
    if (int result = Grow(); result < 0) return result;
  }
  delete[] items[numItems];  // a text left over from a use with the same SetSize
  std::copy_backward(items + position, items + numItems, items + numItems + 1);
  items[position] = copy.release();
  numItems++;
  return KVN_SUCCESS;
}

int KVN_stringArray::Delete(int position) {
  if (!IsReady() || position < 0 || position >= size) return KVN_REFUSED;
  delete[] items[position];
  std::copy(items + position + 1, items + size, items + position);
  items[size - 1] = nullptr;
  numItems = std::max(numItems - 1, 0);
  return KVN_SUCCESS;
}

void KVN_stringArray::Flush() {
  for (int i = 0; i < size; i++) delete[] std::exchange(items[i], nullptr);
  numItems = 0;
}

int KVN_stringArray::FindPosition(const char* text) const { return FindPositionExcept(text, -1); }

int KVN_stringArray::FindPositionExcept(const char* text, int skip) const {
  if (text == nullptr || !IsReady()) return KVN_REFUSED;
  for (int i = 0; i < numItems; i++) {
    if (i != skip && items[i] != nullptr && std::strcmp(items[i], text) == 0) return i;
  }
  return KVN_REFUSED;
}

int KVN_stringArray::Assign(const KVN_stringArray& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  KVN_stringArray copy;
  if (int result = copy.SetSize(source.size); result < 0) return result;
  for (int i = 0; i < source.size; i++) {
    if (int result = copy.KVN_stringArray::SetString(i, source.items[i]); result < 0) return result;
  }
  copy.numItems = source.numItems;
  copy.growBy = source.growBy;
  copy.SetConsistent(source.IsConsistent());
  Swap(copy);
  return CheckReadiness(0);
}

void KVN_stringArray::Swap(KVN_stringArray& other) noexcept {
  std::swap(static_cast<KVN_object&>(*this), static_cast<KVN_object&>(other));
  std::swap(size, other.size);
  std::swap(numItems, other.numItems);
  std::swap(growBy, other.growBy);
  std::swap(items, other.items);
  std::swap(capacity, other.capacity);
}

int KVN_stringArray::ChangeOrder(const KVN_intArray& order) {
  const int count = UsedCount(order);
  if (count != numItems && count != size) return KVN_REFUSED;
  if (int result = CheckPermutation(order, count); result < 0) return result;
  if (count == 0) return KVN_SUCCESS;
  std::unique_ptr<char*[]> old(new (std::nothrow) char*[count]);
  if (old == nullptr) return KVN_NO_MEMORY;
  std::copy_n(items, count, old.get());
  for (int i = 0; i < count; i++) items[i] = old[order[i]];
  return KVN_SUCCESS;
}
