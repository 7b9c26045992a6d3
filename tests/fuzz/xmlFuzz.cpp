// The reader of the native XML format on arbitrary bytes. A file is refused with a message or makes
// a network that can be written; what was written can be read, and from the second time on writing
// gives the same bytes.
//
// Two things don't survive the first time: identifiers that begin with '@' may hold line breaks,
// which come back as blanks, and the largest doubles, which sixteen digits round up to infinity.

#include <cstdio>
#include <cstdlib>

#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "tests/fuzz/fuzzTools.h"

namespace {

void RunOnce(MessageSink& log, const std::string& name) {
  KVN_network network;
  const int result = network.ReadFile(name.c_str(), KVN_FORMAT_XKVN);
  if (result != 0 && result != KVN_FILE_IO) std::abort();
  if (result != 0 && log.last.empty()) Complain(log, "refused without a message", "", "");
  // Whatever a failed read has left can be written too, but needn't be a whole network.
  if (network.WriteFile(name.c_str(), KVN_FORMAT_XKVN) != 0) std::abort();
  if (result != 0) return;
  const std::string first = LoadBytes(name);
  if (first.find("\"@") != std::string::npos) return;
  const std::string second = Rewritten(log, name, KVN_FORMAT_XKVN, first);
  if (log.hasMemoryRunOut) return;
  const std::string third = Rewritten(log, name, KVN_FORMAT_XKVN, second);
  if (second != third) Complain(log, "written differently", second, third);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string name = ScratchName(".xkvn");
  MessageSink log;
  SaveBytes(name, data, size);
  RunOnce(log, name);
  std::remove(name.c_str());
  return 0;
}
