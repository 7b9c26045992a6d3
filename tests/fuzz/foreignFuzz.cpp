#include "tests/fuzz/foreignFuzz.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
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
std::string ScratchName() {
  static const std::string folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return folder + "/kvnForeignFuzz" + std::to_string(getpid());
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

void RunOnce(const std::string& name, int format) {
  KVN_network network;
  theSink.last.clear();
  const int result = network.ReadFile(name.c_str(), format);
  if (result > 0) std::abort();
  if (result < 0 && theSink.last.empty()) Complain("refused without a message", "", "");
  const int written = network.WriteFile(name.c_str(), format);
  if (written == KVN_REFUSED) return;
  if (written != 0) std::abort();
  const std::string first = Load(name);
  // Numbers that are infinite or no numbers can be written and not read.
  if (first.find("inf") != std::string::npos || first.find("nan") != std::string::npos) return;
  // The one statement that is written and never read.
  if (first.find("RESULTINGSTATES") != std::string::npos) return;

  KVN_network again;
  theSink.last.clear();
  if (again.ReadFile(name.c_str(), format) != 0) Complain("not read back", first, "");
  if (again.WriteFile(name.c_str(), format) != 0) std::abort();
  const std::string second = Load(name);
  if (first != second) Complain("written differently", first, second);
}

}  // namespace

int FuzzForeignFormat(const std::uint8_t* data, std::size_t size, int format) {
  static const std::string name = ScratchName();
  KVN_errorLog().SetRedirect(&theSink, /*own=*/false);
  theSink.ranOut = false;
  Save(name, data, size);
  RunOnce(name, format);
  std::remove(name.c_str());
  KVN_errorLog().SetRedirect(nullptr, /*own=*/false);
  return 0;
}
