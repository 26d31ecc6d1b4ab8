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

constexpr int shortest = 500, turn = 20;  // ms
constexpr int narrowest = 280;

class BusySheet : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(BusySheet)

 public:
  /// `progress` is null for work that cannot be stopped.
  BusySheet(const QString& label, const std::function<QString()>& progress, std::stop_source& stop, QWidget& window)
      : QDialog(&window), progress_(progress), stop_(stop), label_(new QLabel(label)) {
    setObjectName(QStringLiteral("busy"));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(label);
    auto* const bar = new QProgressBar;
    bar->setRange(0, 0);
    bar->setMinimumWidth(narrowest);
    bar->setAccessibleName(label);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(label_);
    column->addWidget(bar);
    if (progress_) addStopping(*column);
    sinceBegin_.start();
  }

  void follow() {
    if (progress_) line_->setText(progress_());
    const QWidget* const modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != this) giveWay();
    if (!gaveWay_ && !isVisible() && sinceBegin_.elapsed() >= shortest) show();
  }
  /// Cancelling does not take the sheet away: the work ends when it comes to that.
  void reject() override {
    if (!progress_) return;
    stop_.request_stop();
    cancelButton_->setEnabled(false);
    label_->setText(tr("Cancelling…"));
  }
  /// Whether the user's input can do no harm: the sheet, or a question of the work's, stands before the window.
  bool covers() const { return isVisible() || gaveWay_; }

 protected:
  /// Quitting closes it; the user's closing it is his Cancel, and it stays until the work has ended.
  void closeEvent(QCloseEvent* event) override {
    reject();
    if (event->spontaneous()) return event->ignore();
    gaveWay_ = true;
    event->accept();
  }

 private:
  void addStopping(QVBoxLayout& column) {
    line_ = new QLabel(progress_());
    line_->setObjectName(QStringLiteral("progress"));
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    cancelButton_ = buttons->button(QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::rejected, this, &BusySheet::reject);
    column.addWidget(line_);
    column.addWidget(buttons);
  }
  void giveWay() {
    gaveWay_ = true;
    hide();
  }

  const std::function<QString()>& progress_;
  std::stop_source& stop_;
  QLabel *label_, *line_ = nullptr;
  QPushButton* cancelButton_ = nullptr;
  QElapsedTimer sinceBegin_;
  bool gaveWay_ = false;
};

void showUntil(const std::atomic<bool>& finished, BusySheet& sheet) {
  QEventLoop beforeSheet, loop;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &sheet, [&] {
    sheet.follow();
    if (finished || sheet.covers()) beforeSheet.quit();
    if (finished) loop.quit();
  });
  timer.start(turn);
  beforeSheet.exec(QEventLoop::ExcludeUserInputEvents);
  if (!finished) loop.exec();
  if (!finished) sheet.reject();
  while (!finished) {  // the application quits: nobody is there to answer
    if (QWidget* const asked = QApplication::activeModalWidget()) asked->close();
    loop.processEvents(QEventLoop::WaitForMoreEvents);
  }
}

void runUnderSheet(QWidget& window, const QString& label, const std::function<void(const std::stop_token&)>& work,
                   const std::function<QString()>& progress) {
  std::atomic<bool> finished = false;
  std::stop_source stop;
  std::thread worker;
  try {
    worker = std::thread([&] {
      const crash::ThreadCrashStack crashStack;
      work(stop.get_token());
      finished = true;
    });
  } catch (const std::system_error& error) {
    QVLog::appendLog("No thread could be started: %@", QString::fromLocal8Bit(error.what()));
    return work({});
  }
  {
    BusySheet sheet(label, progress, stop, window);
    showUntil(finished, sheet);
  }
  worker.join();
}

}  // namespace

void runUnderBusySheet(QWidget& window, const QString& label, const std::function<void()>& work) {
  runUnderSheet(window, label, [&](const std::stop_token& /*stop*/) { work(); }, {});
}

void runUnderBusySheet(QWidget& window, const QString& label, const StoppableWork& work) {
  runUnderSheet(window, label, work.work, work.progress);
}
