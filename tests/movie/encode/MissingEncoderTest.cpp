#include <cstdlib>

#include <gtest/gtest.h>

#include "movie/encode/MovieEncoder.h"

namespace movie {
namespace {

TEST(MovieEncoder, SaysThatTheModuleIsNotThere) {
  ::setenv("LUMACHECK_MODULES", "/nowhere", 1);
  const auto backend = encoderBackend();
  ASSERT_FALSE(backend);
  EXPECT_EQ(backend.error(), "What encodes movies is not installed, or does not fit.");
}

}  // namespace
}  // namespace movie
