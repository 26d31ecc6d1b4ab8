#include "SharedFiles/broadcast/NetworkInterfaces.h"

#include <QStringList>
#include <cstring>
#include <memory>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/in.h>

#include "SharedFiles/tasks/QVTaskEx.h"

namespace {

constexpr double listingTimeout = 10;
constexpr QStringView addressLine = u"inet ";

/// What follows a word up to the next blank, or nil.
QString wordAfter(const QString& line, QStringView word) {
  const qsizetype at = line.indexOf(word);
  return at < 0 ? QString() : line.mid(at + word.size()).section(u' ', 0, 0);
}

/// The lines that show an IPv4 address, trimmed.
QStringList addressLines(const QString& listing) {
  QStringList lines;
  for (const QString& line : listing.split(u'\n')) {
    const QString trimmed = line.trimmed();
    if (trimmed.startsWith(addressLine)) lines.append(trimmed);
  }
  return lines;
}

struct FreeAddresses {
  void operator()(ifaddrs* addresses) const { ::freeifaddrs(addresses); }
};

/// Whether an interface has that address.
template <typename SocketAddress, typename Address>
bool anInterfaceHas(sa_family_t family, Address SocketAddress::*member, const Address& address) {
  ifaddrs* found = nullptr;
  if (::getifaddrs(&found) != 0) return false;
  const std::unique_ptr<ifaddrs, FreeAddresses> all(found);
  for (const ifaddrs* each = all.get(); each; each = each->ifa_next) {
    if (!each->ifa_addr || each->ifa_addr->sa_family != family) continue;
    SocketAddress own = {};
    std::memcpy(&own, each->ifa_addr, sizeof(own));
    if (std::memcmp(&(own.*member), &address, sizeof(address)) == 0) return true;
  }
  return false;
}

}  // namespace

NetworkInterfaces NetworkInterfaces::list(const PlatformTools& tools) {
  const ToolCommand command = tools.networkInterfaces();
  return NetworkInterfaces(QVTaskEx::stringFromTask(command.path, command.arguments, listingTimeout));
}

QString NetworkInterfaces::broadcastAddress() const {
  for (const QString& line : addressLines(listing_)) {
    for (const QStringView word : {QStringView(u" broadcast "), QStringView(u" brd ")}) {
      QString address = wordAfter(line, word);
      if (!address.isEmpty()) return address;
    }
  }
  return {};
}

bool NetworkInterfaces::hasAddress(const QString& address) const {
  constexpr qsizetype fewestWords = 3;
  for (const QString& line : addressLines(listing_)) {
    const QStringList words = line.split(u' ');
    // Where ip writes the length of the network behind the address, a slash is in between.
    if (words.size() >= fewestWords && words[1].section(u'/', 0, 0) == address) return true;
  }
  return false;
}

bool isOwnAddress(const QString& address) {
  const QByteArray text = address.toLatin1();
  in_addr four = {};
  if (::inet_pton(AF_INET, text.constData(), &four) == 1) {
    constexpr auto loopback = in_addr_t{IN_LOOPBACKNET} << IN_CLASSA_NSHIFT;
    if ((ntohl(four.s_addr) & IN_CLASSA_NET) == loopback) return true;
    return anInterfaceHas(AF_INET, &sockaddr_in::sin_addr, four);
  }
  in6_addr six = {};
  return ::inet_pton(AF_INET6, text.constData(), &six) == 1 && anInterfaceHas(AF_INET6, &sockaddr_in6::sin6_addr, six);
}
