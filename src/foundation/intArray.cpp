#include "foundation/intArray.h"

#include <algorithm>

#include "foundation/resultCodes.h"

int KVN_intArray::FindPosition(int value) const {
  const int* found = std::find(begin(), end(), value);
  return found == end() ? KVN_REFUSED : static_cast<int>(found - begin());
}

int KVN_intArray::AddExclusive(int value) { return IsInList(value) ? KVN_REFUSED : Add(value); }

int KVN_intArray::DeleteByContent(int value) {
  const int position = FindPosition(value);
  return position < 0 ? KVN_REFUSED : Delete(position);
}

int CheckPermutation(const KVN_valueArray<int, 8>& order, int count) {
  if (UsedCount(order) != count) return KVN_REFUSED;
  KVN_intArray seen;
  if (int result = seen.SetSize(count); result < 0) return result;
  for (int i = 0; i < count; i++) {
    const int position = order[i];
    if (position < 0 || position >= count || seen[position] != 0) return KVN_REFUSED;
    seen[position] = 1;
  }
  return KVN_SUCCESS;
}
