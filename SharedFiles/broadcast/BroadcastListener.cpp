#include "SharedFiles/broadcast/BroadcastListener.h"

#include <array>
#include <cerrno>
#include <limits>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SharedFiles/log/QVLog.h"

BroadcastListener::BroadcastListener(Settings settings, QVBroadcast::Services services)
    : settings_(std::move(settings)), services_(std::move(services)), wakeUp_(::eventfd(0, EFD_CLOEXEC)) {}

void BroadcastListener::run() {
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

void BroadcastListener::stop() {
  std::unique_lock lock(mutex_);
  if (phase_ == Phase::waiting) phase_ = Phase::over;
  if (phase_ == Phase::over) return;
  ::eventfd_write(wakeUp_.get(), 1);
  if (thread_ != std::this_thread::get_id()) ended_.wait(lock, [this] { return phase_ == Phase::over; });
}

void BroadcastListener::listen() {
  const sys::Descriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (!socket.isOpen() || !wakeUp_.isOpen()) {
    QVLog::appendLog("Broadcast: Socket error");
    return;
  }
  if (!bindPort(socket)) return;
  while (waitForDatagram(socket) && receive(socket)) {
  }
}

bool BroadcastListener::bindPort(const sys::Descriptor& socket) const {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(static_cast<in_port_t>(settings_.port));
  const bool valid = settings_.port <= std::numeric_limits<in_port_t>::max();
  if (!valid) errno = EINVAL;
  if (valid && ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) return true;
  QVLog::appendLog("Broadcast: Bind error %i", errno);
  return false;
}

/// False when the run is to end.
bool BroadcastListener::waitForDatagram(const sys::Descriptor& socket) const {
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
bool BroadcastListener::receive(const sys::Descriptor& socket) {
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

void BroadcastListener::handOver(const QByteArray& data, const QString& sender) {
  if (settings_.ignoreSelf && isLocal(sender)) return;
  if (settings_.delegate) {
    settings_.delegate({{QStringLiteral("data"), data}, {QStringLiteral("ip"), sender}});
  } else {
    QVLog::appendLog("Broadcast: Delegate doesn't respond to selector");
  }
}

bool BroadcastListener::isLocal(const QString& sender) {
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
