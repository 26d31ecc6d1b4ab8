#include "app/FlattenedSave.h"

#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QProgressDialog>
#include <QTimer>
#include <atomic>
#include <thread>

#include "app/PlayableMovie.h"

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

/// Keeps the window alive until the writing is over. Nothing can be clicked before the sheet is there. Quitting
/// cancels.
void showUntilFinished(Writing& writing, const QString& path, QWidget& window) {
  QProgressDialog sheet(QObject::tr("Saving %1…").arg(QFileInfo(path).fileName()), QObject::tr("Cancel"), 0, fullScale,
                        &window);
  sheet.setWindowModality(Qt::WindowModal);
  sheet.setMinimumDuration(shortest);
  sheet.setAutoClose(false);
  sheet.setAutoReset(false);

  QEventLoop beforeSheet, underSheet;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &sheet, [&] {
    sheet.setValue(writing.progress);
    if (writing.finished || sheet.isVisible()) beforeSheet.quit();
    if (writing.finished) underSheet.quit();
  });
  QObject::connect(&sheet, &QProgressDialog::canceled, [&] { writing.cancelled = true; });
  timer.start(turn);
  beforeSheet.exec(QEventLoop::ExcludeUserInputEvents);
  if (!writing.finished) underSheet.exec();
  if (!writing.finished) writing.cancelled = true;
}

}  // namespace

movie::Result<void> writeFlattened(const PlayableMovie& movie, const QString& path, QWidget& window) {
  Writing writing;
  movie::Result<void> result;
  const auto copy = movie.content().copy();
  const std::string target = QFile::encodeName(path).toStdString();
  std::thread writer([&] {
    result = copy->writeToFile(target, [&](std::uint64_t done, std::uint64_t all) { return writing.tell(done, all); });
    writing.finished = true;
  });
  showUntilFinished(writing, path, window);
  writer.join();
  return result;
}
