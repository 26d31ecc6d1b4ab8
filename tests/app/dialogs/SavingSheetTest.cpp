// The sheet over a copy that takes long.

#include <QDir>
#include <QLabel>
#include <QWindow>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <utility>

#include <gmock/gmock.h>

#include "tests/app/SaveFixture.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

/// A copy goes on step by step until it is let go, and stops only a while after it was told to.
class SavingSheet : public SaveFixture {
 protected:
  SavingSheet() {
    controller().setCopyWriter([this](movie::Movie& movie, const std::string& path, const auto& progress) {
      const auto slowly = [&](std::uint64_t done, std::uint64_t all) {
        constexpr std::uint64_t steps = 1000;
        bool goOn = true;
        for (std::uint64_t i = 1; i < steps && goOn && !letGo_; ++i) {
          std::this_thread::sleep_for(std::chrono::milliseconds(5));
          goOn = progress(i, steps);
        }
        if (!goOn) std::this_thread::sleep_for(std::chrono::milliseconds(150));
        return goOn && progress(done, all);
      };
      return movie.writeToFile(path, slowly);
    });
    load(plainMovie(), copyOf(retaggedMovie()));
  }

  /// Saves, and does that every few milliseconds while the sheet is up.
  void saveAsMeanwhile(const QString& target, const std::function<void(QDialog&)>& act) {
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
      if (QDialog* const sheet = sheetUp()) act(*sheet);
    });
    timer.start(10);
    saveAs(target);
  }
  void clickThroughTheWindow(QWidget* control) {
    QWidget& window = interface().window();
    const QPoint middle = control->mapTo(&window, control->rect().center());
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, middle);
  }
  QDialog* sheetUp() {
    for (auto* const each : interface().window().findChildren<QDialog*>()) {
      if (each->isVisible() && each->findChild<QProgressBar*>() != nullptr) return each;
    }
    return nullptr;
  }
  static QString textOf(QDialog& sheet) { return sheet.findChild<QLabel*>()->text(); }
  static QPushButton* cancelButton(QDialog& sheet) { return sheet.findChild<QPushButton*>(); }
  QStringList files() const { return QDir(home_.path()).entryList(QDir::Files | QDir::Hidden); }

  const QString target_ = home_.filePath("saved.mov");
  std::atomic<bool> letGo_ = false;
};

TEST_F(SavingSheet, ShowsHowFarTheCopyIs) {
  std::vector<int> values;
  saveAsMeanwhile(target_, [&](QDialog& sheet) {
    values.push_back(sheet.findChild<QProgressBar*>()->value());
    EXPECT_EQ(sheet.windowModality(), Qt::WindowModal);
    EXPECT_TRUE(textOf(sheet).contains("saved.mov"));
    if (values.size() > 20) letGo_ = true;
  });
  ASSERT_GT(values.size(), 20U);  // the event loop runs
  EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
  EXPECT_GT(values.back(), values.front());
  EXPECT_EQ(gammaOf(target_), gamma18);
  EXPECT_EQ(sheetUp(), nullptr);
}

TEST_F(SavingSheet, NamesTheFileAsItIsWhateverIsInItsName) {
  saveAsMeanwhile(home_.filePath("<b>a" + QString(100, 'x') + ".mov"), [&](QDialog& sheet) {
    EXPECT_EQ(sheet.findChild<QLabel*>()->textFormat(), Qt::PlainText);
    EXPECT_TRUE(textOf(sheet).startsWith("Saving <b>axxx")) << textOf(sheet).toStdString();
    EXPECT_LT(textOf(sheet).size(), 100) << "the middle is left out";
    letGo_ = true;
  });
  EXPECT_TRUE(letGo_);
}

TEST_F(SavingSheet, ComesUpAlsoOverACopyThatHasNotMovedYet) {
  controller().setCopyWriter([this](movie::Movie& movie, const std::string& path, const auto& progress) {
    while (!letGo_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return movie.writeToFile(path, progress);
  });
  saveAsMeanwhile(target_, [&](QDialog&) { letGo_ = true; });
  EXPECT_EQ(gammaOf(target_), gamma18);
}

TEST_F(SavingSheet, KeepsAwayWhileTheCopyIsQuick) {
  letGo_ = true;
  bool seen = false;
  saveAsMeanwhile(target_, [&](QDialog&) { seen = true; });
  EXPECT_FALSE(seen);
  EXPECT_EQ(gammaOf(target_), gamma18);
}

TEST_F(SavingSheet, LeavesTheOldFileWhenItIsCancelled) {
  copyOf(darkerMovie(), "saved.mov");
  const QStringList before = files();
  const auto dest = controller().destQTMov();
  const check::test::CapturedLog log;
  int afterwards = 0;
  saveAsMeanwhile(target_, [&](QDialog& sheet) {
    if (cancelButton(sheet)->isEnabled()) return QTest::mouseClick(cancelButton(sheet), Qt::LeftButton);
    ++afterwards;
    EXPECT_EQ(textOf(sheet), "Cancelling…");
  });
  EXPECT_GT(afterwards, 2);  // it stays as long as the writing does
  EXPECT_EQ(contents(target_), contents(darkerMovie()));
  EXPECT_EQ(files(), before);
  EXPECT_THAT(log.texts(), Contains(HasSubstr("it was cancelled")));
  EXPECT_TRUE(dest->content().standsAtItsPath());
}

TEST_F(SavingSheet, IsCancelledByEscapeAndByClosingIt) {
  for (const bool closed : {false, true}) {
    bool done = false;
    int afterwards = 0;
    saveAsMeanwhile(target_, [&](QDialog& sheet) {
      if (std::exchange(done, true)) {
        ++afterwards;
        return;
      }
      closed ? static_cast<void>(sheet.close()) : QTest::keyClick(&sheet, Qt::Key_Escape);
    });
    EXPECT_GT(afterwards, 2) << closed;
    EXPECT_FALSE(QFile::exists(target_)) << closed;
  }
}

TEST_F(SavingSheet, LetsNothingElseBePressed) {
  const check::test::CapturedLog log;
  int times = 0;
  saveAsMeanwhile(target_, [&](QDialog&) {
    for (QWidget* control : std::initializer_list<QWidget*>{interface().syncBtn, interface().saveBtn,
                                                            interface().saveAsBtn, interface().swapBtn}) {
      clickThroughTheWindow(control);
    }
    QTest::keyClick(interface().window().windowHandle(), Qt::Key_S, Qt::ControlModifier);
    if (++times == 5) letGo_ = true;
  });
  EXPECT_GE(times, 5);
  EXPECT_TRUE(log.texts().empty());
  EXPECT_EQ(panel(), nullptr);
  EXPECT_EQ(sourcePath(), plainMovie());
  clickThroughTheWindow(interface().swapBtn);  // the way that was taken does press buttons
  EXPECT_EQ(destPath(), plainMovie());
}

TEST_F(SavingSheet, CopiesTheMovieItBeganWithWhenOthersAreOpened) {
  saveAsMeanwhile(target_, [&](QDialog&) {
    if (!letGo_.exchange(true)) controller().applicationOpenFiles({blackMovie(), darkerMovie()});
  });
  EXPECT_EQ(gammaOf(target_), gamma18);
  EXPECT_EQ(pathOf(controller().sourceQTMov().get()), blackMovie());
  EXPECT_EQ(pathOf(controller().destQTMov().get()), darkerMovie());
}

TEST_F(SavingSheet, IsCancelledByQuitting) {
  const QStringList before = files();
  QTimer::singleShot(0, [&] {
    bool asked = false;
    saveAsMeanwhile(target_, [&](QDialog&) {
      if (!std::exchange(asked, true)) QCoreApplication::quit();
    });
  });
  QApplication::exec();
  EXPECT_EQ(files(), before);
}

TEST_F(SavingSheet, IsCancelledByQuittingBeforeItIsUp) {
  QTimer::singleShot(0, [&] {
    QTimer::singleShot(50, [] { QCoreApplication::quit(); });
    saveAs(target_);
  });
  QApplication::exec();
  EXPECT_FALSE(QFile::exists(target_));
}

TEST_F(SavingSheet, QuittingTakesTheSavePanelAway) {
  QTimer::singleShot(0, [&] {
    press(interface().saveAsBtn);
    panel()->selectFile(target_);
    QTimer::singleShot(50, [] { QCoreApplication::quit(); });
  });
  QApplication::exec();
  EXPECT_EQ(panel(), nullptr);
  EXPECT_FALSE(QFile::exists(target_));
}

TEST_F(SavingSheet, SaysThatACopyWasCompleteBeforeItCouldBeCancelled) {
  controller().setCopyWriter([](movie::Movie& movie, const std::string& path, const auto& progress) {
    const auto written = movie.writeToFile(path, {});
    while (progress(1, 1)) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return written;
  });
  const check::test::CapturedLog log;
  saveAsMeanwhile(target_, [&](QDialog& sheet) { QTest::mouseClick(cancelButton(sheet), Qt::LeftButton); });
  EXPECT_EQ(gammaOf(target_), gamma18);
  EXPECT_THAT(log.texts(), Contains(HasSubstr("was complete before it could be cancelled")));
}

}  // namespace
