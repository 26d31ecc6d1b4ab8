#include <QApplication>
#include <QFileInfo>
#include <QLocale>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "SharedFiles/crash/CrashReporting.h"
#include "SharedFiles/foundation/MainThread.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "SharedFiles/tasks/FileNameBytes.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "app/player/device/QtSoundOutput.h"
#include "app/start/QuitSignals.h"
#include "app/start/SingleInstance.h"
#include "app/start/Translations.h"
#include "app/widgets/ApplicationIcon.h"
#include "system/StandardDescriptors.h"

namespace {

/// Qt ends the process with an abort when there is no screen; a sentence is better.
bool hasScreen() {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* const value = std::getenv(variable);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

/// Whether the command line asks for a few words and no window. They are said then.
bool onlyAsks(int argc, char** argv) {
  const std::string_view asked = argc == 2 ? argv[1] : "";
  if (asked == "--version") std::puts("Lumacheck " LUMACHECK_VERSION);
  if (asked == "--help" || asked == "-h") {
    std::puts(
        "Usage: Lumacheck [SOURCE [DEST]]\n\n"
        "Opens a window on a source movie and an export of it, or hands them to the window that is open.\n"
        "Its Help menu has the user manual. The command `lumacheck` does the same without a window.");
  }
  return asked == "--version" || asked == "--help" || asked == "-h";
}

/// The files named on the command line, as full paths. Options are Qt's own and gone already.
QStringList filesOf(int argc, char** argv) {
  QStringList files;
  for (int i = 1; i < argc; ++i) {
    if (const auto name = fileNameAsText(argv[i])) {
      files << QFileInfo(*name).absoluteFilePath();
    } else {
      std::fprintf(stderr, "Lumacheck: this name is not UTF-8, so the file is not opened: %s\n", argv[i]);
    }
  }
  return files;
}

void bringToFront(QWidget& window) {
  window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
  window.show();
  window.raise();
  window.activateWindow();
}

}  // namespace

int main(int argc, char** argv) {
  sys::keepStandardDescriptorsTaken();
  if (onlyAsks(argc, argv)) return 0;
  if (!hasScreen()) {
    std::fputs("Lumacheck: there is no screen to open a window on. The command `lumacheck check` needs none.\n",
               stderr);
    return 2;
  }
  installCrashReporting();
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Lumacheck"));
  QApplication::setDesktopFileName(QStringLiteral("com.quorvane.Lumacheck"));
  QApplication::setWindowIcon(applicationIcon());
  const MainThread mainThread;
  const QuitSignals quitSignals;
  const Translations translations(QLocale::system().uiLanguages(),
                                  Translations::Folders::standard(QApplication::applicationDirPath()));

  const QStringList files = filesOf(argc, argv);
  SingleInstance instance(SingleInstance::standardName());
  if (instance.handOver(files)) return 0;

  MainInterface interface([] { return new QVMovieView(std::make_unique<player::QtSoundOutput>()); });
  LumacheckAppDelegate controller(interface, UserDefaults::standard());
  QApplication::setQuitOnLastWindowClosed(LumacheckAppDelegate::applicationShouldTerminateAfterLastWindowClosed());
  QObject::connect(&application, &QApplication::aboutToQuit, &controller,
                   &LumacheckAppDelegate::applicationWillTerminate);
  // Work that is still to end may run the event loop meanwhile: what comes then would be opened in a window that goes.
  QObject::connect(&application, &QApplication::lastWindowClosed, &instance, &SingleInstance::leave);
  QObject::connect(&application, &QApplication::aboutToQuit, &instance, &SingleInstance::leave);
  QObject::connect(&instance, &SingleInstance::filesOpened, &controller, [&](const QStringList& opened) {
    bringToFront(interface.window());
    controller.applicationOpenFiles(opened);
  });
  interface.softwareUpdate.awakeFromNib();
  controller.awakeFromNib();
  interface.window().show();
  controller.applicationDidFinishLaunching();
  controller.applicationOpenFiles(files);
  return QApplication::exec();
}
