// Settings of the sanitizers' runtime for our own test programs. Compiled in, so that a program
// started by hand behaves like one started by ctest.

extern "C" const char* __asan_default_options();
extern "C" const char* __ubsan_default_options();

// The engine asks with `new (std::nothrow)` and answers KVN_NO_MEMORY; without
// allocator_may_return_null a refused request would end the program instead of returning null.
const char* __asan_default_options() {
  return "allocator_may_return_null=1:detect_stack_use_after_return=1:strict_init_order=1";
}

const char* __ubsan_default_options() { return "print_stacktrace=1"; }
