#include <cstdlib>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "movie/decode/DecoderModule.h"

namespace movie {
namespace {

// The module is loaded once in a process, so this one has a process of its own.
TEST(MissingModule, IsAnErrorThatNamesTheFile) {
  ASSERT_EQ(setenv("LUMACHECK_MODULES", "/nonexistent", 1), 0);
  const auto backend = decoderBackend();
  ASSERT_FALSE(backend);
  EXPECT_EQ(backend.error().file, "/nonexistent/movie-ffmpeg.so");
  EXPECT_THAT(backend.error().message(), testing::HasSubstr("the decoder module cannot be loaded"));
}

}  // namespace
}  // namespace movie
