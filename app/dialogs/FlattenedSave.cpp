#include "app/dialogs/FlattenedSave.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <atomic>
#include <initializer_list>
#include <system_error>
#include <thread>

#include "SharedFiles/crash/handler/ThreadCrashStack.h"
#include "SharedFiles/log/QVLog.h"
#include "app/Subclasses/PlayableMovie.h"

namespace {

constexpr int fullScale = 1000, shortest = 500, turn = 20;  // the last two in ms

struct Writing {
  std::atomic<int> progress = 0;
  std::atomic<bool> cancelled = false, finished = false;

  bool tell(std::uint64_t done, std::uint64_t all) {
    progress =
        all == 0 ? fullScale : static_cast<int>(static_cast<double>(done) / static_cast<double>(all) * fullScale);
    return !cancelled;
  }
};

/// The sheet. Cancelling does not take it away: the writing ends when it comes to that. Whoever closes it (quitting
/// does) cancels too.
class SavingSheet : public QDialog {
  Q_DECLARE_TR_FUNCTIONS(SavingSheet)

 public:
  SavingSheet(Writing& writing, const QString& name, QWidget& window)
      : QDialog(&window), writing_(writing), label_(new QLabel(tr("Saving %1…").arg(name))), bar_(new QProgressBar) {
    setWindowModality(Qt::WindowModal);
    bar_->setRange(0, fullScale);
    bar_->setAccessibleName(label_->text());
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    cancelButton_ = buttons->button(QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::rejected, this, &SavingSheet::reject);
    auto* const column = new QVBoxLayout(this);
    for (QWidget* each : std::initializer_list<QWidget*>{label_, bar_, buttons}) column->addWidget(each);
    sinceBegin_.start();
  }

  /// Shows how far the writing is, once it takes long.
  void follow() {
    bar_->setValue(writing_.progress);
    if (!isVisible() && !writing_.finished && sinceBegin_.elapsed() >= shortest) show();
  }

  void reject() override {
    writing_.cancelled = true;
    cancelButton_->setEnabled(false);
    label_->setText(tr("Cancelling…"));
  }

 protected:
  void closeEvent(QCloseEvent* event) override {
    reject();
    event->accept();
  }

 private:
  Writing& writing_;
  QLabel* label_;
  QProgressBar* bar_;
  QPushButton* cancelButton_ = nullptr;
  QElapsedTimer sinceBegin_;
};

/// Keeps the window alive until the writing is over. Nothing can be clicked before the sheet is there. Quitting
/// cancels.
void showUntilFinished(Writing& writing, const QString& name, QWidget& window) {
  SavingSheet sheet(writing, name, window);
  QEventLoop beforeSheet, underSheet;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &sheet, [&] {
    sheet.follow();
    if (writing.finished || sheet.isVisible()) beforeSheet.quit();
    if (writing.finished) underSheet.quit();
  });
  timer.start(turn);
  beforeSheet.exec(QEventLoop::ExcludeUserInputEvents);
  if (!writing.finished) underSheet.exec();
  if (!writing.finished) writing.cancelled = true;
}

}  // namespace

movie::Result<void> writeCopy(movie::Movie& movie, const std::string& path, const movie::CopyProgress& progress) {
  return movie.writeToFile(path, progress);
}

movie::Result<void> writeFlattened(const PlayableMovie& movie, const QString& path, QWidget& window,
                                   const CopyWriter& write) {
  Writing writing;
  movie::Result<void> result;
  const auto copy = movie.content().copy();
  const std::string target = QFile::encodeName(path).toStdString();
  std::thread writer;
  try {
    writer = std::thread([&] {
      const crash::ThreadCrashStack crashStack;
      result = write(*copy, target, [&](std::uint64_t done, std::uint64_t all) { return writing.tell(done, all); });
      writing.finished = true;
    });
  } catch (const std::system_error& error) {
    return movie::failed(target, {movie::Reason::SystemSays, {movie::verbatim(error.code().message())}});
  }
  showUntilFinished(writing, QFileInfo(path).fileName(), window);
  writer.join();
  if (result && writing.cancelled) QVLog::appendLog("%@ was complete before it could be cancelled.", path);
  return result;
}
