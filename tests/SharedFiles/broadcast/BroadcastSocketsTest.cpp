#include <gmock/gmock.h>
#include <sys/resource.h>

#include "SharedFiles/broadcast/QVBroadcast.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/broadcast/BroadcastFixture.h"

namespace {

using ::testing::ElementsAre;

// In a program of its own, which sanitizers leave out: without descriptors they cannot tell what an object is.
TEST_F(Broadcasts, AreLoggedWhereThereIsNoSocketToBeHad) {
  const auto loopback = machineWith("127.0.0.1", "127.255.255.255");
  const unsigned int port = port_;
  rlimit before = {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none = {0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  QVBroadcast::send("x", port, loopback);
  QVBroadcast::threadedListen({{"port", port}});
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_THAT(log_.entries(), ElementsAre("Broadcast: Socket error", "Broadcast: Socket error"));
}

}  // namespace
