#include "app/BusySheet.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QVBoxLayout>
#include <atomic>
#include <system_error>
#include <thread>

#include "SharedFiles/QVLog.h"
#include "SharedFiles/crash/ThreadCrashStack.h"

namespace {

constexpr int shortest = 500, turn = 20;  // ms

class BusySheet : public QDialog {
 public:
  BusySheet(const QString& label, QWidget& window) : QDialog(&window) {
    setObjectName(QStringLiteral("busy"));
    setWindowModality(Qt::WindowModal);
    setWindowTitle(label);
    auto* const bar = new QProgressBar;
    bar->setRange(0, 0);
    bar->setAccessibleName(label);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(new QLabel(label));
    column->addWidget(bar);
    sinceBegin_.start();
  }

  void follow() {
    const QWidget* const modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal != this) giveWay();
    if (!gaveWay_ && !isVisible() && sinceBegin_.elapsed() >= shortest) show();
  }
  void reject() override {}
  /// Whether the user's input can do no harm: the sheet, or a question of the work's, stands before the window.
  bool covers() const { return isVisible() || gaveWay_; }

 protected:
  void closeEvent(QCloseEvent* event) override {
    gaveWay_ = true;
    event->accept();
  }

 private:
  void giveWay() {
    gaveWay_ = true;
    hide();
  }

  QElapsedTimer sinceBegin_;
  bool gaveWay_ = false;
};

void showUntil(const std::atomic<bool>& finished, const QString& label, QWidget& window) {
  BusySheet sheet(label, window);
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
  while (!finished) {  // the application quits: nobody is there to answer
    if (QWidget* const asked = QApplication::activeModalWidget()) asked->close();
    loop.processEvents(QEventLoop::WaitForMoreEvents);
  }
}

}  // namespace

void runUnderBusySheet(QWidget& window, const QString& label, const std::function<void()>& work) {
  std::atomic<bool> finished = false;
  std::thread worker;
  try {
    worker = std::thread([&] {
      const crash::ThreadCrashStack crashStack;
      work();
      finished = true;
    });
  } catch (const std::system_error& error) {
    QVLog::appendLog("No thread could be started: %@", QString::fromLocal8Bit(error.what()));
    return work();
  }
  showUntil(finished, label, window);
  worker.join();
}
