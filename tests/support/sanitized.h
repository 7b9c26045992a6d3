#pragma once

/// Whether the sanitizers look at every access of this build.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
constexpr bool kIsSanitized = __has_feature(address_sanitizer);
#else
constexpr bool kIsSanitized = false;
#endif

/// How many random cases or nodes a test takes: `count`, or a fifth of it under the sanitizers.
/// They find their faults in the fifth too, and the optimised build takes all.
template <typename Count>
constexpr Count FewerIfSanitized(Count count) {
  return kIsSanitized ? count / 5 : count;
}
