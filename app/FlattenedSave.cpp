#include "app/FlattenedSave.h"

#include <QApplication>
#include <QFile>
#include <QFileInfo>
#include <QProgressDialog>
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

/// Keeps the window alive until the writing is over. Nothing can be clicked before the sheet is there.
void showUntilFinished(Writing& writing, const QString& path, QWidget& window) {
  QProgressDialog sheet(QObject::tr("Saving %1…").arg(QFileInfo(path).fileName()), QObject::tr("Cancel"), 0, fullScale,
                        &window);
  sheet.setWindowModality(Qt::WindowModal);
  sheet.setMinimumDuration(shortest);
  sheet.setAutoClose(false);
  sheet.setAutoReset(false);
  while (!writing.finished) {
    sheet.setValue(writing.progress);
    const auto events = sheet.isVisible() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents;
    QApplication::processEvents(events | QEventLoop::WaitForMoreEvents, turn);
    if (sheet.wasCanceled()) writing.cancelled = true;
  }
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
