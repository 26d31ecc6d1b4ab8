#include <QCoreApplication>
#include <QDir>
#include <atomic>
#include <cerrno>
#include <thread>

#include <gmock/gmock.h>

#include "SharedFiles/broadcast/QVBroadcast.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/broadcast/BroadcastFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QString ownNetwork = "LUMACHECK_BROADCAST_TEST_NETWORK";

TEST_F(Broadcasts, GiveTheDataAndTheSendersAddress) {
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate());
  ASSERT_TRUE(answers(heard));
  const QByteArray bytes("\0\xff\n%@", 5);
  sender_.send(bytes, port_);
  LoopbackSocket("127.0.0.9").send("x", port_);
  EXPECT_THAT(heard.responses(2), ElementsAre(response(bytes), response("x", "127.0.0.9")));
}

TEST_F(Broadcasts, AreCutTo1024Bytes) {
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate());
  ASSERT_TRUE(answers(heard));
  const QByteArray bytes = QByteArray(1023, 'a') + "bc" + QByteArray(475, 'd');
  for (const qsizetype size : {1023, 1024, 1025, 1500}) sender_.send(bytes.left(size), port_);
  EXPECT_THAT(heard.responses(4), ElementsAre(response(bytes.left(1023)), response(bytes.left(1024)),
                                              response(bytes.left(1024)), response(bytes.left(1024))));
}

TEST_F(Broadcasts, OfOnesOwnAreDroppedWhenAsked) {
  const struct {
    QVBroadcast::Services services;
    const char *own, *other;
  } rows[] = {
      {machineWith("127.0.0.5"), "127.0.0.5", "127.0.0.6"},
      {machineWith("192.0.2.1"), "127.0.0.1", "127.0.0.6"},
      {{.interfaces = [] { return NetworkInterfaces("inet 192.0.2.1 up"); },
        .isCurrentHost = [](const QString& address) { return address == "127.0.0.7"; }},
       "127.0.0.7",
       "127.0.0.6"},
  };
  for (const auto& row : rows) {
    const Heard heard;
    QVBroadcast::listenOnPort(port_, heard.delegate(), true, row.services);
    ASSERT_TRUE(answers(heard, row.other));
    LoopbackSocket(row.own).send("own", port_);
    LoopbackSocket(row.other).send("other", port_);
    EXPECT_THAT(heard.responses(1), ElementsAre(response("other", row.other)));
    QVBroadcast::stopListeningOnPort(port_);
  }
}

TEST_F(Broadcasts, OfOnesOwnAreHeardUnlessAsked) {
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate(), false, machineWith("127.0.0.1", "127.255.255.255"));
  ASSERT_TRUE(answers(heard));
  QVBroadcast::send("own", port_, machineWith("127.0.0.1", "127.255.255.255"));
  EXPECT_THAT(heard.responses(1), ElementsAre(response("own")));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(Broadcasts, AreAllDroppedWhereTheInterfacesCannotBeListed) {
  const Heard heard;
  std::atomic<int> asked = 0;
  QVBroadcast::listenOnPort(port_, heard.delegate(), true,
                            {.interfaces =
                                 [&asked] {
                                   ++asked;
                                   return NetworkInterfaces({});
                                 },
                             .isCurrentHost = [](const QString& /*address*/) { return false; }});
  const LoopbackSocket stranger("127.0.0.6");
  EXPECT_TRUE(runEventLoopUntil([&] {
    stranger.send("x", port_);
    return asked > 0;
  }));
  QVBroadcast::stopListeningOnPort(port_);
  EXPECT_THAT(heard.responses(0), IsEmpty());
}

TEST_F(Broadcasts, WithoutDataAreLogged) {
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate());
  ASSERT_TRUE(answers(heard));
  sender_.send("", port_);
  sender_.send("after", port_);
  EXPECT_THAT(heard.responses(1), ElementsAre(response("after")));
  EXPECT_THAT(log_.entries(), ElementsAre("Broadcast: No data received"));
}

TEST_F(Broadcasts, AreLoggedWhereTheDelegateDoesNotRespond) {
  QVBroadcast::listenOnPort(port_, nullptr);
  EXPECT_TRUE(runEventLoopUntil([&] {
    sender_.send("x", port_);
    return log_.entries().contains("Broadcast: Delegate doesn't respond to selector");
  }));
}

TEST_F(Broadcasts, AreListenedToAsTheSettingsSay) {
  const Heard heard;
  std::thread listener([&] {
    QVBroadcast::threadedListen({{"port", port_},
                                 {"delegate", QVariant::fromValue(heard.delegate())},
                                 {"selector", QString("received:")},
                                 {"ignoreSelf", true}},
                                machineWith("127.0.0.5"));
  });
  EXPECT_TRUE(answers(heard, "127.0.0.6"));
  LoopbackSocket("127.0.0.5").send("own", port_);
  LoopbackSocket("127.0.0.6").send("other", port_);
  EXPECT_THAT(heard.responses(1), ElementsAre(response("other", "127.0.0.6")));
  QVBroadcast::stopListeningOnPort(port_);
  listener.join();
  EXPECT_THAT(log_.entries(), ElementsAre("Broadcast: Socket closed"));
}

TEST_F(Broadcasts, AreNotHeardOnAPortThatIsTaken) {
  const struct {
    unsigned int port;
    int error;
  } rows[] = {{sender_.port(), EADDRINUSE}, {65536, EINVAL}, {4294967295U, EINVAL}};
  QStringList expected;
  for (const auto& row : rows) {
    QVBroadcast::threadedListen({{"port", row.port}, {"delegate", QVariant::fromValue(Heard().delegate())}});
    expected << QString("Broadcast: Bind error %1").arg(row.error);
  }
  EXPECT_EQ(log_.entries(), expected);
}

// --- Sending --------------------------------------------------------------------------------------------------------

TEST(BroadcastErrors, HaveAMessageForTheirCause) {
  const struct {
    int number;
    const char* message;
  } rows[] = {
      {ENOENT, "Broadcast: No such file or directory"},
      {EINTR, "Broadcast: Interrupted function call"},
      {EIO, "Broadcast: I/O error"},
      {EBADF, "Broadcast: Bad descriptor"},
      {EACCES, "Broadcast: Permission denied"},
      {EFAULT, "Broadcast: Bad address"},
      {ENOTDIR, "Broadcast: Not a directory"},
      {EINVAL, "Broadcast: Parameter invalid"},
      {EPIPE, "Broadcast: Broken pipe"},
      {EAGAIN, "Broadcast: Would block"},
      {EWOULDBLOCK, "Broadcast: Would block"},
      {ENOTSOCK, "Broadcast: No socket reference"},
      {EDESTADDRREQ, "Broadcast: Destination address required"},
      {EMSGSIZE, "Broadcast: Message size out of range"},
      {EPROTOTYPE, "Broadcast: Socket type or protocols are not compatible"},
      {EADDRNOTAVAIL, "Broadcast: Address not available"},
      {ENETDOWN, "Broadcast: Network not available"},
      {ENETUNREACH, "Broadcast: Network unreachable"},
      {ENOBUFS, "Broadcast: Not enough buffer space"},
      {EISCONN, "Broadcast: Connection already established"},
      {ENOTCONN, "Broadcast: Not connected"},
      {ECONNREFUSED, "Broadcast: Connection refused"},
      {ELOOP, "Broadcast: Loop exists"},
      {ENAMETOOLONG, "Broadcast: Filename too long"},
      {EHOSTDOWN, "Broadcast: Destination host not available"},
      {EHOSTUNREACH, "Broadcast: Destination host unreachable"},
      {ENOSYS, "Broadcast: Function not implemented"},
      {EOPNOTSUPP, "Broadcast: Operation not supported"},
      {EPERM, "Broadcast: Unknown error"},
      {0, "Broadcast: Unknown error"},
      {-1, "Broadcast: Unknown error"},
  };
  for (const auto& row : rows) EXPECT_STREQ(QVBroadcast::messageForSendError(row.number), row.message) << row.number;
}

TEST_F(Broadcasts, ThatCannotBeSentAreLogged) {
  const auto loopback = machineWith("127.0.0.1", "127.255.255.255");
  QVBroadcast::send("x", port_, machineWith("127.0.0.1", "nowhere"));
  QVBroadcast::send("x", port_, machineWith("127.0.0.1", "127.0.0.1.1"));
  QVBroadcast::send(QByteArray(70000, 'x'), port_, loopback);
  QVBroadcast::send("x", 0, loopback);
  QVBroadcast::send("x", 65536, loopback);
  EXPECT_THAT(log_.entries(),
              ElementsAre("Broadcast: IP error", "Broadcast: IP error", "Error broadcasting data",
                          "Broadcast: Message size out of range", "Error broadcasting data",
                          "Broadcast: Parameter invalid", "Error broadcasting data", "Broadcast: Parameter invalid"));
}

/// Runs this program's one test again in a network of its own, set up by the commands.
int runInOwnNetwork(const QString& test, const QString& commands) {
  return QVTaskEx::terminationCodeFromTask(
      "/usr/bin/unshare",
      {"--user", "--map-current-user", "--keep-caps", "--net", "/bin/sh", "-c",
       "PATH=/usr/sbin:/usr/bin:/sbin:/bin; ip link set lo up && " + commands + " && exec \"$@\"", "sh", "/usr/bin/env",
       ownNetwork + "=1", QCoreApplication::applicationFilePath(), "--gtest_filter=" + test});
}

TEST_F(Broadcasts, ReachEverySocketOfARealNetwork) {
  if (!qEnvironmentVariableIsSet(ownNetwork.toLatin1().constData())) {
    EXPECT_EQ(
        runInOwnNetwork("Broadcasts.ReachEverySocketOfARealNetwork",
                        "ip link add near type veth peer name far && ip address add 10.9.8.7/24 brd + dev near && "
                        "ip link set near up && ip link set far up"),
        0);
    return;
  }
  const QDir root(log_.home());
  ASSERT_TRUE(root.mkpath("usr/bin") && QFile::link("/usr/bin/ip", root.filePath("usr/bin/ip")));
  const PlatformTools withoutIfconfig(log_.home()), standard;
  for (const PlatformTools* tools : {&withoutIfconfig, &standard}) {
    const QVBroadcast::Services services = {.interfaces = [tools] { return NetworkInterfaces::list(*tools); }};
    EXPECT_EQ(QVBroadcast::broadcastAddress(services), "10.9.8.255");
    EXPECT_TRUE(services.interfaces().hasAddress("10.9.8.7"));
    EXPECT_TRUE(isOwnAddress("10.9.8.7"));
    EXPECT_FALSE(QVBroadcast::ipAddressIsLocal("10.9.8.8", services));
    const Heard heard;
    QVBroadcast::listenOnPort(port_, heard.delegate(), services);
    ASSERT_TRUE(answers(heard));
    QVBroadcast::send("to all", port_, services);
    EXPECT_THAT(heard.responses(1), ElementsAre(response("to all", "10.9.8.7")));
    QVBroadcast::stopListeningOnPort(port_);
  }
}

TEST_F(Broadcasts, GoTo255_255_255_0WhereThereIsNoBroadcastAddress) {
  if (!qEnvironmentVariableIsSet(ownNetwork.toLatin1().constData())) {
    EXPECT_EQ(runInOwnNetwork("Broadcasts.GoTo255_255_255_0WhereThereIsNoBroadcastAddress",
                              "ip address add 255.255.255.0/32 dev lo"),
              0);
    return;
  }
  const Heard heard;
  QVBroadcast::listenOnPort(port_, heard.delegate());
  ASSERT_TRUE(answers(heard));
  EXPECT_TRUE(QVBroadcast::broadcastAddress().isNull());
  QVBroadcast::send("to all", port_);
  EXPECT_THAT(heard.responses(1), ElementsAre(response("to all", "255.255.255.0")));
}

TEST_F(Broadcasts, GoNowhereWithoutANetwork) {
  if (!qEnvironmentVariableIsSet(ownNetwork.toLatin1().constData())) {
    EXPECT_EQ(runInOwnNetwork("Broadcasts.GoNowhereWithoutANetwork", "true"), 0);
    return;
  }
  QVBroadcast::send("to all", port_);
  EXPECT_THAT(log_.entries(), ElementsAre("Error broadcasting data", "Broadcast: Network unreachable"));
}

}  // namespace
