#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

/// Runs `body` in a thread with 512 KB of stack, which is all that a host's thread may have.
template <typename Body>
void RunInSmallStack(Body body) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 512 * 1024), 0);
  auto start = [](void* argument) -> void* {
    (*static_cast<Body*>(argument))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, start, &body), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}
