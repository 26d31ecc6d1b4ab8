#pragma once

#include <QSocketNotifier>

/// Lets SIGTERM, SIGINT and SIGHUP quit the application as closing its window does. One object, on the main thread,
/// made after the application object.
class QuitSignals {
 public:
  QuitSignals();
  ~QuitSignals();  ///< the signals do what they did before
  QuitSignals(const QuitSignals&) = delete;
  QuitSignals& operator=(const QuitSignals&) = delete;

 private:
  QSocketNotifier notifier_;
};
