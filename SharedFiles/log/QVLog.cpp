#include "SharedFiles/log/QVLog.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <memory>

#include "SharedFiles/foundation/QVPlatformException.h"

namespace {

std::terminate_handler previousHandler = nullptr;

QString reasonOfCurrentException() {
  const std::exception_ptr current = std::current_exception();
  if (!current) return QString();
  try {
    std::rethrow_exception(current);
  } catch (const QVPlatformException& exception) {
    return exception.reason();
  } catch (const std::exception& exception) {
    return QString::fromLocal8Bit(exception.what());
  } catch (...) {
    return QStringLiteral("unknown exception");
  }
}

[[noreturn]] void handleUncaughtException() {
  static std::atomic_flag handled = ATOMIC_FLAG_INIT;
  if (!handled.test_and_set()) {
    QVLog::appendLogAndPrint(reasonOfCurrentException());
    QVLog::finishWriting();
  }
  if (previousHandler) previousHandler();
  std::abort();
}

}  // namespace

LogController& QVLog::sharedController() {
  // Never destroyed: other threads may log while the process exits.
  static LogController& controller = *[] {
    auto made = std::make_unique<LogController>(LogEnvironment::standard());
    previousHandler = std::set_terminate(handleUncaughtException);
    std::signal(SIGPIPE, SIG_IGN);
    std::atexit([] { QVLog::willTerminate(); });
    return made.release();
  }();
  return controller;
}
