#include "foundation/identifier.h"

#include <algorithm>
#include <cctype>

// The cast keeps bytes above 127 out of undefined behaviour.
bool IsIdentifierStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

bool IsIdentifierCharacter(char c) {
  return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool IsLegalHeaderId(const char* id) {
  if (id == nullptr || *id == '\0') return false;
  if (*id == '@') return true;
  if (!IsIdentifierStart(*id)) return false;
  for (const char* c = id; *c != '\0'; c++) {
    if (!IsIdentifierCharacter(*c)) return false;
  }
  return true;
}

void MakeLegalHeaderId(std::string& id) {
  if (IsLegalHeaderId(id.c_str())) return;
  if (id.empty()) id = "x";
  if (!IsIdentifierStart(id[0])) id[0] = 'x';
  std::replace_if(
      id.begin(), id.end(), [](char c) { return !IsIdentifierCharacter(c); }, '_');
}
