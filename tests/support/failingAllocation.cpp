#include "tests/support/failingAllocation.h"

#include <cstddef>
#include <new>

namespace {

int theCountdown = -1;  // allocations that still succeed; below 0 none fails
bool theFailure = false;

bool MustFail() {
  if (theCountdown < 0) return false;
  if (theCountdown-- > 0) return false;
  theFailure = true;
  return true;
}

}  // namespace

FailingAllocation::FailingAllocation(int succeeding) {
  theFailure = false;
  theCountdown = succeeding;
}

FailingAllocation::~FailingAllocation() { theCountdown = -1; }

bool FailingAllocation::HasFailed() const { return theFailure; }

// Both forms pass on to the throwing form, so that a sanitizer still sees matching pairs of
// allocation and release.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (MustFail()) return nullptr;
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  if (MustFail()) return nullptr;
  try {
    return ::operator new[](size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
