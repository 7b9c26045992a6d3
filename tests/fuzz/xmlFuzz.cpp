// The reader of the native XML format on arbitrary bytes. A file is refused with a message or makes
// a network that can be written; what was written can be read, and from the second time on writing
// gives the same bytes.
//
// Two things don't survive the first time: identifiers that begin with '@' may hold line breaks,
// which come back as blanks, and the largest doubles, which sixteen digits round up to infinity.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"

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
  return folder + "/kvnXmlFuzz" + std::to_string(getpid()) + suffix;
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

void Complain(const char* what, const std::string& first, const std::string& second) {
  if (theSink.ranOut) return;  // where the memory ends depends on what else was allocated
  std::fprintf(stderr, "%s\nlast message: %s\n--- first\n%s\n--- second\n%s\n", what,
               theSink.last.c_str(), first.c_str(), second.c_str());
  std::abort();
}

/// Reads a file and writes what it holds.
std::string Rewritten(const std::string& name, const std::string& before) {
  KVN_network network;
  if (network.ReadFile(name.c_str(), KVN_FORMAT_XKVN) != 0) {
    Complain("not read back", before, "");
    return "";
  }
  if (network.WriteFile(name.c_str(), KVN_FORMAT_XKVN) != 0) std::abort();
  return Load(name);
}

void RunOnce(const std::string& name) {
  KVN_network network;
  theSink.last.clear();
  const int result = network.ReadFile(name.c_str(), KVN_FORMAT_XKVN);
  if (result != 0 && result != KVN_FILE_IO) std::abort();
  if (result != 0 && theSink.last.empty()) Complain("refused without a message", "", "");
  // Whatever a failed read has left can be written too, but needn't be a whole network.
  if (network.WriteFile(name.c_str(), KVN_FORMAT_XKVN) != 0) std::abort();
  if (result != 0) return;
  const std::string first = Load(name);
  if (first.find("\"@") != std::string::npos) return;
  const std::string second = Rewritten(name, first);
  if (theSink.ranOut) return;
  const std::string third = Rewritten(name, second);
  if (second != third) Complain("written differently", second, third);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::string name = ScratchName(".xkvn");
  KVN_errorLog().SetRedirect(&theSink, /*own=*/false);
  theSink.ranOut = false;
  Save(name, data, size);
  RunOnce(name);
  std::remove(name.c_str());
  KVN_errorLog().SetRedirect(nullptr, /*own=*/false);
  return 0;
}
