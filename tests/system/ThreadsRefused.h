#pragma once

#include <cstddef>

#include <gtest/gtest.h>
#include <pthread.h>

/// While it lives the system starts no thread for this process: each would need a stack that no memory has room for.
class ThreadsRefused {
 public:
  ThreadsRefused() {
    constexpr std::size_t tooLarge = std::size_t{1} << 60;
    pthread_attr_t attributes;
    EXPECT_EQ(::pthread_getattr_default_np(&attributes), 0);
    EXPECT_EQ(::pthread_attr_getstacksize(&attributes, &before_), 0);
    ::pthread_attr_destroy(&attributes);
    setStackSize(tooLarge);
  }
  ~ThreadsRefused() { setStackSize(before_); }
  ThreadsRefused(const ThreadsRefused&) = delete;
  ThreadsRefused& operator=(const ThreadsRefused&) = delete;

 private:
  static void setStackSize(std::size_t size) {
    pthread_attr_t attributes;
    EXPECT_EQ(::pthread_getattr_default_np(&attributes), 0);
    EXPECT_EQ(::pthread_attr_setstacksize(&attributes, size), 0);
    EXPECT_EQ(::pthread_setattr_default_np(&attributes), 0);
    ::pthread_attr_destroy(&attributes);
  }

  std::size_t before_ = 0;
};
