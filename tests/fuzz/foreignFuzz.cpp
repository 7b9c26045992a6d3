// The reader of one of the formats of other programs, KVN_FUZZED_FORMAT, on arbitrary bytes. A file
// that is refused gets a message. What was read can be written in the same format, or in the native
// XML format where that refuses the kinds of nodes, can be read again without a failure, and then
// gives the same bytes.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "tests/fuzz/fuzzTools.h"

namespace {

/// Whether every number of the text can be read: those that are infinite or no numbers can't.
bool IsReadable(const std::string& text) {
  return text.find("inf") == std::string::npos && text.find("nan") == std::string::npos;
}

/// Whether the text can stand in an XML file, whose writer passes on what it gets: no control
/// characters but those of the layout, and no identifiers behind "@", which hold what XML changes.
bool FitsXml(const std::string& text) {
  return text.find("\"@") == std::string::npos &&
         std::none_of(text.begin(), text.end(), [](char c) {
           return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
         });
}

/// Whether equation nodes stand beside others. A formula may name one of those, which makes no arc,
/// so that the node may come later in the written file than the formula; the reader then refuses
/// it.
bool HasOtherKindsBesideEquations(const KVN_network& network) {
  int equations = 0;
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    if (network.TypeOf(node) == KVN_TYPE_EQUATION) ++equations;
  }
  return equations > 0 && equations < network.GetNumberOfNodes();
}

void RunOnce(MessageSink& log, const std::string& name, int format) {
  KVN_network network;
  const int result = network.ReadFile(name.c_str(), format);
  if (result > 0) std::abort();
  if (result < 0 && log.last.empty()) Complain(log, "refused without a message", "", "");
  int target = format;
  int written = network.WriteFile(name.c_str(), target);
  if (written == KVN_REFUSED) {
    // The native XML format has words for all that another one reads and can't write.
    target = KVN_FORMAT_XKVN;
    written = network.WriteFile(name.c_str(), target);
  }
  if (written != 0) std::abort();
  const std::string first = LoadBytes(name);
  if (target == KVN_FORMAT_XKVN && !FitsXml(first)) return;
  if (HasOtherKindsBesideEquations(network)) return;
  // The one statement that is written and never read.
  if (!IsReadable(first) || first.find("RESULTINGSTATES") != std::string::npos) return;

  const std::string second = Rewritten(log, name, target, first);
  if (target == format) {
    if (first != second) Complain(log, "written differently", first, second);
    return;
  }
  // Formulas lose digits and parentheses at the first time only.
  const std::string third = Rewritten(log, name, target, second);
  if (IsReadable(second) && second != third) Complain(log, "written differently", second, third);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string name = ScratchName("");
  MessageSink log;
  SaveBytes(name, data, size);
  RunOnce(log, name, KVN_FUZZED_FORMAT);
  std::remove(name.c_str());
  return 0;
}
