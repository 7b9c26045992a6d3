// Reading and writing: which format, and what happens to the network around it.

#include <cstring>
#include <memory>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/caseList.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "network/submodelHandler.h"
#include "network/temporalEngine.h"

namespace {

constexpr int kDefaultSamples = 1000;
constexpr int kDefaultDiscSamples = 10000;

struct Extension {
  const char* text;
  int format;
};
constexpr Extension kExtensions[] = {
    {"xkvn", KVN_FORMAT_XKVN},  {"qkvn", KVN_FORMAT_XKVN},     {"erg", KVN_FORMAT_ERGO},
    {"dne", KVN_FORMAT_NETICA}, {"dsc", KVN_FORMAT_MICROSOFT}, {"kvn", KVN_FORMAT_KVN},
    {"net", KVN_FORMAT_HUGIN},  {"dxp", KVN_FORMAT_KI},        {"xml03", KVN_FORMAT_XMLBIF},
};

/// Of ASCII letters only, whatever the process's locale says.
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualWithoutCase(const char* a, const char* b) {
  for (; *a != '\0' && Lower(*a) == Lower(*b); a++) b++;
  return *a == '\0' && *b == '\0';
}

/// Puts `changeMask` and `loadFlags` back as they belong after a read, whatever its result.
class LoadScope {
 public:
  LoadScope(int& maskField, int& flagField, int flags)
      : mask(maskField), loadFlags(flagField), savedMask(maskField) {
    mask = 0;
    loadFlags = flags;
  }
  LoadScope(const LoadScope&) = delete;
  LoadScope& operator=(const LoadScope&) = delete;
  ~LoadScope() {
    mask = savedMask;
    loadFlags = 0;
  }

 private:
  int& mask;
  int& loadFlags;
  int savedMask;
};

}  // namespace

int DetectFileFormat(const char* fileName) {
  const char* dot = fileName != nullptr ? std::strrchr(fileName, '.') : nullptr;
  if (dot == nullptr) return KVN_REFUSED;
  for (const Extension& row : kExtensions) {
    if (EqualWithoutCase(dot + 1, row.text)) return row.format;
  }
  return KVN_REFUSED;
}

KVN_fileSpeaker* CreateSpeaker(const char* fileName, int& format, KVN_network& network) {
  if (format == KVN_FORMAT_AUTO) format = DetectFileFormat(fileName);
  for (const KVN_formatRow* row = theFileFormats; row->code >= 0; row++) {
    if (row->code == format) return row->make(network);
  }
  LogError(KVN_REFUSED, "Unknown File Format");
  return nullptr;
}

/// What a file may set goes back to its default. Texts and algorithm codes stay: a host that reads
/// into a network that it has prepared keeps its settings.
void KVN_network::ResetForReading() {
  (void)submodels->Clear();
  DestroyNodes();
  numSamples = kDefaultSamples;
  discSamples = kDefaultDiscSamples;
  temporal.reset();
  cases.reset();
}

int KVN_network::ReadFile(const char* fileName, int format, std::intptr_t options) {
  std::unique_ptr<KVN_fileSpeaker> speaker(CreateSpeaker(fileName, format, *this));
  if (speaker == nullptr) return KVN_REFUSED;
  if (submodels == nullptr) return KVN_NO_MEMORY;
  if (options != 0) speaker->SetOptions(options);
  ResetForReading();
  if (!submodels->IsReady()) return KVN_NO_MEMORY;  // it has no root, which every reader needs
  int flags = KVN_LOAD_RUNNING;
  if (speaker->SkipsIdentifierCheck()) flags |= KVN_LOAD_REPEATED_IDS;
  if (speaker->SkipsCycleCheck()) flags |= KVN_LOAD_ANY_ARC_ORDER;
  {
    const LoadScope loading(changeMask, loadFlags, flags);
    const int result = speaker->ReadFile(fileName);
    speaker.reset();
    if (result != 0) return result;
  }
  // Nodes that the file left half made go; what is inconsistent is only told.
  (void)CheckReadiness(/*deep=*/1);
  (void)CheckConsistency(/*deep=*/1);
  return KVN_SUCCESS;
}

int KVN_network::WriteFile(const char* fileName, int format, std::intptr_t options) {
  // Only the argument is looked at (intended): a name that ends in "dxp" reaches the KI writer.
  if (format == KVN_FORMAT_KI) {
    return LogError(KVN_REFUSED, "Writing to KI file format not supported.");
  }
  const std::unique_ptr<KVN_fileSpeaker> speaker(CreateSpeaker(fileName, format, *this));
  if (speaker == nullptr) return KVN_REFUSED;
  if (submodels == nullptr || !submodels->IsReady()) return KVN_NOT_READY;
  if (options != 0) speaker->SetOptions(options);
  return speaker->WriteFile(fileName);
}
