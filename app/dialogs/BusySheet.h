#pragma once

#include <QString>
#include <functional>
#include <stop_token>

class QWidget;

/// Work that the user can stop.
struct StoppableWork {
  std::function<void(const std::stop_token& stop)> work;  ///< ends soon once it is asked to; on a thread of its own
  std::function<QString()> progress;                      ///< how far it is, in a line; asked on the main thread
};

/// Runs work that takes a while on a thread of its own and returns when it is done. Meanwhile the window answers, under
/// a sheet that says what is being done once that takes long; the sheet gives way to what the work itself asks the
/// user. The work cannot be stopped; when the application quits, what it asks is closed unanswered. On the main thread.
void runUnderBusySheet(QWidget& window, const QString& label, const std::function<void()>& work);

/// The same for work that can: the sheet says how far it is and has a button that cancels it. The sheet stays until the
/// work has ended. Quitting cancels, too.
void runUnderBusySheet(QWidget& window, const QString& label, const StoppableWork& work);
