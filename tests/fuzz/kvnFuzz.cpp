// The reader of the native text format on arbitrary bytes. Whatever it makes of them, the network
// can be written, what was written can be read, and writing it again gives the same bytes: a file
// that a user saves is never changed by loading and saving it once more. CanBeCarried tells of the
// few networks that the format is known not to carry.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"

namespace {

/// Takes the messages away: the log of the process would grow with every input.
class MessageSink : public KVN_errorTarget {
 public:
  void Log(int code, const char* text) override {
    if (code == KVN_NO_MEMORY) ranOut = true;
    last = text;
  }
  bool ranOut = false;
  std::string last;
};

MessageSink theSink;  // outlives every use; the log does not own it

/// Files in memory where the system has them: the disk would set the pace.
std::string ScratchName(const char* suffix) {
  static const std::string folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return folder + "/kvnFuzz" + std::to_string(getpid()) + suffix;
}

void Save(const std::string& name, const std::uint8_t* data, std::size_t size) {
  std::FILE* file = std::fopen(name.c_str(), "wb");
  if (file == nullptr) std::abort();
  // An empty input may come without an address, which fwrite does not take.
  if (size > 0 && std::fwrite(data, 1, size, file) != size) std::abort();
  if (std::fclose(file) != 0) std::abort();
}

std::string Load(const std::string& name) {
  std::FILE* file = std::fopen(name.c_str(), "rb");
  if (file == nullptr) std::abort();
  std::string text;
  char piece[4096];
  while (const std::size_t count = std::fread(piece, 1, sizeof piece, file)) {
    text.append(piece, count);
  }
  std::fclose(file);
  return text;
}

/// Whether the text has the word as a list element, with or without a sign.
bool HasElement(const std::string& text, const char* word) {
  const std::size_t length = std::strlen(word);
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) {
    if (at == 0 || std::strchr(" (-\"", text[at - 1]) == nullptr) continue;
    if (std::strchr(",);\"", text[at + length]) != nullptr) return true;
  }
  return false;
}

/// Whether the format has statements for the numbers and outcomes of such a node.
bool IsKindCarried(int type) {
  switch (type) {
    case KVN_TYPE_NOISY_ADDER:
    case KVN_TYPE_DEMORGAN:
    case KVN_TYPE_DCHILD_HPARENT:
    case KVN_TYPE_DISTRIBUTION:
    case KVN_TYPE_H_EQUATION:
      return false;
    default:
      return true;
  }
}

/// Nodes and submodels share one set of identifiers, but a submodel, and with it the network, may
/// be given one that is taken: then the nodes of that name cannot be read. Neither can numbers that
/// are infinite or no numbers.
bool CanBeCarried(KVN_network& network, const std::string& written) {
  std::set<std::string> ids;
  KVN_submodelHandler& submodels = network.Submodels();
  for (int handle = submodels.GetFirst(); handle >= 0; handle = submodels.GetNext(handle)) {
    const char* id = submodels.GetSubmodel(handle)->Header().GetId();
    if (id == nullptr || !ids.insert(id).second) return false;
  }
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    const char* id = network.GetNode(node)->GetId();
    if (id == nullptr || !ids.insert(id).second) return false;
    if (!IsKindCarried(network.TypeOf(node))) return false;
  }
  return !HasElement(written, "inf") && !HasElement(written, "nan");
}

void Complain(const char* what, const std::string& first, const std::string& second) {
  std::fprintf(stderr, "%s\nlast message: %s\n--- first\n%s\n--- second\n%s\n", what,
               theSink.last.c_str(), first.c_str(), second.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string input = ScratchName(".kvn");
  static const std::string output = ScratchName("w.kvn");
  KVN_errorLog().SetRedirect(&theSink, /*own=*/false);
  theSink.ranOut = false;
  Save(input, data, size);

  KVN_network network;
  const int result = network.ReadFile(input.c_str(), KVN_FORMAT_KVN);
  std::remove(input.c_str());
  if (result > 0) std::abort();
  if (network.WriteFile(output.c_str(), KVN_FORMAT_KVN) != 0) std::abort();
  const std::string first = Load(output);

  KVN_network again;
  theSink.last.clear();
  if (again.ReadFile(output.c_str(), KVN_FORMAT_KVN) != 0) Complain("not read back", first, "");
  if (again.WriteFile(output.c_str(), KVN_FORMAT_KVN) != 0) std::abort();
  const std::string second = Load(output);
  std::remove(output.c_str());
  // Where the memory ends depends on what else was allocated, so nothing is promised then.
  if (first != second && !theSink.ranOut && CanBeCarried(network, first)) {
    Complain("written differently", first, second);
  }
  KVN_errorLog().SetRedirect(nullptr, /*own=*/false);
  return 0;
}
