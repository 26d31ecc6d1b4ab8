#pragma once

#include <QString>
#include <functional>

class QWidget;

/// Runs work that takes a while on a thread of its own and returns when it is done. Meanwhile the window answers, under
/// a sheet that says what is being done once that takes long; the sheet gives way to what the work itself asks the
/// user. The work cannot be stopped; when the application quits, what it asks is closed unanswered. On the main thread.
void runUnderBusySheet(QWidget& window, const QString& label, const std::function<void()>& work);
