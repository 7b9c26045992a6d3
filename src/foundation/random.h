#pragma once

#include <cstdint>

/// The engine's one kind of random number generator: the linear congruential generator
/// x := x * 214013 + 2531011 (modulo 2^32), whose output is bits 16 to 30 of x. It is small, fast
/// and the same on every machine, and its 15 bits are what the samplers were designed for: a
/// probability is resolved to about 3e-5. Full period of 2^32 draws (Hull and Dobell 1962, Random
/// number generators, SIAM Review 4).
///
/// Value type; a copy goes on with the same stream on its own.
class KVN_random {
 public:
  explicit constexpr KVN_random(std::uint32_t seed) : state(seed) {}

  /// Any seed is good, 0 too: it becomes the state as it stands.
  void Seed(std::uint32_t seed) { state = seed; }
  std::uint32_t GetState() const { return state; }

  /// 0 to kLargest, both included.
  int Next() {
    state = state * 214013u + 2531011u;
    return static_cast<int>((state >> 16) & 0x7fffu);
  }
  /// Next() / 32767.0: from 0.0 to 1.0, and it is meant that both ends can come.
  double Uniform() { return Next() / double{kLargest}; }

  static constexpr int kLargest = 32767;

 private:
  std::uint32_t state;
};

/// The generators of the engine. Each is a stream of its own, so that what one user draws never
/// moves another's results; a caller who wants the same results again seeds the one in question.
/// Nothing is guarded.

/// Of the simple samplers: one for each thread, from state 1, and never seeded by the engine, so
/// that a second update goes on where the first one ended.
KVN_random& KVN_simpleSamplerRandom();
/// Of the adaptive samplers: seeded with NewAdaptiveSeed at the start of each run on a part.
KVN_random& KVN_adaptiveSamplerRandom();
/// Of the distributions in the function library: from state 0, never seeded by the engine.
KVN_random& KVN_functionRandom();
/// Of sampled messages: the draws of outcomes and the draws of normal deviates, both from state 0.
KVN_random& KVN_messageOutcomeRandom();
KVN_random& KVN_messageNormalRandom();

/// All of the above as in a fresh process, for the calling thread. For tests.
void ResetGenerators();

/// What the adaptive samplers take for a seed.
struct KVN_clockReading {
  std::int64_t seconds;       // since the epoch
  std::int64_t milliseconds;  // of a clock that never goes back
};

/// The clock, unless SetAdaptiveSeed has fixed the seed: seconds and milliseconds, the low 15 bits
/// of each, one XORed with the other.
std::uint32_t NewAdaptiveSeed();
/// Every later run on a part starts from this seed, until UseClockForAdaptiveSeed.
void SetAdaptiveSeed(std::uint32_t seed);
void UseClockForAdaptiveSeed();
/// Replaces the clock; null brings the real one back.
void SetClockForTests(KVN_clockReading (*clock)());
