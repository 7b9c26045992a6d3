#include "network/fileSpeaker.h"
#include "tests/fuzz/foreignFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return FuzzForeignFormat(data, size, KVN_FORMAT_NETICA);
}
