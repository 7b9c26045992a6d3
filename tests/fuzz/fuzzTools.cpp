#include "tests/fuzz/fuzzTools.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "foundation/resultCodes.h"
#include "network/network.h"

MessageSink::MessageSink() { KVN_errorLog().SetRedirect(this, /*own=*/false); }

MessageSink::~MessageSink() { KVN_errorLog().SetRedirect(nullptr, /*own=*/false); }

void MessageSink::Log(int code, const char* text) {
  if (code == KVN_NO_MEMORY) hasMemoryRunOut = true;
  last = text;
}

std::string ScratchName(const char* suffix) {
  static const std::string folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return folder + "/kvnFuzz" + std::to_string(getpid()) + suffix;
}

void SaveBytes(const std::string& name, const std::uint8_t* data, std::size_t size) {
  std::FILE* file = std::fopen(name.c_str(), "wb");
  if (file == nullptr) std::abort();
  // An empty input may come without an address, which fwrite does not take.
  if (size > 0 && std::fwrite(data, 1, size, file) != size) std::abort();
  if (std::fclose(file) != 0) std::abort();
}

std::string LoadBytes(const std::string& name) {
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

void Complain(const MessageSink& log, const char* what, const std::string& first,
              const std::string& second) {
  if (log.hasMemoryRunOut) return;
  std::fprintf(stderr, "%s\nlast message: %s\n--- first\n%s\n--- second\n%s\n", what,
               log.last.c_str(), first.c_str(), second.c_str());
  std::abort();
}

std::string Rewritten(MessageSink& log, const std::string& name, int format,
                      const std::string& before) {
  KVN_network network;
  log.last.clear();
  if (network.ReadFile(name.c_str(), format) != 0) {
    Complain(log, "not read back", before, "");
    return "";
  }
  if (network.WriteFile(name.c_str(), format) != 0) std::abort();
  return LoadBytes(name);
}
