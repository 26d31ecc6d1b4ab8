#include "app/dialogs/BusySheet.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <atomic>
#include <system_error>
#include <thread>

#include "SharedFiles/crash/handler/ThreadCrashStack.h"
#include "SharedFiles/log/QVLog.h"

namespace {

constexpr int shortest = 500, turn = 20, afterQuestion = 400;  // ms
constexpr int narrowest = 280, fullScale = 1000;

class BusySheet : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(BusySheet)

 public:
  BusySheet(const QString& label, const LongWork& work, std::stop_source& stop, QWidget& window)
      : QDialog(&window),
        work_(work),
        stop_(stop),
        label_(new QLabel(label)),
        bar_(new QProgressBar),
        buttons_(new QDialogButtonBox(QDialogButtonBox::Cancel)) {
    setObjectName(QStringLiteral("busy"));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(label);
    label_->setTextFormat(Qt::PlainText);  // there may be a file's name in it
    bar_->setRange(0, work.fraction ? fullScale : 0);
    bar_->setMinimumWidth(narrowest);
    bar_->setAccessibleName(label);
    connect(buttons_, &QDialogButtonBox::rejected, this, &BusySheet::reject);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(label_);
    column->addWidget(bar_);
    if (work.progress) {
      column->addWidget(line_ = new QLabel(work.progress()));
      line_->setObjectName(QStringLiteral("progress"));
    }
    column->addWidget(buttons_);
    sinceBegin_.start();
  }

  void follow() {
    if (line_ != nullptr) line_->setText(work_.progress());
    if (work_.fraction) bar_->setValue(static_cast<int>(work_.fraction() * fullScale));
    const QWidget* const modal = QApplication::activeModalWidget();
    isAsked_ = modal != nullptr && modal != this;
    if (isAsked_) {
      hide();
      sinceAsked_.restart();
    }
    const bool isOver = !sinceAsked_.isValid() || sinceAsked_.elapsed() >= afterQuestion;
    if (!covers() && !gaveWay_ && isOver && sinceBegin_.elapsed() >= shortest) show();
  }
  /// Cancelling does not take the sheet away: the work ends when it comes to that.
  void reject() override {
    stop_.request_stop();
    buttons_->setEnabled(false);
    label_->setText(tr("Cancelling…"));
  }
  /// For good: the application quits.
  void giveWay() {
    gaveWay_ = true;
    hide();
  }
  /// Whether the user's input can do no harm: the sheet, or a question, stands before the window.
  bool covers() const { return isVisible() || isAsked_; }

 protected:
  /// Whoever closes it cancels. Only quitting takes it away.
  void closeEvent(QCloseEvent* event) override {
    reject();
    event->setAccepted(!event->spontaneous());
  }

 private:
  const LongWork& work_;
  std::stop_source& stop_;
  QLabel *label_, *line_ = nullptr;
  QProgressBar* bar_;
  QDialogButtonBox* buttons_;
  QElapsedTimer sinceBegin_, sinceAsked_;
  bool gaveWay_ = false, isAsked_ = false;
};

void showUntil(const std::atomic<bool>& finished, BusySheet& sheet) {
  QEventLoop beforeSheet, loop;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &sheet, [&] {
    if (!finished) sheet.follow();
    if (finished || sheet.covers()) beforeSheet.quit();
    if (finished) loop.quit();
  });
  timer.start(turn);
  beforeSheet.exec(QEventLoop::ExcludeUserInputEvents);
  if (!finished) loop.exec();
  if (finished) return;
  sheet.reject();  // the application quits: nobody is there to answer
  sheet.giveWay();
  while (!finished) {
    if (QWidget* const asked = QApplication::activeModalWidget()) asked->close();
    loop.processEvents(QEventLoop::WaitForMoreEvents);
  }
}

}  // namespace

bool runUnderBusySheet(QWidget& window, const QString& label, const LongWork& work) {
  std::atomic<bool> finished = false;
  std::stop_source stop;
  std::thread worker;
  try {
    worker = std::thread([&] {
      const crash::ThreadCrashStack crashStack;
      work.work(stop.get_token());
      finished = true;
    });
  } catch (const std::system_error& error) {
    QVLog::appendLog("No thread could be started: %@", QString::fromLocal8Bit(error.what()));
    work.work({});
    return false;
  }
  {
    BusySheet sheet(label, work, stop, window);
    showUntil(finished, sheet);
  }
  worker.join();
  return stop.stop_requested();
}
