#include "foundation/random.h"

#include <chrono>

namespace {

constexpr std::uint32_t kSimpleStart = 1;  // a C runtime that was never seeded starts here
constexpr std::uint32_t kLibraryStart = 0;
constexpr std::uint32_t kLow15Bits = 0x7fff;

thread_local KVN_random theSimple(kSimpleStart);
KVN_random theAdaptive(kSimpleStart);
KVN_random theFunction(kLibraryStart);
KVN_random theMessageOutcome(kLibraryStart);
KVN_random theMessageNormal(kLibraryStart);

KVN_clockReading ReadClock() {
  using std::chrono::duration_cast;
  return {
      duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
          .count(),
      duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
          .count()};
}

KVN_clockReading (*theClock)() = ReadClock;
bool theSeedIsFixed = false;
std::uint32_t theFixedSeed = 0;

}  // namespace

KVN_random& KVN_simpleSamplerRandom() { return theSimple; }
KVN_random& KVN_adaptiveSamplerRandom() { return theAdaptive; }
KVN_random& KVN_functionRandom() { return theFunction; }
KVN_random& KVN_messageOutcomeRandom() { return theMessageOutcome; }
KVN_random& KVN_messageNormalRandom() { return theMessageNormal; }

void ResetGenerators() {
  theSimple.Seed(kSimpleStart);
  theAdaptive.Seed(kSimpleStart);
  theFunction.Seed(kLibraryStart);
  theMessageOutcome.Seed(kLibraryStart);
  theMessageNormal.Seed(kLibraryStart);
  theSeedIsFixed = false;
}

std::uint32_t NewAdaptiveSeed() {
  if (theSeedIsFixed) return theFixedSeed;
  const KVN_clockReading now = theClock();
  return (static_cast<std::uint32_t>(now.seconds) & kLow15Bits) ^
         (static_cast<std::uint32_t>(now.milliseconds) & kLow15Bits);
}

void SetAdaptiveSeed(std::uint32_t seed) {
  theSeedIsFixed = true;
  theFixedSeed = seed;
}

void UseClockForAdaptiveSeed() { theSeedIsFixed = false; }

void SetClockForTests(KVN_clockReading (*clock)()) {
  theClock = clock == nullptr ? ReadClock : clock;
}
