#include "bridge/bridgeState.h"

#include <cstdio>

BridgeState thePlainBridge;
BridgeState theWideBridge;

namespace {

void WriteLine(std::FILE* file, const char* text) {
  std::fprintf(file, "%s\n", text);
  std::fflush(file);
}

}  // namespace

void WriteHostLine(const char* text) { WriteLine(stdout, text); }

void WriteHostError(const char* text) { WriteLine(stderr, text); }
