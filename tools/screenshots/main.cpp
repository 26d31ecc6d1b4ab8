// Pictures of the window, for the documents and for eyes.
//
//   screenshots SOURCE DEST FOLDER    writes empty.png, loaded.png, report.png, parts.png (with a number at each part),
//                                     console.png (the whole report), verdict.png and verdict-stale.png, side.png (the
//                                     controls of one movie), the sheets too-dark.png, synced.png, saving.png and
//                                     consent.png, keys.png, preferences.png, about.png, a picture of each menu,
//                                     scan-running.png, scan.png, scan-stale.png and more of them (of the movies
//                                     reel.mov and reel-export.mov beside SOURCE), messages.png and messages-dark.png
//                                     (a line of each kind), refused.png, full-screen.png, dark.png, the smallest
//                                     window in both themes, and icon.png
//
// In the language of LUMACHECK_LANGUAGE, else in English. The fields show the movies in a folder that says nothing of
// this machine. window.txt beside the pictures says what the menus and the list of keys hold, a line for each: "menu",
// its title, the item's text; "keys", the keys, what they do.

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPalette>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QStyle>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <functional>
#include <thread>
#include <utility>

#include <unistd.h>

#include "SharedFiles/alerts/QVAlert.h"
#include "SharedFiles/analytics/AnalyticsController.h"
#include "SharedFiles/foundation/BundleInfo.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "SharedFiles/support/Workspace.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/dialogs/FlattenedSave.h"
#include "app/messages/OpeningMessages.h"
#include "app/messages/SaveMessages.h"
#include "app/scan/ScanStrip.h"
#include "app/scan/TimelineView.h"
#include "app/start/Translations.h"
#include "app/verdict/VerdictStrip.h"
#include "app/widgets/ApplicationIcon.h"
#include "app/widgets/Glyphs.h"
#include "app/widgets/MessageLine.h"
#include "app/widgets/ResultsView.h"
#include "app/widgets/TransportBar.h"
#include "check/GammaCheck.h"
#include "tools/screenshots/EmptyHome.h"

namespace {

void runUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  constexpr int patience = 10000, pause = 20;
  while (!condition() && timer.elapsed() < patience) QApplication::processEvents(QEventLoop::WaitForMoreEvents, pause);
  for (int i = 0; i < 10; ++i) QApplication::processEvents();
}

QPalette darkPalette() {
  QPalette dark(QColor(53, 53, 53), QColor(40, 40, 40));
  dark.setColor(QPalette::Base, QColor(30, 30, 30));
  dark.setColor(QPalette::Highlight, QColor(64, 128, 200));
  dark.setColor(QPalette::Disabled, QPalette::WindowText, QColor(120, 120, 120));
  dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 120, 120));
  return dark;
}

/// Where a part's badge stands: in its middle or towards one of its sides, and how far beyond that.
struct BadgePlace {
  QPoint side;
  int beyond = 0;

  /// The badge's middle, in the part's own coordinates.
  QPoint in(const QSize& part) const {
    return {(1 + side.x()) * part.width() / 2 + side.x() * beyond,
            (1 + side.y()) * part.height() / 2 + side.y() * beyond};
  }
};

constexpr BadgePlace above{{0, -1}, 13}, below{{0, 1}, 13}, right{{1, 0}, 13}, atEnd{{1, 0}, -18},
    nearTop{{0, -1}, -17}, atCorner{{1, -1}, 0}, inMiddle{};

/// A number in a disc, around a point.
void drawBadge(QPainter& painter, const QPoint& middle, int number) {
  constexpr int radius = 12;
  QFont font = painter.font();
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(QPen(Qt::white, 2));
  painter.setBrush(QColor(0xc2, 0x36, 0x22));
  painter.drawEllipse(middle, radius, radius);
  const QRect disc(middle - QPoint(radius, radius), QSize(2 * radius, 2 * radius));
  painter.drawText(disc, Qt::AlignCenter, QString::number(number));
}

class Screenshots {
 public:
  Screenshots(QString source, QString dest, QString folder)
      : source_(std::move(source)), dest_(std::move(dest)), folder_(std::move(folder)) {}

  bool take() {
    controller_.awakeFromNib();
    window().show();
    controller_.applicationDidFinishLaunching();
    save("empty", window());
    load();
    save("loaded", window());
    takeReport();
    takeDialogs();
    takeMenus();
    takeSheets();
    load();  // what the sync has edited is left behind
    takeRefused();
    load();
    takeFullScreen();
    takeScans();
    load();
    controller_.checkAction();
    takeThemes();
    constexpr int iconSide = 1024;
    write("icon", QPixmap::fromImage(applicationIconImage(iconSide)));
    return ok_;
  }

 private:
  QVQTWindow& window() { return interface_.window(); }

  void load() { load(source_, dest_); }

  void load(const QString& source, const QString& dest) {
    controller_.applicationOpenFiles({source, dest});
    for (const auto& [side, path] : {std::pair(&interface_.source, source), std::pair(&interface_.dest, dest)}) {
      side->filenameText->setText(QStringLiteral("/media/projects/spring/") + QFileInfo(path).fileName());
    }
    interface_.source.movieView->stepSeconds(1);
    const auto shown = [](const SideInterface& side) { return !side.movieView->picture().isNull(); };
    runUntil([&] { return shown(interface_.source) && shown(interface_.dest); });
  }

  void takeReport() {
    const QSize usual = window().size();
    controller_.checkAction();
    save("report", window());
    takeParts();
    takeVerdicts();
    const SideInterface& side = interface_.source;
    save("side", *side.transport->parentWidget());
    constexpr QSize tall(960, 1500);
    window().resize(tall);
    const auto& view = *interface_.resultsView;
    QApplication::processEvents();
    const int height = qRound(view.document()->size().height()) + 2 * view.frameWidth();
    save("console", *interface_.resultsView, {0, 0, view.width(), height});
    window().resize(usual);
  }

  void takeParts() {
    const SideInterface& side = interface_.source;
    const TransportBar& bar = *side.transport;
    QPixmap picture = window().grab();
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    int number = 0;
    const std::pair<const QWidget*, BadgePlace> parts[] = {{side.filenameText, atEnd},
                                                           {side.browseBtn, right},
                                                           {side.movieView, inMiddle},
                                                           {bar.playButton, above},
                                                           {bar.scrubber, above},
                                                           {bar.volumeSlider, above},
                                                           {side.timecodeText, above},
                                                           {interface_.linkBtn, right},
                                                           {interface_.swapBtn, below},
                                                           {interface_.checkBtn, atCorner},
                                                           {interface_.scanBtn, atCorner},
                                                           {interface_.syncBtn, atCorner},
                                                           {interface_.saveBtn, atCorner},
                                                           {interface_.saveAsBtn, atCorner},
                                                           {interface_.verdictStrip, nearTop},
                                                           {interface_.resultsView, inMiddle},
                                                           {interface_.messageLine, atEnd}};
    for (const auto& [part, where] : parts) {
      drawBadge(painter, part->mapTo(&window(), where.in(part->size())), ++number);
    }
    painter.end();
    write("parts", picture);
  }

  /// As found, and once the playheads have moved apart.
  void takeVerdicts() {
    save("verdict", *interface_.verdictStrip);
    interface_.linkBtn->setChecked(false);
    interface_.source.movieView->stepFrames(1);
    save("verdict-stale", *interface_.verdictStrip);
    interface_.source.movieView->stepFrames(-1);
    interface_.linkBtn->setChecked(true);
  }

  /// A line of each kind, one under the other.
  void takeMessages(const char* name) {
    movie::SaveOutcome saved;
    saved.place = movie::SavePlace::Slot;
    const Message messages[] = {
        OpeningMessages::opened(MovieSide::Source, QStringLiteral("source.mov"), {}),
        SaveMessages::saved(QStringLiteral("export.mov"), std::chrono::milliseconds(20), saved),
        SaveMessages::refused(QStringLiteral("export.mov"), {{}, {}, 0, movie::Reason::OpenForWriting}),
        OpeningMessages::refused(MovieSide::Destination, QStringLiteral("notes.mov"),
                                 {{}, {}, 0, movie::Reason::NotMovie})};
    constexpr int between = 8;
    MessageLine line;
    line.setFixedSize(720, line.sizeHint().height());
    QPixmap pictures[std::size(messages)];
    for (std::size_t i = 0; i < std::size(messages); ++i) {
      line.tell(messages[i]);
      pictures[i] = line.grab();
    }
    const QSize each = line.size() + QSize(0, between);
    QPixmap all(QSize(each.width() + 2 * between, each.height() * 4 + between) * window().devicePixelRatioF());
    all.setDevicePixelRatio(window().devicePixelRatioF());
    all.fill(QApplication::palette().color(QPalette::Window));
    QPainter painter(&all);
    for (int i = 0; i < 4; ++i) painter.drawPixmap(between, between + i * each.height(), pictures[i]);
    painter.end();
    write(name, all);
  }

  void takeRefused() {
    const QTemporaryDir folder;
    QFile notes(folder.filePath(QStringLiteral("notes.mov")));
    ok_ = ok_ && notes.open(QIODevice::WriteOnly) && notes.write("Not a movie.") > 0;
    notes.close();
    controller_.loadQTMovieWithPath(notes.fileName(), QStringLiteral("dest"));
    interface_.dest.filenameText->setText(QStringLiteral("/media/projects/spring/notes.mov"));
    save("refused", window());
  }

  void takeFullScreen() {
    window().setWindowState(window().windowState() | Qt::WindowFullScreen);
    save("full-screen", window());
    window().setWindowState(window().windowState() & ~Qt::WindowFullScreen);
    QApplication::processEvents();
  }

  void takeThemes() {
    takeMessages("messages");
    QApplication::setPalette(darkPalette());
    takeMessages("messages-dark");
    save("dark", window());
    window().resize(window().minimumSize());
    save("smallest-dark", window());
    QApplication::setPalette(QApplication::style()->standardPalette());
    save("smallest", window());
  }

  /// A movie against its export, which begins with something else and is darker in its second half.
  void takeScans() {
    const QString folder = QFileInfo(source_).absolutePath();
    load(folder + QStringLiteral("/reel.mov"), folder + QStringLiteral("/reel-export.mov"));
    const QSize usual = window().size();
    controller_.scanAction();
    const TimelineView& timeline = interface_.scanStrip->timeline();
    constexpr double some = 0.4;
    runUntil([&] { return timeline.timeline().done > some * timeline.timeline().seconds; });
    ok_ = ok_ && controller_.scanRun()->isRunning();
    save("scan-running", window());
    runUntil([&] { return !controller_.scanRun()->isRunning(); });
    constexpr double place = 0.7;
    controller_.goToScanned(place * timeline.timeline().seconds);
    controller_.checkAction();
    const auto shown = [](const SideInterface& side) { return !side.movieView->picture().isNull(); };
    runUntil([&] { return shown(interface_.source) && shown(interface_.dest); });
    save("scan", window());
    save("scan-strip", *interface_.scanStrip);
    QApplication::setPalette(darkPalette());
    save("scan-dark", window());
    window().resize(window().minimumSize());
    save("scan-smallest-dark", window());
    QApplication::setPalette(QApplication::style()->standardPalette());
    save("scan-smallest", window());
    takeSheet("scan-synced", [this] { controller_.syncMetadata(); });
    save("scan-stale", window());
    window().resize(usual);
    constexpr int asBefore = 370;
    window().findChild<QSplitter*>()->setSizes({asBefore, asBefore});
  }

  void takeMenus() {
    for (const char* const name : {"fileMenu", "editMenu", "moviesMenu", "viewMenu", "helpMenu"}) {
      auto* const menu = window().findChild<QMenu*>(QLatin1String(name));
      menu->popup(window().mapToGlobal(QPoint()));
      save(name, *menu);
      menu->hide();
      noteItems(*menu, menu->title());
    }
    save("recentPairs", *interface_.menus.recentPairs);
    noteKeys();
    writeWords();
  }

  /// Those of a menu in it too, but for the pairs.
  void noteItems(const QMenu& menu, const QString& title) {
    for (const QAction* action : menu.actions()) {
      if (action->isSeparator() || action->objectName().startsWith(QStringLiteral("recentPair1"))) continue;
      noteWords({"menu", QString(title).remove(u'&'), action->text().remove(u'&')});
      if (action->menu() != nullptr) noteItems(*action->menu(), title);
    }
  }

  void noteWords(const QStringList& words) { words_ << words.join(u'\t'); }

  void noteKeys() {
    for (const KeyRow& row : controller_.keys().rows()) {
      QStringList names;
      for (const QKeySequence& key : row.keys) names << key.toString();
      noteWords({"keys", names.join(u' '), row.what});
    }
  }

  void writeWords() {
    QFile file(folder_ + QStringLiteral("/window.txt"));
    const QByteArray text = words_.join(u'\n').toUtf8() + '\n';
    ok_ = ok_ && file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
  }

  void takeDialogs() {
    for (const auto& [name, action] :
         {std::pair("preferences", interface_.menus.preferences), std::pair("about", interface_.menus.about),
          std::pair("keys", interface_.menus.keys)}) {
      action->trigger();
      auto* const dialog = window().findChild<QDialog*>(QLatin1String(name));
      save(name, *dialog);
      dialog->close();
    }
  }

  void takeSheets() {
    takeSheet("too-dark", [this] {
      QVAlert::alertSheetWithMessageText(check::tooDarkMessageText, check::tooDarkInformativeText, &window());
    });
    takeSheet("synced", [this] { controller_.syncMetadata(); });
    takeSheet("saving", [this] {
      const auto slowWriter = [](movie::Movie& /*movie*/, const std::string& /*path*/,
                                 const movie::CopyProgress& progress) -> movie::Result<void> {
        while (progress(3, 8)) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        return {};
      };
      const auto written =
          writeFlattened(*controller_.destQTMov(), QStringLiteral("export-synced.mov"), window(), slowWriter);
      ok_ = ok_ && written;
    });
    takeConsent();
  }

  /// As on the third launch without an answer.
  void takeConsent() {
    constexpr int launchesBefore = 2;
    defaults_.setObject(launchesBefore, QStringLiteral("launchCount"));
    AnalyticsController analytics({.paths = platform_,
                                   .defaults = defaults_,
                                   .bundle = BundleInfo::mainBundle(),
                                   .workspace = Workspace::standard(),
                                   .now = [] { return QDateTime::currentDateTimeUtc(); },
                                   .osVersion = [] { return QString(); },
                                   .random = [] { return 0U; },
                                   .makeConnection = {},
                                   .endpoint = {},
                                   .moreInfo = {},
                                   .promptDelay = std::chrono::milliseconds(0)});
    takeSheet("consent", [&] { analytics.loadQC(&window()); });
  }

  /// A picture of the sheet that the act brings up, which is then closed.
  void takeSheet(const char* name, const std::function<void()>& act) {
    bool taken = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &window(), [&] {
      QWidget* const sheet = QApplication::activeModalWidget();
      if (sheet == nullptr || taken) return;
      taken = true;
      save(name, *sheet);
      sheet->close();
    });
    constexpr int pause = 20;
    timer.start(pause);
    act();
    runUntil([&] { return taken && QApplication::activeModalWidget() == nullptr; });
    ok_ = ok_ && taken;
  }

  void save(const char* name, QWidget& widget, const QRect& part = {}) {
    for (int i = 0; i < 10; ++i) QApplication::processEvents();
    write(name, part.isNull() ? widget.grab() : widget.grab(part));
  }

  void write(const char* name, const QPixmap& picture) {
    const QString path = folder_ + u'/' + QLatin1String(name) + QStringLiteral(".png");
    if (picture.save(path)) return;
    std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
    ok_ = false;
  }

  QString source_, dest_, folder_;
  LinuxPathPlatform platform_{::getuid(), BundleInfo::mainBundle()};
  UserDefaults defaults_{platform_, BundleInfo::mainBundle()};
  MainInterface interface_;
  LumacheckAppDelegate controller_{interface_, defaults_};
  QStringList words_;
  bool ok_ = true;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: screenshots SOURCE DEST FOLDER\n", stderr);
    return 2;
  }
  const EmptyHome home;
  QApplication application(argc, argv);
  QApplication::setWindowIcon(applicationIcon());
  const MainThread mainThread;
  const Translations translations({qEnvironmentVariable("LUMACHECK_LANGUAGE")},
                                  Translations::Folders::standard(QApplication::applicationDirPath()));
  const QStringList arguments = QApplication::arguments();
  return Screenshots(arguments[1], arguments[2], arguments[3]).take() ? 0 : 1;
}
