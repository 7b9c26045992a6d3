#include "bridge/diagnosisType.h"

#include <cstdio>

#include "bridge/bridgeState.h"
#include "network/extraDefinition.h"

int CheckedDiagnosisType(int type, const char* what) {
  if (type >= KVN_DIAGNOSIS_TARGET && type <= KVN_DIAGNOSIS_AUXILIARY) return type;
  char line[128];
  std::snprintf(line, sizeof line, "C++ warning: encountered unknown %s %d", what, type);
  WriteHostError(line);
  WriteHostError("C++ defaulting to type 'auxiliary'.");
  return KVN_DIAGNOSIS_AUXILIARY;
}
