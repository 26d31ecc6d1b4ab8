#include "SharedFiles/broadcast/QVBroadcast.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include "SharedFiles/log/QVLog.h"
#include "SharedFiles/tasks/PlatformTools.h"
#include "system/Descriptor.h"

namespace {

/// In the order of the numbers that these errors have on BSD.
constexpr std::pair<int, const char*> sendErrors[] = {
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

sys::Descriptor datagramSocket() {
  return sys::Descriptor(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
}

/// An address with a port. Nothing, and EINVAL, for a number that is no port.
std::optional<sockaddr_in> socketAddress(const in_addr& address, unsigned int port) {
  errno = EINVAL;
  if (port > std::numeric_limits<in_port_t>::max()) return std::nullopt;
  sockaddr_in made = {};
  made.sin_family = AF_INET;
  made.sin_addr = address;
  made.sin_port = htons(static_cast<in_port_t>(port));
  return made;
}

/// Receives the datagrams of one UDP port, one run in a life. run() blocks the thread that calls it; the rest may be
/// called from any thread. Failures go to the log and end the run.
class Listener {
 public:
  struct Settings {
    unsigned int port = 0;
    QVBroadcast::Delegate delegate;  ///< called on the thread of run()
    bool ignoreSelf = false;
  };

  Listener(Settings settings, QVBroadcast::Services services)
      : settings_(std::move(settings)), services_(std::move(services)), wakeUp_(::eventfd(0, EFD_CLOEXEC)) {}

  unsigned int port() const { return settings_.port; }

  /// Binds the port and hands over what arrives until stop() is called, also if that was before.
  void run() {
    {
      const std::lock_guard guard(mutex_);
      if (phase_ != Phase::waiting) return;
      phase_ = Phase::running;
      thread_ = std::this_thread::get_id();
    }
    listen();
    settings_.delegate = nullptr;
    const std::lock_guard guard(mutex_);
    phase_ = Phase::over;
    ended_.notify_all();
  }

  /// Ends the run. When it returns the port is free and the delegate is not called again; on the thread of run() that
  /// holds once the delegate has returned.
  void stop() {
    std::unique_lock lock(mutex_);
    if (phase_ == Phase::waiting) phase_ = Phase::over;
    if (phase_ == Phase::over) return;
    ::eventfd_write(wakeUp_.get(), 1);
    if (thread_ != std::this_thread::get_id()) ended_.wait(lock, [this] { return phase_ == Phase::over; });
  }

 private:
  using Clock = std::chrono::steady_clock;

  void listen() {
    const sys::Descriptor socket = datagramSocket();
    if (!socket.isOpen() || !wakeUp_.isOpen()) {
      QVLog::appendLog("Broadcast: Socket error");
      return;
    }
    const auto own = socketAddress({htonl(INADDR_ANY)}, settings_.port);
    if (!own || ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&*own), sizeof(*own)) != 0) {
      QVLog::appendLog("Broadcast: Bind error %i", errno);
      return;
    }
    while (waitForDatagram(socket) && receive(socket)) {
    }
  }

  /// False when the run is to end.
  bool waitForDatagram(const sys::Descriptor& socket) const {
    std::array<pollfd, 2> awaited = {pollfd{wakeUp_.get(), POLLIN, 0}, pollfd{socket.get(), POLLIN, 0}};
    while (::poll(awaited.data(), awaited.size(), -1) < 0) {
      if (errno == EINTR) continue;
      QVLog::appendLog("Broadcast: Reply error %i", errno);
      return false;
    }
    if (awaited[0].revents == 0) return true;
    QVLog::appendLog("Broadcast: Socket closed");
    return false;
  }

  /// False when the socket has failed.
  bool receive(const sys::Descriptor& socket) {
    std::array<char, QVBroadcast::longestDatagram> buffer;
    sockaddr_in from = {};
    socklen_t size = sizeof(from);
    const ssize_t received =
        ::recvfrom(socket.get(), buffer.data(), buffer.size(), MSG_DONTWAIT, reinterpret_cast<sockaddr*>(&from), &size);
    if (received < 0) {
      // A datagram whose checksum is wrong is gone by the time it is asked for.
      if (errno == EAGAIN || errno == EINTR) return true;
      QVLog::appendLog("Broadcast: Reply error %i", errno);
      return false;
    }
    if (received == 0) {
      QVLog::appendLog("Broadcast: No data received");
      return true;
    }
    std::array<char, INET_ADDRSTRLEN> sender = {};
    ::inet_ntop(AF_INET, &from.sin_addr, sender.data(), sender.size());
    handOver(QByteArray(buffer.data(), received), QString::fromLatin1(sender.data()));
    return true;
  }

  void handOver(const QByteArray& data, const QString& sender) {
    if (settings_.ignoreSelf && isLocal(sender)) return;
    if (settings_.delegate) {
      settings_.delegate({{"data", data}, {"ip", sender}});
    } else {
      QVLog::appendLog("Broadcast: Delegate doesn't respond to selector");
    }
  }

  /// By the listing of the interfaces as it was lately: a flood of datagrams must not start a tool for each.
  bool isLocal(const QString& sender) {
    QVBroadcast::Services services = services_;
    services.interfaces = [this] {
      const auto now = Clock::now();
      if (!interfaces_ || now - listedAt_ > std::chrono::milliseconds(QVBroadcast::listingMilliseconds)) {
        interfaces_ = services_.interfaces();
        listedAt_ = now;
      }
      return *interfaces_;
    };
    return QVBroadcast::ipAddressIsLocal(sender, services);
  }

  // The run's own.
  Settings settings_;
  const QVBroadcast::Services services_;
  std::optional<NetworkInterfaces> interfaces_;
  Clock::time_point listedAt_;

  const sys::Descriptor wakeUp_;  ///< readable once the run is to end
  std::mutex mutex_;              ///< guards what follows
  std::condition_variable ended_;
  enum class Phase { waiting, running, over } phase_ = Phase::waiting;
  std::thread::id thread_;
};

/// The listeners of the process.
class Listeners {
 public:
  /// Never destroyed: a listener's thread takes leave of it while the process exits. The tools are made first, so that
  /// the listeners are ended before the tools go.
  static Listeners& ofProcess() {
    static Listeners* const listeners = [] {
      PlatformTools::standard();
      std::atexit([] { ofProcess().stop([](const Listener& /*any*/) { return true; }); });
      return std::make_unique<Listeners>().release();
    }();
    return *listeners;
  }
  Listeners() = default;
  Listeners(const Listeners&) = delete;
  Listeners& operator=(const Listeners&) = delete;

  std::shared_ptr<Listener> add(Listener::Settings settings, const QVBroadcast::Services& services) {
    const std::lock_guard guard(mutex_);
    return listeners_.emplace_back(std::make_shared<Listener>(std::move(settings), services));
  }
  void remove(const std::shared_ptr<Listener>& listener) {
    const std::lock_guard guard(mutex_);
    std::erase(listeners_, listener);
  }
  template <typename Predicate>
  void stop(const Predicate& isMeant) {
    std::vector<std::shared_ptr<Listener>> meant;
    {
      const std::lock_guard guard(mutex_);
      std::copy_if(listeners_.begin(), listeners_.end(), std::back_inserter(meant),
                   [&](const auto& listener) { return isMeant(*listener); });
    }
    for (const auto& listener : meant) listener->stop();
  }

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<Listener>> listeners_;
};

void runToEnd(const std::shared_ptr<Listener>& listener) {
  listener->run();
  Listeners::ofProcess().remove(listener);
}

}  // namespace

void QVBroadcast::send(const QByteArray& data, unsigned int port, const Services& services) {
  const sys::Descriptor socket = datagramSocket();
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
  const auto destination = socketAddress(address, port);
  if (destination && ::sendto(socket.get(), data.constData(), static_cast<std::size_t>(data.size()), MSG_NOSIGNAL,
                              reinterpret_cast<const sockaddr*>(&*destination), sizeof(*destination)) >= 0) {
    return;
  }
  const int number = errno;
  QVLog::appendLog("Error broadcasting data");
  QVLog::appendLog(messageForSendError(number));
}

const char* QVBroadcast::messageForSendError(int number) {
  const auto* const found = std::find_if(std::begin(sendErrors), std::end(sendErrors),
                                         [number](const auto& error) { return error.first == number; });
  return found == std::end(sendErrors) ? "Broadcast: Unknown error" : found->second;
}

void QVBroadcast::listenOnPort(unsigned int port, const Delegate& delegate, bool ignoreSelf, const Services& services) {
  const auto listener = Listeners::ofProcess().add({port, delegate, ignoreSelf}, services);
  try {
    std::thread([listener] { runToEnd(listener); }).detach();
  } catch (const std::system_error&) {
    QVLog::appendLog("Broadcast: Socket error");
    Listeners::ofProcess().remove(listener);
  }
}

void QVBroadcast::stopListeningOnPort(unsigned int port) {
  Listeners::ofProcess().stop([port](const Listener& listener) { return listener.port() == port; });
}

void QVBroadcast::threadedListen(const QVariantMap& settings, const Services& services) {
  runToEnd(Listeners::ofProcess().add({.port = settings.value("port").toUInt(),
                                       .delegate = settings.value("delegate").value<Delegate>(),
                                       .ignoreSelf = settings.value("ignoreSelf").toBool()},
                                      services));
}

bool QVBroadcast::ipAddressIsLocal(const QString& address, const Services& services) {
  if (address == QLatin1String("127.0.0.1") || address == QLatin1String("localhost")) return true;
  if (services.isCurrentHost(address)) return true;
  const NetworkInterfaces interfaces = services.interfaces();
  return interfaces.isEmpty() || interfaces.hasAddress(address);
}
