#pragma once

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <functional>
#include <future>
#include <thread>

/// Lets the main thread work until the condition holds or the time is over; tells whether it holds.
inline bool runEventLoopUntil(const std::function<bool()>& condition, int milliseconds = 60000) {
  QElapsedTimer elapsed;
  elapsed.start();
  while (!condition() && elapsed.elapsed() < milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(2, &loop, &QEventLoop::quit);
    loop.exec();
  }
  return condition();
}

/// Calls the function on another thread while the main thread works, and returns its result.
template <typename Function>
auto callBesideEventLoop(Function function) {
  auto result = std::async(std::launch::async, std::move(function));
  runEventLoopUntil([&] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
  return result.get();
}
