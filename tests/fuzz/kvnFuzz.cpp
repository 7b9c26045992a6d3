// The reader of the native text format on arbitrary bytes. Whatever it makes of them, the network
// can be written, what was written can be read, and writing it again gives the same bytes: a file
// that a user saves is never changed by loading and saving it once more. CanBeCarried tells of the
// few networks that the format is known not to carry.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>

#include "definitions/nodeDefinition.h"
#include "network/fileSpeaker.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "tests/fuzz/fuzzTools.h"

namespace {

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string name = ScratchName(".kvn");
  MessageSink log;
  SaveBytes(name, data, size);

  KVN_network network;
  const int result = network.ReadFile(name.c_str(), KVN_FORMAT_KVN);
  if (result > 0) std::abort();
  if (network.WriteFile(name.c_str(), KVN_FORMAT_KVN) != 0) std::abort();
  const std::string first = LoadBytes(name);
  const std::string second = Rewritten(log, name, KVN_FORMAT_KVN, first);
  std::remove(name.c_str());
  if (first != second && CanBeCarried(network, first)) {
    Complain(log, "written differently", first, second);
  }
  return 0;
}
