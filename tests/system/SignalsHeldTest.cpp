#include <csignal>

#include <gtest/gtest.h>
#include <signal.h>

#include "system/SignalsHeld.h"

namespace sys {
namespace {

bool isBlocked(int signal) {
  sigset_t now;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &now);
  return ::sigismember(&now, signal) == 1;
}

bool isPending(int signal) {
  sigset_t pending;
  ::sigpending(&pending);
  return ::sigismember(&pending, signal) == 1;
}

TEST(SignalsHeld, HoldsThoseThatItIsGiven) {
  {
    const SignalsHeld held({SIGINT, SIGXFSZ});
    for (const int signal : {SIGINT, SIGXFSZ}) EXPECT_TRUE(isBlocked(signal)) << signal;
    for (const int signal : {SIGTERM, SIGPIPE}) EXPECT_FALSE(isBlocked(signal)) << signal;
  }
  for (const int signal : {SIGINT, SIGXFSZ}) EXPECT_FALSE(isBlocked(signal)) << signal;
}

TEST(SignalsHeld, DropsWhatItsOwnWritesRaised) {
  for (const int signal : {SIGXFSZ, SIGPIPE}) {
    {
      const SignalsHeld held({signal});
      ASSERT_EQ(::raise(signal), 0);
      EXPECT_TRUE(isPending(signal));
    }
    EXPECT_FALSE(isPending(signal));
  }
}

volatile std::sig_atomic_t taken = 0;

TEST(SignalsHeld, LetsThoseOfOthersThroughInTheEnd) {
  struct sigaction noting {
  }, before{};
  noting.sa_handler = [](int) { taken = taken + 1; };
  ASSERT_EQ(::sigaction(SIGTERM, &noting, &before), 0);
  {
    const SignalsHeld held({SIGTERM});
    ASSERT_EQ(::raise(SIGTERM), 0);
    EXPECT_EQ(taken, 0);
  }
  EXPECT_EQ(taken, 1);
  ::sigaction(SIGTERM, &before, nullptr);
}

TEST(SignalsHeld, LeavesToOthersWhatTheyHadBlocked) {
  const SignalsHeld outer({SIGXFSZ});
  ASSERT_EQ(::raise(SIGXFSZ), 0);
  { const SignalsHeld inner({SIGXFSZ}); }
  EXPECT_TRUE(isPending(SIGXFSZ));
}

}  // namespace
}  // namespace sys
