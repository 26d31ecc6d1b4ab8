// Pictures of the window, for the documents and for eyes.
//
//   screenshots SOURCE DEST FOLDER    writes empty.png, loaded.png, report.png, alert.png, keys.png, preferences.png,
//                                     about.png, a picture of each menu, dark.png, and the smallest window in both
//                                     themes

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QMenu>
#include <QPalette>
#include <QStyle>
#include <QTemporaryDir>
#include <cstdio>
#include <functional>
#include <utility>

#include <unistd.h>

#include "SharedFiles/BundleInfo.h"
#include "SharedFiles/MainThread.h"
#include "SharedFiles/QVAlert.h"
#include "SharedFiles/QVLog.h"
#include "SharedFiles/UserDefaults.h"
#include "app/ApplicationIcon.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "check/GammaCheck.h"

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

class Screenshots {
 public:
  Screenshots(QString source, QString dest, QString folder)
      : source_(std::move(source)), dest_(std::move(dest)), folder_(std::move(folder)) {}

  bool take() {
    controller_.awakeFromNib();
    window().show();
    controller_.applicationDidFinishLaunching();
    save("empty", window());
    controller_.applicationOpenFiles({source_, dest_});
    runUntil([&] {
      return !interface_.source.movieView->picture().isNull() && !interface_.dest.movieView->picture().isNull();
    });
    save("loaded", window());
    controller_.checkAction();
    save("report", window());
    takeDialogs();
    takeMenus();
    QApplication::setPalette(darkPalette());
    save("dark", window());
    window().resize(window().minimumSize());
    save("smallest-dark", window());
    QApplication::setPalette(QApplication::style()->standardPalette());
    save("smallest", window());
    return ok_;
  }

 private:
  QWidget& window() { return interface_.window(); }

  void takeMenus() {
    for (const char* const name : {"fileMenu", "editMenu", "moviesMenu", "viewMenu", "helpMenu"}) {
      auto* const menu = window().findChild<QMenu*>(QLatin1String(name));
      menu->popup(window().mapToGlobal(QPoint()));
      save(name, *menu);
      menu->hide();
    }
  }

  void takeDialogs() {
    for (const auto& [name, action] :
         {std::pair("preferences", interface_.menus.preferences), std::pair("about", interface_.menus.about)}) {
      action->trigger();
      auto* const dialog = window().findChild<QDialog*>(QLatin1String(name));
      save(name, *dialog);
      dialog->close();
    }
    controller_.keys().show(window());
    save("keys", *window().findChild<QDialog*>(QStringLiteral("keys")));
    window().findChild<QDialog*>(QStringLiteral("keys"))->close();
    MainThread::perform([&] {
      QWidget* const sheet = QApplication::activeModalWidget();
      if (sheet == nullptr) return;
      save("alert", *sheet);
      sheet->close();
    });
    QVAlert::alertSheetWithMessageText(check::tooDarkMessageText, check::tooDarkInformativeText, &window());
  }

  void save(const char* name, QWidget& widget) {
    for (int i = 0; i < 10; ++i) QApplication::processEvents();
    const QString path = folder_ + u'/' + QLatin1String(name) + QStringLiteral(".png");
    const bool saved = widget.grab().save(path);
    std::printf("%s%s\n", saved ? "" : "cannot write ", qPrintable(path));
    ok_ = ok_ && saved;
  }

  QString source_, dest_, folder_;
  LinuxPathPlatform platform_{::getuid(), BundleInfo::mainBundle()};
  UserDefaults defaults_{platform_, BundleInfo::mainBundle()};
  MainInterface interface_;
  LumacheckAppDelegate controller_{interface_, defaults_};
  bool ok_ = true;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("usage: screenshots SOURCE DEST FOLDER\n", stderr);
    return 2;
  }
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  const QTemporaryDir home;
  qputenv("HOME", home.path().toUtf8());
  for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) qunsetenv(variable);
  QVLog::sharedController().setLoggingDisabled(true);
  QApplication application(argc, argv);
  QApplication::setWindowIcon(applicationIcon());
  const MainThread mainThread;
  return Screenshots(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]))
                 .take()
             ? 0
             : 1;
}
