#include "network/ownedText.h"

#include <cstring>
#include <new>
#include <utility>

#include "foundation/resultCodes.h"

char* CopyOfText(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = std::strlen(text) + 1;
  char* copy = new (std::nothrow) char[length];
  if (copy != nullptr) std::memcpy(copy, text, length);
  return copy;
}

int ReplaceText(char*& field, const char* text) {
  char* copy = CopyOfText(text);
  if (copy == nullptr && text != nullptr) return KVN_NO_MEMORY;
  delete[] std::exchange(field, copy);
  return KVN_SUCCESS;
}
