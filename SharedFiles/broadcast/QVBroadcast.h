#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <functional>

#include "SharedFiles/broadcast/NetworkInterfaces.h"

/// What is asked about the machine that sends and listens. Callable from any thread.
struct BroadcastServices {
  std::function<NetworkInterfaces()> interfaces = [] { return NetworkInterfaces::list(); };
  std::function<bool(const QString& address)> isCurrentHost = isOwnAddress;
};

/// Sends datagrams to everybody on the local network by UDP and listens for them. Nothing is sent or received unless
/// asked for; what arrives comes from anybody and is neither encrypted nor signed. Stateless but for the listeners that
/// run; callable from any thread, and blocking. Every failure goes to the log and nothing else tells of it.
///
/// No name is ever looked up: a sender is known by his address alone, so that no server of names can hold a listener
/// up.
class QVBroadcast final {
 public:
  QVBroadcast() = delete;

  using Services = BroadcastServices;

  /// Receives a dictionary with "data" (QByteArray, the first 1024 bytes at most) and "ip" (QString, the sender's
  /// address in dotted form). Delegate and selector in one: an empty one does not respond to the selector.
  using Delegate = std::function<void(const QVariantMap& response)>;

  /// Longer datagrams are cut to this size.
  static constexpr qsizetype longestDatagram = 1024;
  /// How old the listing of the interfaces may be by which a listener tells datagrams of its own machine.
  static constexpr int listingMilliseconds = 2000;

  /// send:port: sends the data as one datagram to broadcastAddress(), or to 255.255.255.0 where there is none. A port
  /// above 65535 counts as an invalid parameter.
  static void send(const QByteArray& data, unsigned int port, const Services& services = {});
  /// The log line for an error of this system's that sending met.
  static const char* messageForSendError(int number);

  /// listenOnPort:delegate:selector:
  static void listenOnPort(unsigned int port, const Delegate& delegate, const Services& services = {}) {
    listenOnPort(port, delegate, false, services);
  }
  /// listenOnPort:delegate:selector:ignoreSelf: listens as threadedListen() does, on a thread of its own, and calls the
  /// delegate with every datagram that is not empty; with `ignoreSelf` only with those from other machines.
  static void listenOnPort(unsigned int port, const Delegate& delegate, bool ignoreSelf, const Services& services = {});
  /// Ends every listener on that port, on whatever thread it runs. When it returns the port is free and the delegates
  /// are not called again. Called by a delegate, it returns at once, and that holds once the delegate has returned. A
  /// delegate must not wait for the caller. What still listens when the process exits is ended then.
  static void stopListeningOnPort(unsigned int port);

  /// threadedListen: settings "port" (unsigned integer), "delegate" (a Delegate in a QVariant) and "ignoreSelf"
  /// (boolean, absent: no). A "selector" is not looked at. Listens on the calling thread until stopListeningOnPort(),
  /// or until it fails.
  static void threadedListen(const QVariantMap& settings, const Services& services = {});

  /// The first interface's that has one, or nil.
  static QString broadcastAddress(const Services& services = {}) { return services.interfaces().broadcastAddress(); }
  /// ipAddressIsLocal: true for "127.0.0.1", "localhost", an address of this machine's, and whenever the interfaces
  /// cannot be listed.
  static bool ipAddressIsLocal(const QString& address, const Services& services = {});
};
