#pragma once

#include <QMap>
#include <QPointer>
#include <QString>
#include <atomic>
#include <limits>
#include <memory>

#include "SharedFiles/alerts/AlertPanel.h"

class QVAlert;
class QWidget;

/// Who is told how an alert ended.
class AlertDelegate {
 public:
  virtual ~AlertDelegate() = default;
  /// Whether it takes the end message of that name. Asked on the thread that asks for the alert.
  virtual bool respondsToSelector(const QString& name) const = 0;
  /// The end message, on the main thread, once the panel is off the screen. contextInfo is always null.
  virtual void performAlertDidEnd(const QString& selector, QVAlert& alert, int returnCode, void* contextInfo) = 0;
};

/// An alert, shown as a sheet on a window. The class operations may be called from any thread, the main thread included
/// and inside an event handler too; other threads need the process's MainThread. While it waits, the main thread
/// dispatches events.
///
/// The answers: 1 the default button, 0 the alternate one, -1 the other one. -1 also stands for an alert that was not
/// waited for or could not be shown, whose parent window was destroyed, or that the end of the application cut short.
/// A nil title (an empty one as well) is "OK" for the default button and no button for the other two. What Return,
/// Escape and the window manager answer is told in AlertPanel.h.
///
/// An alert comes up without a parent, blocking all windows, when it has none, when the parent has a sheet already, and
/// when the parent is gone by then.
class QVAlert final : public AlertDelegate, public std::enable_shared_from_this<QVAlert> {
  struct Made {};  ///< lets only create() construct

 public:
  /// The keys are messageText, defaultButtonTitle, alternateButtonTitle, otherButtonTitle, informativeText,
  /// didEndSelector (always present) and suppressionBinding.
  using Request = QMap<QString, QString>;

  static std::shared_ptr<QVAlert> create() { return std::make_shared<QVAlert>(Made{}); }
  explicit QVAlert(Made /*made*/) {}
  QVAlert(const QVAlert&) = delete;
  QVAlert& operator=(const QVAlert&) = delete;

  /// alertSheetWithMessageText:informativeText:parentWindow:
  /// Returns when the user has pressed the button.
  static void alertSheetWithMessageText(const QString& messageText, const QString& informativeText,
                                        QWidget* parentWindow) {
    alertSheetWithMessageText(messageText, {}, {}, {}, informativeText, parentWindow, true);
  }

  /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:parentWindow:block:
  /// Always waits for the answer: the flag is ignored.
  static int alertSheetWithMessageText(const QString& messageText, const QString& defaultButton,
                                       const QString& alternateButton, const QString& otherButton,
                                       const QString& informativeText, QWidget* parentWindow, bool /*block*/) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton, informativeText,
                                     parentWindow, nullptr, {}, true, nullptr);
  }

  /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:parentWindow:delegate:
  /// didEndSelector:block:
  /// Always waits for the answer and tells no delegate: the last three arguments are ignored.
  static int alertSheetWithMessageText(const QString& messageText, const QString& defaultButton,
                                       const QString& alternateButton, const QString& otherButton,
                                       const QString& informativeText, QWidget* parentWindow,
                                       AlertDelegate* /*delegate*/, const QString& /*didEndSelector*/, bool block) {
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton, informativeText,
                                     parentWindow, block);
  }

  /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:parentWindow:delegate:
  /// didEndSelector:block:alertObject:
  /// alertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:parentWindow:delegate:
  /// didEndSelector:block:alertObject:suppressionBinding:
  /// The full form. Nil takes a new alert, the alert as its own delegate, and alertDidEnd:returnCode:contextInfo:. The
  /// delegate must live until it is told. The wait ends when alertEnded is set; a delegate of one's own sets it,
  /// through alertDidEnd() or setAlertEnded(), or the caller waits on. Not waiting, it returns -1 at once, and the
  /// alert lives until it is answered. A suppression key path shows a switch that is bound to that user default: it
  /// shows the stored value and stores each change at once.
  static int alertSheetWithMessageText(const QString& messageText, const QString& defaultButton,
                                       const QString& alternateButton, const QString& otherButton,
                                       const QString& informativeText, QWidget* parentWindow, AlertDelegate* delegate,
                                       const QString& didEndSelector, bool block,
                                       const std::shared_ptr<QVAlert>& alertObject,
                                       const QString& suppressionBinding = {});

  /// timedAlertSheetWithMessageText:defaultButton:alternateButton:otherButton:informativeText:parentWindow:interval:
  /// Answers itself with the default button after so many seconds.
  static int timedAlertSheetWithMessageText(const QString& messageText, const QString& defaultButton,
                                            const QString& alternateButton, const QString& otherButton,
                                            const QString& informativeText, QWidget* parentWindow, int interval);

  /// alertSheetWithDictionary: shows the alert. On the main thread.
  void alertSheetWithDictionary(const Request& dictionary);
  /// alertDidEnd:returnCode:contextInfo: the default end message: stores the answer. Any thread.
  void alertDidEnd(QVAlert& alert, int returnCode, void* contextInfo);
  /// defaultReturnAfterTimeInterval: sleeps so many seconds, then answers with the default button. For a thread of its
  /// own. An answer given by then stays what the waiting caller gets; the stored code becomes 1 all the same.
  void defaultReturnAfterTimeInterval(int interval);
  /// closeAlert: takes the panel off the screen, telling nobody. On the main thread.
  void closeAlert();

  bool respondsToSelector(const QString& name) const override;
  void performAlertDidEnd(const QString& selector, QVAlert& alert, int returnCode, void* contextInfo) override;

  // On the main thread, or before the alert is asked for and after it has ended.
  QWidget* parentWindow() const { return parentWindow_; }  ///< null as well once it is destroyed
  void setParentWindow(QWidget* window) { parentWindow_ = window; }
  AlertDelegate* delegate() const { return delegate_; }
  void setDelegate(AlertDelegate* delegate) { delegate_ = delegate; }
  AlertPanel* alert() const { return alert_; }  ///< null before, and after it is closed
  void setAlert(AlertPanel* panel) { alert_ = panel; }

  // From any thread.
  bool alertEnded() const { return answer_->ended; }
  void setAlertEnded(bool ended);
  int returnCode() const { return answer_->code; }
  void setReturnCode(int code);

 private:
  /// What threads share; a timer keeps it for longer than the alert lives.
  struct Answer {
    std::atomic<bool> ended = false;
    std::atomic<int> code = 0;  ///< returnCode
    static constexpr int nothing = std::numeric_limits<int>::min();
    std::atomic<int> given = nothing;  ///< what the waiting caller gets: the code without a late timer's
    std::atomic<bool> quitting = false;
    void giveAfter(int interval);
  };

  struct Question;
  static int ask(const Question& question);
  void startTimer(int interval);
  void wait() const;
  void closeWhenWaited(bool forgetParent);
  void bindSuppression(AlertPanel& panel, const QString& keyPath);
  void applicationQuits();

  const std::shared_ptr<Answer> answer_ = std::make_shared<Answer>();
  QPointer<QWidget> parentWindow_;
  AlertDelegate* delegate_ = nullptr;
  QPointer<AlertPanel> alert_;
  bool waited_ = false;  ///< the caller waits and closes the panel; on the main thread only
};
