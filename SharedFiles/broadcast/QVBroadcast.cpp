#include "SharedFiles/broadcast/QVBroadcast.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SharedFiles/broadcast/BroadcastListener.h"
#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/PlatformTools.h"
#include "system/Descriptor.h"

namespace {

struct SendError {
  int number;
  const char* message;
};

/// In the order of the numbers that these errors have on BSD.
constexpr SendError sendErrors[] = {
    {ENOENT, "Broadcast: No such file or directory"},
    {EINTR, "Broadcast: Interrupted function call"},
    {EIO, "Broadcast: I/O error"},
    {EBADF, "Broadcast: Bad descriptor"},
    {EACCES, "Broadcast: Permission denied"},
    {EFAULT, "Broadcast: Bad address"},
    {ENOTDIR, "Broadcast: Not a directory"},
    {EINVAL, "Broadcast: Parameter invalid"},
    {EPIPE, "Broadcast: Broken pipe"},
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
};

/// Sends one datagram. 0 or an errno.
int sendDatagram(const sys::Descriptor& socket, const QByteArray& data, const in_addr& address, unsigned int port) {
  if (port > std::numeric_limits<in_port_t>::max()) return EINVAL;
  sockaddr_in destination = {};
  destination.sin_family = AF_INET;
  destination.sin_addr = address;
  destination.sin_port = htons(static_cast<in_port_t>(port));
  const ssize_t sent = ::sendto(socket.get(), data.constData(), static_cast<std::size_t>(data.size()), MSG_NOSIGNAL,
                                reinterpret_cast<const sockaddr*>(&destination), sizeof(destination));
  return sent < 0 ? errno : 0;
}

/// The listeners of the process.
class Listeners {
 public:
  /// Never destroyed: a listener's thread takes leave of it while the process exits. The tools are made first, so that
  /// the listeners are ended before the tools go.
  static Listeners& ofProcess() {
    static Listeners* const listeners = [] {
      PlatformTools::standard();
      std::atexit([] { ofProcess().stop([](const BroadcastListener& /*any*/) { return true; }); });
      return std::make_unique<Listeners>().release();
    }();
    return *listeners;
  }
  Listeners() = default;
  Listeners(const Listeners&) = delete;
  Listeners& operator=(const Listeners&) = delete;

  void add(std::shared_ptr<BroadcastListener> listener) {
    const std::lock_guard guard(mutex_);
    listeners_.push_back(std::move(listener));
  }
  void remove(const std::shared_ptr<BroadcastListener>& listener) {
    const std::lock_guard guard(mutex_);
    std::erase(listeners_, listener);
  }
  template <typename Predicate>
  void stop(const Predicate& isMeant) {
    std::vector<std::shared_ptr<BroadcastListener>> meant;
    {
      const std::lock_guard guard(mutex_);
      std::copy_if(listeners_.begin(), listeners_.end(), std::back_inserter(meant),
                   [&](const auto& listener) { return isMeant(*listener); });
    }
    for (const auto& listener : meant) listener->stop();
  }

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<BroadcastListener>> listeners_;
};

void runToEnd(const std::shared_ptr<BroadcastListener>& listener) {
  listener->run();
  Listeners::ofProcess().remove(listener);
}

QVariantMap settingsOf(unsigned int port, const QVBroadcast::Delegate& delegate, bool ignoreSelf) {
  return {{QStringLiteral("port"), port},
          {QStringLiteral("delegate"), QVariant::fromValue(delegate)},
          {QStringLiteral("ignoreSelf"), ignoreSelf}};
}

/// A listener that stopListeningOnPort() knows.
std::shared_ptr<BroadcastListener> knownListener(const QVariantMap& settings, const QVBroadcast::Services& services) {
  const BroadcastListener::Settings own = {
      .port = settings.value(QStringLiteral("port")).toUInt(),
      .delegate = settings.value(QStringLiteral("delegate")).value<QVBroadcast::Delegate>(),
      .ignoreSelf = settings.value(QStringLiteral("ignoreSelf")).toBool()};
  auto listener = std::make_shared<BroadcastListener>(own, services);
  Listeners::ofProcess().add(listener);
  return listener;
}

}  // namespace

// send:port:
void QVBroadcast::send(const QByteArray& data, unsigned int port, const Services& services) {
  const sys::Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen()) {
    QVLog::appendLog("Broadcast: Socket error");
    return;
  }
  const QString found = broadcastAddress(services);
  const QByteArray text = found.isNull() ? QByteArray("255.255.255.0") : found.toLatin1();
  in_addr address = {};
  if (::inet_pton(AF_INET, text.constData(), &address) != 1) {
    QVLog::appendLog("Broadcast: IP error");
    return;
  }
  const int on = 1;
  if (::setsockopt(socket.get(), SOL_SOCKET, SO_BROADCAST, &on, sizeof(on)) != 0) {
    QVLog::appendLog("Broadcast: Error setting broadcast flag - %i", errno);
    return;
  }
  if (const int number = sendDatagram(socket, data, address, port)) {
    QVLog::appendLog("Error broadcasting data");
    QVLog::appendLog(messageForSendError(number));
  }
}

const char* QVBroadcast::messageForSendError(int number) {
  const auto* const found = std::find_if(std::begin(sendErrors), std::end(sendErrors),
                                         [number](const SendError& error) { return error.number == number; });
  return found == std::end(sendErrors) ? "Broadcast: Unknown error" : found->message;
}

// listenOnPort:delegate:selector:
void QVBroadcast::listenOnPort(unsigned int port, const Delegate& delegate, const Services& services) {
  listenOnPort(port, delegate, false, services);
}

// listenOnPort:delegate:selector:ignoreSelf:
void QVBroadcast::listenOnPort(unsigned int port, const Delegate& delegate, bool ignoreSelf, const Services& services) {
  const auto listener = knownListener(settingsOf(port, delegate, ignoreSelf), services);
  try {
    std::thread([listener] { runToEnd(listener); }).detach();
  } catch (const std::system_error&) {
    QVLog::appendLog("Broadcast: Socket error");
    Listeners::ofProcess().remove(listener);
  }
}

void QVBroadcast::stopListeningOnPort(unsigned int port) {
  Listeners::ofProcess().stop([port](const BroadcastListener& listener) { return listener.port() == port; });
}

// threadedListen:
void QVBroadcast::threadedListen(const QVariantMap& settings, const Services& services) {
  runToEnd(knownListener(settings, services));
}

QString QVBroadcast::broadcastAddress(const Services& services) {
  return services.interfaces().broadcastAddress();
}

// ipAddressIsLocal:
bool QVBroadcast::ipAddressIsLocal(const QString& address, const Services& services) {
  if (address == QLatin1String("127.0.0.1") || address == QLatin1String("localhost")) return true;
  if (services.isCurrentHost(address)) return true;
  const NetworkInterfaces interfaces = services.interfaces();
  return interfaces.isEmpty() || interfaces.hasAddress(address);
}
