#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <random>

#include "app/widgets/TransportBar.h"
#include "tests/app/WindowFixture.h"

namespace {

/// A user with no plan. Sheets that come up are answered by and by.
class RandomActions : public WindowFixture {
 protected:
  RandomActions() {
    const QString movies[] = {plainMovie(),    retaggedMovie(),  darkerMovie(), blackMovie(),  longMovie(),
                              longNtscMovie(), dropFrameMovie(), soundMovie(),  groupedMovie()};
    for (const QString& movie : movies) {
      files_ << home_.filePath(QFileInfo(movie).fileName());  // they get saved
      EXPECT_TRUE(QFile::copy(movie, files_.back()));
      QFile::setPermissions(files_.back(), QFile::ReadOwner | QFile::WriteOwner);
    }
    launch();
    QObject::connect(&answers_, &QTimer::timeout, [] {
      if (QWidget* const sheet = QApplication::activeModalWidget()) sheet->close();
    });
    answers_.start(50);
  }

  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  QString anyFile() {
    const QStringList all = files_ + QStringList{home_.path(), "/nowhere", ""};
    return all[below(static_cast<int>(all.size()))];
  }
  SideInterface& anySide() { return below(2) == 0 ? interface().source : interface().dest; }
  QVMovieView& anyView() { return *anySide().movieView; }

  void drop() {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(anyFile()), QUrl::fromLocalFile(anyFile())});
    anyView().performDragOperation(data);
  }
  void scrub() {
    QSlider& scrubber = *anySide().transport->scrubber;
    const auto place = [&] { return QPoint(below(scrubber.width()), scrubber.height() / 2); };
    QTest::mousePress(&scrubber, Qt::LeftButton, Qt::NoModifier, place());
    for (int i = below(20); i > 0; --i) QTest::mouseMove(&scrubber, place());
    QTest::mouseRelease(&scrubber, Qt::LeftButton, Qt::NoModifier, place());
  }
  void pressKey() {
    const Qt::Key keys[] = {Qt::Key_Space, Qt::Key_J,       Qt::Key_K,      Qt::Key_L,   Qt::Key_Left,
                            Qt::Key_Right, Qt::Key_Comma,   Qt::Key_Home,   Qt::Key_End, Qt::Key_F1,
                            Qt::Key_Tab,   Qt::Key_Backtab, Qt::Key_Return, Qt::Key_A,   Qt::Key_F11};
    QWidget* const focused = interface().window().focusWidget();
    if (focused != nullptr) QTest::keyClick(focused, keys[below(std::size(keys))]);
  }
  void typeTimecode() {
    const char* const texts[] = {"5", "01:00:01:00", "", "junk", "1.", "00:00:20;02", "-3"};
    type(*anySide().timecodeText, texts[below(std::size(texts))]);
  }
  /// Mostly over a file that is loaded or will be.
  void saveAs() {
    if (!mayShowFilePanels()) return;
    QTest::mouseClick(interface().saveAsBtn, Qt::LeftButton);
    for (auto* const panel : interface().window().findChildren<QFileDialog*>()) {
      if (!panel->isVisible()) continue;
      panel->selectFile(below(4) == 0 ? home_.filePath("saved.mov") : files_[below(static_cast<int>(files_.size()))]);
      static_cast<QDialog*>(panel)->done(below(4) == 0 ? QDialog::Rejected : QDialog::Accepted);
    }
  }
  /// Anything but the end, and the gathering of logs, which starts other programs.
  void chooseFromMenus() {
    const char* const names[] = {"openSource",   "openDest",    "save",        "saveAs",      "preferences",
                                 "check",        "sync",        "swap",        "link",        "fullScreen",
                                 "userManual",   "keys",        "vextrelHome", "support",     "reportBug",
                                 "quorvaneHome", "scan",        "scan",        "updateCheck", "suggestFeature",
                                 "viewLog",      "viewTaskLog", "about",       "undo",        "redo",
                                 "cut",          "copy",        "paste",       "selectAll"};
    const char* const name = names[below(std::size(names))];
    // Qt paints the large icon of "about" on threads of its own, too.
    const bool bringsThreads = QByteArrayList{"openSource", "openDest", "save", "saveAs", "about"}.contains(name);
    if (!bringsThreads || mayShowFilePanels()) menuAction(name).trigger();
  }
  void act() {
    switch (below(17)) {
      case 0:
        return controller().applicationOpenFiles({anyFile(), anyFile()});
      case 1:
        return drop();
      case 2:
        return anyView().play(below(9) - 4);
      case 3:
        return anyView().togglePlaying();
      case 4:
        return scrub();
      case 5:
        return QTest::mouseClick(interface().swapBtn, Qt::LeftButton);
      case 6:
        return typeTimecode();
      case 7:
        return QTest::mouseClick(interface().checkBtn, Qt::LeftButton);
      case 8:
        return interface().linkBtn->click();
      case 9:
        return pressKey();
      case 10:
        return type(*anySide().filenameText, anyFile());
      case 11:
        return anyView().setVolume(below(11) / 10.0);
      case 12:
        return QTest::mouseClick(interface().syncBtn, Qt::LeftButton);
      case 13:
        // What cannot be saved in place asks for another.
        return mayShowFilePanels() ? QTest::mouseClick(interface().saveBtn, Qt::LeftButton) : void();
      case 14:
        return saveAs();
      case 15:
        return chooseFromMenus();
      default:
        return interface().window().resize(900 + below(500), 600 + below(300));
    }
  }
  void actAtRandom(int times) {
    for (; times > 0; --times) {
      act();
      runFor(below(30));
    }
  }
  struct Resources {
    QStringList threads, descriptors;
  };
  static Resources resources() {
    const auto anything = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
    QStringList files;
    for (const QFileInfo& file : QDir("/proc/self/fd").entryInfoList(anything)) files << file.symLinkTarget();
    return {QDir("/proc/self/task").entryList(anything), files};
  }
  static bool isMore(const Resources& now, const Resources& before) {
    return now.threads.size() > before.threads.size() || now.descriptors.size() > before.descriptors.size();
  }
  Resources resourcesOnceNothingIsLoaded() {
    load("/nowhere", "/nowhere");
    runFor(200);
    return resources();
  }

  /// Every movie is one still, whatever was saved over it.
  void expectWholeMovies() {
    for (const QString& file : files_) EXPECT_FALSE(PlayableMovie::refusalOf(file)) << file.toStdString();
    EXPECT_TRUE(QDir(home_.path()).entryList({"*.partial"}, QDir::Files | QDir::Hidden).isEmpty());
  }

  QStringList files_;
  std::mt19937 random_{20261121};
  QTimer answers_;
};

TEST_F(RandomActions, LeaveTheWindowAnswering) {
  actAtRandom(100);  // what the toolkit keeps for good, it has then
  const Resources before = resourcesOnceNothingIsLoaded();
  actAtRandom(200);
  Resources after = resourcesOnceNothingIsLoaded();
  // A thread of the toolkit's, or of the decoder's, may take its time to end.
  waitUntil([&] { return !isMore(after = resources(), before); });
  EXPECT_FALSE(isMore(after, before)) << after.threads.size() << " threads, before " << before.threads.size()
                                      << "; open: " << after.descriptors.join(", ").toStdString()
                                      << "; before: " << before.descriptors.join(", ").toStdString();

  expectWholeMovies();
  load(plainMovie(), retaggedMovie());
  EXPECT_TRUE(waitUntil([&] { return !sourceView().picture().isNull() && !destView().picture().isNull(); }));
  QTest::mouseClick(interface().checkBtn, Qt::LeftButton);
  EXPECT_TRUE(interface().resultsView->toPlainText().contains("Source gamma metadata: 2.20"));
}

}  // namespace
