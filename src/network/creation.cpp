#include "network/creation.h"

#include <initializer_list>

#include "foundation/resultCodes.h"
#include "network/ownedText.h"

KVN_creation::~KVN_creation() { KVN_creation::CleanUp(0); }

int KVN_creation::SetCreator(const char* text) { return ReplaceText(creator, text); }
int KVN_creation::SetCreated(const char* text) { return ReplaceText(created, text); }
int KVN_creation::SetModified(const char* text) { return ReplaceText(modified, text); }

int KVN_creation::Assign(const KVN_creation& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  if (int result = SetCreator(source.creator); result < 0) return result;
  if (int result = SetCreated(source.created); result < 0) return result;
  if (int result = SetModified(source.modified); result < 0) return result;
  return CheckReadiness(/*deep=*/0);
}

void KVN_creation::CleanUp(int deep) {
  for (char** field : {&creator, &created, &modified}) (void)ReplaceText(*field, nullptr);
  KVN_object::CleanUp(deep);
}
