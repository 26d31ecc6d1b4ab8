#include "app/dialogs/FlattenedSave.h"

#include <QCoreApplication>
#include <QFile>
#include <atomic>
#include <utility>

#include "SharedFiles/log/QVLog.h"
#include "app/Subclasses/PlayableMovie.h"
#include "app/dialogs/BusySheet.h"
#include "app/messages/MessageWords.h"

movie::Result<WrittenCopy> writeFlattened(const PlayableMovie& movie, const QString& path, QWidget& window,
                                          const CopyWriter& write) {
  movie::Result<void> result;
  std::atomic<double> fraction = 0;
  const auto copy = movie.content().copy();
  const auto writing = [&](const std::stop_token& stop) {
    result = write(*copy, QFile::encodeName(path).toStdString(), [&](std::uint64_t done, std::uint64_t all) {
      fraction = all == 0 ? 1 : static_cast<double>(done) / static_cast<double>(all);
      return !stop.stop_requested();
    });
  };
  const QString label = QCoreApplication::translate("FlattenedSave", "Saving %1…").arg(MessageWords::nameOf(path));
  const bool cancelled =
      runUnderBusySheet(window, label, {.work = writing, .fraction = [&] { return fraction.load(); }});
  if (!result) return tl::make_unexpected(std::move(result.error()));
  if (cancelled) QVLog::appendLog("%@ was complete before it could be cancelled.", path);
  return WrittenCopy{.outranCancelling = cancelled};
}
