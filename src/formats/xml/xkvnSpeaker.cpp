#include "formats/xml/xkvnSpeaker.h"

#include "formats/xml/networkLoader.h"
#include "formats/xml/networkSaver.h"
#include "foundation/resultCodes.h"

int KVN_xkvnSpeaker::ReadFile(const char* fileName) {
  return LoadXmlNetwork(fileName, *network, loadOptions) ? KVN_SUCCESS : KVN_FILE_IO;
}

int KVN_xkvnSpeaker::WriteFile(const char* fileName) {
  return SaveXmlNetwork(fileName, *network, loadOptions) ? KVN_SUCCESS : KVN_FILE_IO;
}
