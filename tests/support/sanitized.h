#pragma once

/// How many random cases or nodes a test takes: `count`, or a fifth of it where the sanitizers look
/// at every access. They find their faults in the fifth too, and the optimised build takes all.
template <typename Count>
constexpr Count FewerIfSanitized(Count count) {
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
  return count / 5;
#endif
#elif defined(__SANITIZE_ADDRESS__)
  return count / 5;
#endif
  return count;
}
