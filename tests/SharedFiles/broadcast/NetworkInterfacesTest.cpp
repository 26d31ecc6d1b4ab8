#include <gtest/gtest.h>

#include "SharedFiles/broadcast/NetworkInterfaces.h"
#include "SharedFiles/broadcast/QVBroadcast.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

const QString loopbackOnly =
    "lo: flags=73<UP,LOOPBACK,RUNNING>  mtu 65536\n"
    "        inet 127.0.0.1  netmask 255.0.0.0\n"
    "        inet6 ::1  prefixlen 128  scopeid 0x10<host>\n";
const QString byIfconfig =
    "eth0: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1400\n"
    "        inet 192.0.2.2  netmask 255.255.255.0  broadcast 192.0.2.255\n"
    "        inet6 fd00::2  prefixlen 64  scopeid 0x0<global>\n"
    "        ether 02:fc:00:00:00:01  txqueuelen 1000  (Ethernet)\n"
    "\n"
    "eth1: flags=4163<UP,BROADCAST,RUNNING,MULTICAST>  mtu 1400\n"
    "        inet 198.51.100.7  netmask 255.255.255.0  broadcast 198.51.100.255\n\n" +
    loopbackOnly;
const QString byTheOriginalIfconfig =
    "lo0: flags=8049<UP,LOOPBACK,RUNNING,MULTICAST> mtu 16384\n"
    "\tinet6 ::1 prefixlen 128 \n"
    "\tinet 127.0.0.1 netmask 0xff000000 \n"
    "en0: flags=8863<UP,BROADCAST,SMART,RUNNING,SIMPLEX,MULTICAST> mtu 1500\n"
    "\tinet 203.0.113.5 netmask 0xffffff00 broadcast 203.0.113.255\n";
const QString byIp =
    "1: lo: <LOOPBACK,UP,LOWER_UP> mtu 65536 qdisc noqueue state UNKNOWN group default qlen 1000\n"
    "    link/loopback 00:00:00:00:00:00 brd 00:00:00:00:00:00\n"
    "    inet 127.0.0.1/8 scope host lo\n"
    "       valid_lft forever preferred_lft forever\n"
    "2: tun0: <POINTOPOINT,UP> mtu 1400\n"
    "    inet 198.51.100.1 peer 198.51.100.2/32 scope global tun0\n"
    "3: eth0: <BROADCAST,MULTICAST,UP,LOWER_UP> mtu 1400 qdisc pfifo_fast state UP group default qlen 1000\n"
    "    link/ether 02:fc:00:00:00:01 brd ff:ff:ff:ff:ff:ff\n"
    "    inet 192.0.2.2/24 metric 100 brd 192.0.2.255 scope global dynamic eth0\n"
    "    inet6 fd00::2/64 scope global nodad \n";

QVBroadcast::Services listing(const QString& text) {
  return {.interfaces = [text] { return NetworkInterfaces(text); },
          .isCurrentHost = [](const QString&) { return false; }};
}

TEST(NetworkInterfaces, GiveTheFirstBroadcastAddress) {
  const struct {
    QString text, address;
  } rows[] = {
      {byIfconfig, "192.0.2.255"},
      {byTheOriginalIfconfig, "203.0.113.255"},
      {byIp, "192.0.2.255"},
      {loopbackOnly, QString()},
      {QString(), QString()},
      {"inet 1.2.3.4 netmask 5 broadcast 6.7.8.9 more", "6.7.8.9"},
      {"\t inet 1.2.3.4 broadcast 6.7.8.9 \t", "6.7.8.9"},
      {"inet6 1::2 broadcast 6.7.8.9", QString()},
      {"inet\t1.2.3.4 broadcast 6.7.8.9", QString()},
      {"ether 1 broadcast 6.7.8.9", QString()},
      {"inet 1.2.3.4 broadcast", QString()},
      {"inet 1.2.3.4 netmask 5 broadcast 0.0.0.0\ninet 2.2.3.4 netmask 5 broadcast 2.2.3.255", "0.0.0.0"},
      {byIp + "    inet 2.2.3.4/24 brd 0.0.0.0 scope global eth1\n", "192.0.2.255"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(QVBroadcast::broadcastAddress(listing(row.text)), row.address) << row.text.toStdString();
}

TEST(NetworkInterfaces, TellWhetherAnAddressIsOfThisMachine) {
  const struct {
    QString text, address;
    bool local;
  } rows[] = {
      {byIfconfig, "127.0.0.1", true},
      {byIfconfig, "localhost", true},
      {byIfconfig, "192.0.2.2", true},
      {byIfconfig, "198.51.100.7", true},
      {byIfconfig, "192.0.2.255", false},
      {byIfconfig, "192.0.2.3", false},
      {byIfconfig, "192.0.2", false},
      {byIfconfig, "255.255.255.0", false},
      {byIfconfig, "", false},
      {byTheOriginalIfconfig, "203.0.113.5", true},
      {byIp, "192.0.2.2", true},
      {byIp, "198.51.100.1", true},
      {byIp, "198.51.100.2", false},
      {"inet 1.2.3.4", "1.2.3.4", false},
      {"inet 1.2.3.4 up", "1.2.3.4", true},
      {QString(), "192.0.2.3", true},
      {QString(""), "192.0.2.3", true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(QVBroadcast::ipAddressIsLocal(row.address, listing(row.text)), row.local)
        << row.text.toStdString() << row.address.toStdString();
  }
}

TEST(NetworkInterfaces, AreNotAskedForWhatTheKernelKnows) {
  const QVBroadcast::Services services = {
      .interfaces =
          [] {
            ADD_FAILURE() << "listed";
            return NetworkInterfaces({});
          },
      .isCurrentHost = [](const QString& address) { return address == "192.0.2.9"; }};
  EXPECT_TRUE(QVBroadcast::ipAddressIsLocal("192.0.2.9", services));
  EXPECT_TRUE(QVBroadcast::ipAddressIsLocal("127.0.0.1", services));
}

TEST(NetworkInterfaces, OfTheKernelAreKnownByAddressAlone) {
  const struct {
    const char* address;
    bool own;
  } rows[] = {{"127.0.0.1", true},     {"127.255.0.9", true}, {"126.0.0.1", false},      {"128.0.0.1", false},
              {"203.0.113.99", false}, {"localhost", false},  {"a.name.example", false}, {"", false},
              {"2001:db8::99", false}, {"127.0.0.1 ", false}, {"127.1", false}};
  for (const auto& row : rows) EXPECT_EQ(isOwnAddress(row.address), row.own) << row.address;
}

}  // namespace
