#include "foundation/array.h"

#include "foundation/resultCodes.h"

void KVN_array::CleanUp(int /*deep*/) {
  size = 0;
  numItems = 0;
  growBy = kDefaultGrowBy;
  CheckReadiness(0);
}

int KVN_array::SetReadyByCounts(bool hasItems) {
  const bool isEmpty = !hasItems && size == 0 && numItems == 0;
  const bool isSound = size > 0 && numItems >= 0 && numItems <= size;
  SetReady((isEmpty || isSound) && growBy > 0);
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}
