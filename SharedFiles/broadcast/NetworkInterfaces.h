#pragma once

#include <QString>

#include "SharedFiles/tasks/PlatformTools.h"

/// What the listing of the network's interfaces says: as ifconfig writes it ("inet 192.0.2.2  netmask 255.255.255.0
/// broadcast 192.0.2.255"), or as `ip address show` does ("inet 192.0.2.2/24 brd 192.0.2.255 scope global"). An
/// interface is shown while it is up or, by ip, always. Immutable; callable from any thread.
class NetworkInterfaces {
 public:
  explicit NetworkInterfaces(QString listing) : listing_(std::move(listing)) {}

  /// Runs the tool, for at most 10 seconds as QVTaskEx counts them; nothing is listed when that fails.
  static NetworkInterfaces list(const PlatformTools& tools = PlatformTools::standard());

  bool isEmpty() const { return listing_.isEmpty(); }
  /// The first broadcast address, or nil. 0.0.0.0, which ifconfig writes for an interface without one, is one too.
  QString broadcastAddress() const;
  /// Whether an interface has this IPv4 address, compared as text.
  bool hasAddress(const QString& address) const;

 private:
  QString listing_;
};

/// Whether the kernel takes an IPv4 or IPv6 address for one of this machine's: it is in the loopback network or an
/// interface has it. Asks nobody on the network. False for what is no address.
bool isOwnAddress(const QString& address);
