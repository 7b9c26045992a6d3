#include "foundation/rectangleArray.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "foundation/resultCodes.h"

KVN_rectangleArray::KVN_rectangleArray(const KVN_rectangleArray& source) : KVN_array() {
  // A failure leaves the copy empty, as the header tells.
  (void)Assign(source);
}

KVN_rectangleArray& KVN_rectangleArray::operator=(const KVN_rectangleArray& source) {
  if (Assign(source) == KVN_NO_MEMORY) CleanUp(0);
  return *this;
}

KVN_rectangleArray::~KVN_rectangleArray() { delete[] items; }

void KVN_rectangleArray::CleanUp(int deep) {
  delete[] std::exchange(items, nullptr);
  KVN_array::CleanUp(deep);
}

int KVN_rectangleArray::CheckReadiness(int /*deep*/) { return SetReadyByCounts(items != nullptr); }

KVN_rectangle& KVN_rectangleArray::operator[](int position) {
  return position >= 0 && position < size ? items[position] : spare;
}

const KVN_rectangle& KVN_rectangleArray::operator[](int position) const {
  return position >= 0 && position < size ? items[position] : spare;
}

/// Keeps the first min(size, count) rectangles and the used length that still fits.
int KVN_rectangleArray::Resize(int count) {
  KVN_rectangle* block = nullptr;
  if (count > 0) {
    block = new (std::nothrow) KVN_rectangle[count];
    if (block == nullptr) return KVN_NO_MEMORY;
  }
  std::copy_n(items, std::min(size, count), block);
  delete[] std::exchange(items, block);
  size = count;
  numItems = std::min(numItems, count);
  return KVN_SUCCESS;
}

int KVN_rectangleArray::Add(const KVN_rectangle& rectangle) {
  if (!IsReady()) return KVN_NOT_READY;
  const KVN_rectangle copy = rectangle;  // it may be one of our own, which Resize moves
  if (numItems == size) {
    if (size > std::numeric_limits<int>::max() - growBy) return KVN_NO_MEMORY;
    if (int result = Resize(size + growBy); result < 0) return result;
  }
  items[numItems] = copy.IsReady() ? copy : KVN_rectangle();
  numItems++;
  return KVN_SUCCESS;
}

int KVN_rectangleArray::Set(int position, const KVN_rectangle& rectangle) {
  if (!rectangle.IsReady()) return KVN_NOT_READY;
  if (position < 0 || position >= size) return KVN_REFUSED;
  items[position] = rectangle;
  return KVN_SUCCESS;
}

int KVN_rectangleArray::Delete(int position) {
  if (!IsReady() || position < 0 || position >= size) return KVN_REFUSED;
  std::copy(items + position + 1, items + size, items + position);
  items[size - 1] = KVN_rectangle();
  numItems = std::max(numItems - 1, 0);
  return KVN_SUCCESS;
}

int KVN_rectangleArray::SetSize(int count) {
  if (count < 0) return KVN_REFUSED;
  if (count != size) {
    KVN_rectangleArray fresh;
    if (int result = fresh.Resize(count); result < 0) return result;
    CleanUp(0);
    std::swap(items, fresh.items);
    std::swap(size, fresh.size);
  }
  numItems = 0;
  return KVN_SUCCESS;
}

int KVN_rectangleArray::Assign(const KVN_rectangleArray& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  if (int result = SetSize(source.size); result < 0) return result;
  std::copy_n(source.items, size, items);
  numItems = source.numItems;
  growBy = source.growBy;
  return CheckReadiness(0);
}
