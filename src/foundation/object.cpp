#include "foundation/object.h"

#include "foundation/resultCodes.h"

void KVN_object::CleanUp(int /*deep*/) { SetReady(true); }

int KVN_object::CheckReadiness(int /*deep*/) {
  SetReady(true);
  return KVN_SUCCESS;
}

int KVN_object::CheckConsistency(int /*deep*/) {
  SetConsistent(true);
  return KVN_SUCCESS;
}
