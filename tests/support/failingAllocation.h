#pragma once

#include <gtest/gtest.h>

/// Makes one `new (std::nothrow)` of the process fail: the one after `succeeding` more have
/// succeeded. Lasts for the life of the object; one at a time. The test program must be built with
/// failingAllocation.cpp, which replaces the allocation functions.
class FailingAllocation {
 public:
  explicit FailingAllocation(int succeeding);
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;
  ~FailingAllocation();

  /// True once the allocation has failed.
  bool HasFailed() const;
};

/// The result of `operation` with the allocation after `succeeding` more failing, for a test whose
/// checks allocate as well; `failed` tells whether it came to that.
template <typename Operation>
int RunFailing(int succeeding, bool& failed, Operation operation) {
  const FailingAllocation failing(succeeding);
  const int result = operation();
  failed = failing.HasFailed();
  return result;
}

/// Calls `attempt(n)` for n = 0, 1, 2, ... with the n-th allocation failing, until one call gets
/// through without a failure; that last call is part of the test. `attempt` makes its own objects,
/// does the operation while a FailingAllocation(n) lives, checks what is left, and returns
/// HasFailed(). Returns the number of failures seen, so that a test can expect there were some.
template <typename Attempt>
int FailEachAllocation(Attempt attempt) {
  constexpr int kLimit = 10000;
  int failures = 0;
  while (failures < kLimit && attempt(failures)) failures++;
  EXPECT_LT(failures, kLimit) << "the operation never succeeds";
  return failures;
}
