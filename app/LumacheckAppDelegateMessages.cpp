// What the window tells of itself: the message line, the title, the tool tips, the recent pairs.

#include <QAction>
#include <QCheckBox>
#include <QFileInfo>
#include <QMenu>
#include <utility>

#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/messages/OpeningMessages.h"
#include "app/messages/WindowMessages.h"
#include "app/widgets/MessageLine.h"
#include "app/widgets/PlainToolTip.h"

namespace {

SideContent contentIn(const std::shared_ptr<PlayableMovie>& master) {
  if (!master || !master->content().file()) return SideContent::Nothing;
  return master->hasVideo() ? SideContent::Pictures : SideContent::NoPictures;
}

}  // namespace

/// An action may be carried out on a thread that is not the window's.
void LumacheckAppDelegate::tell(const Message& message) {
  QMetaObject::invokeMethod(this, [this, message] { interface_.messageLine->tell(message); });
}

void LumacheckAppDelegate::finish(const Message& message) {
  QMetaObject::invokeMethod(this, [this, message] {
    showState();
    interface_.messageLine->tell(message);
  });
}

void LumacheckAppDelegate::finishLoading(std::vector<Message> messages) {
  messages.push_back(rememberPair());
  finish(joined(std::move(messages)));
}

QString LumacheckAppDelegate::pathOf(const MovieSlot& movie) {
  return movie ? movie->path() : QString();
}

WindowState LumacheckAppDelegate::state() const {
  const MovieSlot dest = destQTMov();
  return {.source = contentIn(sourceQTMov()),
          .dest = contentIn(dest),
          .hasUnsavedChanges = dest && dest->content().hasUnsavedChanges(),
          .lastEquallyLong = interface_.linkBtn->isEnabled()};
}

void LumacheckAppDelegate::showState() {
  const WindowState now = stateWithScan();
  window_->setWindowTitle(WindowMessages::title(pathOf(sourceQTMov()), pathOf(destQTMov())));
  window_->setWindowModified(now.hasUnsavedChanges);
  interface_.tellWhyNot(now);
  interface_.showScanning(now);
  showVerdict();
  showScan();
}

void LumacheckAppDelegate::tellOfFullScreen(bool isFullScreen) {
  const Message message = WindowMessages::fullScreen();
  if (isFullScreen) return tell(message);
  if (interface_.messageLine->message() == message) tell({});
}

/// The paths as they are from every folder. Says so where the pair cannot be remembered.
Message LumacheckAppDelegate::rememberPair() {
  const QString source = pathOf(sourceQTMov()), dest = pathOf(destQTMov());
  if (source.isEmpty() || dest.isEmpty()) return {};
  const bool isStored = recentPairs_.add({QFileInfo(source).absoluteFilePath(), QFileInfo(dest).absoluteFilePath()});
  showRecentPairs();
  return isStored ? Message() : WindowMessages::settingsNotWritten();
}

void LumacheckAppDelegate::showRecentPairs() {
  const MenuBar& menus = interface_.menus;
  for (QAction* shown : menus.recentPairs->actions()) {
    if (shown == menus.endOfPairs) break;
    menus.recentPairs->removeAction(shown);
    shown->setParent(nullptr);
    shown->deleteLater();  // it may be the one that was chosen
  }
  const QList<MoviePair> pairs = recentPairs_.all();
  for (qsizetype i = 0; i < pairs.size(); ++i) {
    const MoviePair& pair = pairs[i];
    const QString digit = i < 9 ? "&" + QString::number(i + 1) : QStringLiteral("1&0");
    auto* const action =
        new QAction(digit + u' ' + WindowMessages::pairInMenu(pair.source, pair.dest), menus.recentPairs);
    action->setObjectName(QStringLiteral("recentPair%1").arg(i + 1));
    action->setToolTip(plainToolTip(WindowMessages::pairInTip(pair.source, pair.dest)));
    connect(action, &QAction::triggered, this, [this, pair] { openRecentPair(pair); });
    menus.recentPairs->insertAction(menus.endOfPairs, action);
  }
  menus.recentPairs->setEnabled(!pairs.isEmpty());
}

void LumacheckAppDelegate::openRecentPair(const MoviePair& pair) {
  QStringList missing;
  for (const QString& path : {pair.source, pair.dest}) {
    if (!QFileInfo::exists(path) && !missing.contains(path)) missing << path;
  }
  if (!missing.isEmpty()) return tell(OpeningMessages::pairIsGone(missing));
  applicationOpenFiles({pair.source, pair.dest});
}

void LumacheckAppDelegate::forgetRecentPairs() {
  tell(recentPairs_.forgetAll() ? OpeningMessages::pairsForgotten() : WindowMessages::settingsNotWritten());
  showRecentPairs();
}
