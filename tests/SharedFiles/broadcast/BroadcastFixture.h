#pragma once

#include <QByteArray>
#include <QString>
#include <QVariantMap>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "SharedFiles/broadcast/QVBroadcast.h"
#include "system/Descriptor.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"

/// What a delegate has heard. Callable from any thread.
class Heard {
 public:
  static constexpr auto greeting = "are you there?";

  QVBroadcast::Delegate delegate() const {
    return [state = state_](const QVariantMap& response) {
      const std::lock_guard guard(state->mutex);
      const bool greeted = response.value("data").toByteArray() == greeting;
      if (greeted) ++state->greetings;
      if (!greeted) state->responses.push_back(response);
      state->changed.notify_all();
    };
  }
  /// The responses but for the greetings, once there are that many.
  std::vector<QVariantMap> responses(std::size_t atLeast) const {
    std::unique_lock lock(state_->mutex);
    state_->changed.wait_for(lock, std::chrono::seconds(20), [&] { return state_->responses.size() >= atLeast; });
    return state_->responses;
  }
  bool greetedWithin(std::chrono::milliseconds time) const {
    std::unique_lock lock(state_->mutex);
    const auto before = state_->greetings;
    return state_->changed.wait_for(lock, time, [&] { return state_->greetings > before; });
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<QVariantMap> responses;
    int greetings = 0;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

inline sockaddr_in socketAddress(const char* address, unsigned int port) {
  sockaddr_in result = {};
  result.sin_family = AF_INET;
  result.sin_port = htons(static_cast<in_port_t>(port));
  EXPECT_EQ(::inet_pton(AF_INET, address, &result.sin_addr), 1);
  return result;
}

/// A socket on the loopback network.
class LoopbackSocket {
 public:
  explicit LoopbackSocket(const char* address = "127.0.0.1", unsigned int port = 0)
      : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    const sockaddr_in own = socketAddress(address, port);
    bound_ = ::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&own), sizeof(own)) == 0;
  }
  bool isBound() const { return bound_; }
  unsigned int port() const {
    sockaddr_in own = {};
    socklen_t size = sizeof(own);
    EXPECT_EQ(::getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&own), &size), 0);
    return ntohs(own.sin_port);
  }
  void send(const QByteArray& data, unsigned int port) const {
    const sockaddr_in to = socketAddress("127.0.0.1", port);
    EXPECT_EQ(::sendto(socket_.get(), data.constData(), static_cast<std::size_t>(data.size()), 0,
                       reinterpret_cast<const sockaddr*>(&to), sizeof(to)),
              data.size());
  }

 private:
  sys::Descriptor socket_;
  bool bound_ = false;
};

class Broadcasts : public testing::Test {
 protected:
  ~Broadcasts() override { QVBroadcast::stopListeningOnPort(port_); }

  /// Greets from an address until it is heard: the listener has its port.
  bool answers(const Heard& heard, const char* from = "127.0.0.1") const {
    const LoopbackSocket socket(from);
    for (int attempt = 0; attempt < 400; ++attempt) {
      socket.send(Heard::greeting, port_);
      if (heard.greetedWithin(std::chrono::milliseconds(50))) return true;
    }
    return false;
  }
  /// A machine with one address, apart from what the kernel says.
  static QVBroadcast::Services machineWith(const QString& address, const QString& broadcast = {}) {
    const QString tail = broadcast.isNull() ? QString() : "  broadcast " + broadcast;
    return {.interfaces = [=] { return NetworkInterfaces("inet " + address + "  netmask 255.0.0.0" + tail); },
            .isCurrentHost = [](const QString& /*address*/) { return false; }};
  }
  static QVariantMap response(const QByteArray& data, const char* sender = "127.0.0.1") {
    return {{"data", data}, {"ip", QString(sender)}};
  }

  ProcessLog log_;
  const unsigned int port_ = LoopbackSocket().port();
  const LoopbackSocket sender_;
};
