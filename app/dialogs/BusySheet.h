#pragma once

#include <QString>
#include <functional>
#include <stop_token>

class QWidget;

/// Work that takes a while, and what tells how far it is, which is asked on the main thread.
struct LongWork {
  std::function<void(const std::stop_token& stop)> work;  ///< on a thread of its own; ends soon once it is asked to
  std::function<QString()> progress = nullptr;            ///< in a line
  std::function<double()> fraction = nullptr;             ///< 0 to 1; without it the bar only says that work goes on
};

/// Runs the work on a thread of its own and returns when it is done. Meanwhile the window answers, under a sheet that
/// says what is being done once that takes long, and has a button that cancels it. The sheet stays until the work has
/// ended, so that nothing else in the window can be pressed, but gives way to what the work itself asks the user.
/// Quitting cancels, too, and closes what is asked unanswered. True when the work was asked to stop. Main thread only.
bool runUnderBusySheet(QWidget& window, const QString& label, const LongWork& work);
