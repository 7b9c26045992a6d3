#include "foundation/doublePool.h"

#include <new>
#include <utility>

#include "foundation/resultCodes.h"

namespace {

constinit KVN_doublePool thePool;

constexpr int kLargestFit = 0xFFFFFFF;  // blocks of this size and above only serve an exact request

}  // namespace

KVN_doublePool& KVN_theDoublePool() { return thePool; }

int KVN_doublePool::Configure(int newCapacity) {
  if (newCapacity < 0) return KVN_REFUSED;
  for (int i = first; i < count; i++) delete[] entries[i].block;
  delete[] std::exchange(entries, nullptr);
  capacity = first = count = 0;
  if (newCapacity == 0) return KVN_SUCCESS;
  entries = new (std::nothrow) Entry[newCapacity];
  if (entries == nullptr) return KVN_NO_MEMORY;
  capacity = newCapacity;
  return KVN_SUCCESS;
}

int KVN_doublePool::FindBlock(int wanted) const {
  int best = KVN_REFUSED;
  int bestSize = kLargestFit;
  for (int i = first; i < count; i++) {
    if (entries[i].block == nullptr) continue;
    if (entries[i].size == wanted) return i;
    if (entries[i].size > wanted && entries[i].size < bestSize) {
      best = i;
      bestSize = entries[i].size;
    }
  }
  return best;
}

double* KVN_doublePool::Obtain(int wanted) {
  const int found = entries == nullptr ? KVN_REFUSED : FindBlock(wanted);
  if (found < 0) return new (std::nothrow) double[wanted];
  if (found == first) first++;
  return std::exchange(entries[found].block, nullptr);
}

void KVN_doublePool::Return(int size, double* block) {
  if (block == nullptr) return;
  if (entries != nullptr && count < capacity) {
    entries[count++] = {size, block};
  } else {
    delete[] block;
  }
}
