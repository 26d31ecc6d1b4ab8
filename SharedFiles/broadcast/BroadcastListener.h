#pragma once

#include <QString>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "SharedFiles/broadcast/QVBroadcast.h"
#include "system/Descriptor.h"

/// Receives the datagrams of one UDP port, one run in a life. run() blocks the thread that calls it; the rest may be
/// called from any thread. Failures go to the log and end the run.
class BroadcastListener {
 public:
  struct Settings {
    unsigned int port = 0;
    QVBroadcast::Delegate delegate;  ///< called on the thread of run()
    bool ignoreSelf = false;
  };

  BroadcastListener(Settings settings, QVBroadcast::Services services);

  unsigned int port() const { return settings_.port; }

  /// Binds the port and hands over what arrives until stop() is called, also if that was before.
  void run();
  /// Ends the run. When it returns the port is free and the delegate is not called again; on the thread of run() that
  /// holds once the delegate has returned.
  void stop();

 private:
  using Clock = std::chrono::steady_clock;

  void listen();
  bool bindPort(const sys::Descriptor& socket) const;
  bool waitForDatagram(const sys::Descriptor& socket) const;
  bool receive(const sys::Descriptor& socket);
  void handOver(const QByteArray& data, const QString& sender);
  bool isLocal(const QString& sender);

  Settings settings_;
  const QVBroadcast::Services services_;
  const sys::Descriptor wakeUp_;  ///< readable once the run is to end

  /// With the settings the run's own: the listing of the interfaces as it was lately. A flood of datagrams must not
  /// start a tool for each.
  std::optional<NetworkInterfaces> interfaces_;
  Clock::time_point listedAt_;

  std::mutex mutex_;  ///< guards what follows
  std::condition_variable ended_;
  enum class Phase { waiting, running, over } phase_ = Phase::waiting;
  std::thread::id thread_;
};
