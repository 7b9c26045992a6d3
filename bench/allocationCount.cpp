#include "bench/allocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long long> theAllocations{0};

void* Allocate(std::size_t size) {
  theAllocations.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(size);
}

}  // namespace

long long CountAllocations() { return theAllocations; }

void* operator new(std::size_t size) {
  void* block = Allocate(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
