#include "SharedFiles/alerts/QVAlert.h"

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <future>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "SharedFiles/alerts/AlertPanel.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/log/SystemConsole.h"
#include "SharedFiles/settings/UserDefaults.h"

namespace {

constexpr std::chrono::milliseconds turnOnMainThread{10};
constexpr std::chrono::milliseconds turnElsewhere{200};
constexpr std::chrono::milliseconds turnWhileClosing{20};
constexpr int defaultReturn = 1;
constexpr int otherReturn = -1;

QString defaultSelector() {
  return QStringLiteral("alertDidEnd:returnCode:contextInfo:");
}

QVAlert::Request requestOf(const QString& messageText, const QString& defaultButton, const QString& alternateButton,
                           const QString& otherButton, const QString& informativeText) {
  QVAlert::Request request = {{"messageText", messageText},
                              {"defaultButtonTitle", defaultButton},
                              {"alternateButtonTitle", alternateButton},
                              {"otherButtonTitle", otherButton},
                              {"informativeText", informativeText},
                              {"didEndSelector", defaultSelector()}};
  request.removeIf([](const QVAlert::Request::iterator& entry) { return entry->isNull(); });
  return request;
}

/// The window of a widget that may be gone by now, or null. Addresses are compared, nothing is followed.
QWidget* livingWindow(QWidget* widget) {
  return widget && QApplication::allWidgets().contains(widget) ? widget->window() : nullptr;
}

bool hasAttachedSheet(const QWidget& window) {
  for (const QWidget* sheet : QApplication::topLevelWidgets()) {
    if (sheet->isVisible() && sheet->windowModality() == Qt::WindowModal && sheet->parentWidget() &&
        sheet->parentWidget()->window() == &window) {
      return true;
    }
  }
  return false;
}

void makeKeyAndOrderFront(QWidget& window) {
  if (window.isMinimized()) window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

}  // namespace

void QVAlert::Answer::giveAfter(int interval) {
  std::this_thread::sleep_for(std::chrono::seconds(interval));
  int none = nothing;
  given.compare_exchange_strong(none, defaultReturn);
  code = defaultReturn;
  ended = true;
}

struct QVAlert::Question {
  Request request;
  QWidget* parentWindow = nullptr;
  AlertDelegate* delegate = nullptr;
  bool block = true;
  std::shared_ptr<QVAlert> alertObject;
  std::optional<int> interval;
};

int QVAlert::alertSheetWithMessageText(const QString& messageText, const QString& defaultButton,
                                       const QString& alternateButton, const QString& otherButton,
                                       const QString& informativeText, QWidget* parentWindow, AlertDelegate* delegate,
                                       const QString& didEndSelector, bool block,
                                       const std::shared_ptr<QVAlert>& alertObject, const QString& suppressionBinding) {
  Request request = requestOf(messageText, defaultButton, alternateButton, otherButton, informativeText);
  if (!didEndSelector.isNull()) request.insert("didEndSelector", didEndSelector);
  if (!suppressionBinding.isNull()) request.insert("suppressionBinding", suppressionBinding);
  return ask({request, parentWindow, delegate, block, alertObject, std::nullopt});
}

int QVAlert::timedAlertSheetWithMessageText(const QString& messageText, const QString& defaultButton,
                                            const QString& alternateButton, const QString& otherButton,
                                            const QString& informativeText, QWidget* parentWindow, int interval) {
  return ask({requestOf(messageText, defaultButton, alternateButton, otherButton, informativeText), parentWindow,
              nullptr, true, nullptr, interval});
}

int QVAlert::ask(const Question& question) {
  const std::shared_ptr<QVAlert> alert = question.alertObject ? question.alertObject : create();
  alert->setAlertEnded(false);
  AlertDelegate& delegate = question.delegate ? *question.delegate : *alert;
  const QString selector = question.request.value("didEndSelector");
  if (!delegate.respondsToSelector(selector)) {
    logToConsole("Alert error: delegate does not respond to selector %@", selector);
    return otherReturn;
  }
  if (question.interval) alert->startTimer(*question.interval);
  bool shown = false;
  MainThread::performAndWait([&] {
    alert->setParentWindow(livingWindow(question.parentWindow));
    alert->setDelegate(&delegate);
    alert->waited_ = question.block;
    alert->alertSheetWithDictionary(question.request);
    shown = true;
  });
  if (!shown || !question.block) return otherReturn;
  alert->wait();
  const Answer& answer = *alert->answer_;
  alert->closeWhenWaited(question.alertObject == nullptr);
  if (answer.quitting) return otherReturn;
  const int given = answer.given;
  return given == Answer::nothing ? answer.code.load() : given;
}

/// Closes the alert on the main thread and waits for that, but not for a main thread that has left its event loop and
/// takes no more work. Quitting closes an alert's panel, which answers it, a moment before it is known as quitting.
void QVAlert::closeWhenWaited(bool forgetParent) {
  const auto close = [alert = shared_from_this(), forgetParent] {
    alert->closeAlert();
    if (forgetParent) alert->setParentWindow(nullptr);
  };
  if (MainThread::isCurrent()) return close();
  // Work that is dropped takes the promise with it, which ends the wait as well.
  auto promise = std::make_shared<std::promise<void>>();
  const std::future<void> closed = promise->get_future();
  MainThread::perform([close, promise = std::move(promise)] {
    close();
    promise->set_value();
  });
  while (!answer_->quitting && closed.wait_for(turnWhileClosing) != std::future_status::ready) {
  }
}

void QVAlert::startTimer(int interval) {
  try {
    std::thread([answer = answer_, interval] { answer->giveAfter(interval); }).detach();
  } catch (const std::system_error& error) {
    logToConsole("Alert error: no timer thread: %@", error.what());
  }
}

void QVAlert::wait() const {
  if (!MainThread::isCurrent()) {
    while (!answer_->ended && !answer_->quitting) std::this_thread::sleep_for(turnElsewhere);
    return;
  }
  QEventLoop loop;
  QTimer turn;
  QObject::connect(&turn, &QTimer::timeout, &loop, [this, &loop] {
    if (answer_->ended) loop.quit();
  });
  turn.start(turnOnMainThread);
  // The application's quitting ends every event loop, this one too.
  if (!answer_->ended) loop.exec();
  if (!answer_->ended) answer_->quitting = true;
}

void QVAlert::alertSheetWithDictionary(const Request& dictionary) {
  // Copies of their own: what the panel keeps shares no memory with the thread that asked.
  const auto text = [&dictionary](const char* key) {
    const QString shared = dictionary.value(QLatin1String(key));
    return shared.isNull() ? QString() : QString(shared.constData(), shared.size());
  };
  if (parentWindow_ && hasAttachedSheet(*parentWindow_)) setParentWindow(nullptr);
  if (parentWindow_) makeKeyAndOrderFront(*parentWindow_);

  AlertDelegate& delegate = delegate_ ? *delegate_ : *this;
  const AlertPanel::Texts texts{text("messageText"), text("informativeText"), text("defaultButtonTitle"),
                                text("alternateButtonTitle"), text("otherButtonTitle")};
  // The panel belongs to its parent, or to itself, until it is answered or closed.
  auto* const panel = std::make_unique<AlertPanel>(texts, parentWindow_).release();
  panel->setAnswered([self = shared_from_this(), panel, &delegate, selector = text("didEndSelector")](int returnCode) {
    const QPointer<AlertPanel> living = panel;
    delegate.performAlertDidEnd(selector, *self, returnCode, nullptr);
    // The panel that is waited for goes when the wait is over.
    if (living && (!self->waited_ || living != self->alert_)) living->deleteLater();
  });
  setAlert(panel);
  const QString keyPath = text("suppressionBinding");
  if (!keyPath.isNull()) bindSuppression(*panel, keyPath);
  QObject::connect(qApp, &QCoreApplication::aboutToQuit, panel, [panel, alert = weak_from_this()] {
    if (const std::shared_ptr<QVAlert> self = alert.lock()) self->applicationQuits();
    panel->hide();
  });
  panel->begin();
}

void QVAlert::bindSuppression(AlertPanel& panel, const QString& keyPath) {
  const bool on = UserDefaults::standard().valueForKeyPath(keyPath).toBool();
  panel.showSuppressionButton(on,
                              [keyPath](bool ticked) { UserDefaults::standard().setValueForKeyPath(ticked, keyPath); });
}

void QVAlert::applicationQuits() {
  // The waiting thread does not come back to this one.
  alert_.clear();
  parentWindow_.clear();
  answer_->quitting = true;
}

void QVAlert::alertDidEnd(QVAlert& /*alert*/, int returnCode, void* /*contextInfo*/) {
  setReturnCode(returnCode);
  setAlertEnded(true);
}

void QVAlert::defaultReturnAfterTimeInterval(int interval) {
  answer_->giveAfter(interval);
}

void QVAlert::closeAlert() {
  const std::shared_ptr<QVAlert> self = weak_from_this().lock();  // the panel may hold the last one
  const QPointer<AlertPanel> panel = std::exchange(alert_, nullptr);
  if (!panel) return;
  panel->orderOut();
  panel->deleteLater();
}

bool QVAlert::respondsToSelector(const QString& name) const {
  return name == defaultSelector();
}

void QVAlert::performAlertDidEnd(const QString& /*selector*/, QVAlert& alert, int returnCode, void* contextInfo) {
  alertDidEnd(alert, returnCode, contextInfo);
}

void QVAlert::setAlertEnded(bool ended) {
  if (!ended) answer_->given = Answer::nothing;
  answer_->ended = ended;
}

void QVAlert::setReturnCode(int code) {
  answer_->code = code;
  answer_->given = code;
}
