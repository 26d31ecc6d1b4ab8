#pragma once

#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include <memory>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "app/LumacheckAppDelegate.h"
#include "app/MainInterface.h"
#include "tests/SharedFiles/EnvironmentGuard.h"

class QAction;
class QLineEdit;

/// Notes what would be opened.
class NotedWorkspace : public Workspace {
 public:
  bool openFile(const QString& path) override { return note(path); }
  bool openURL(const QString& address) override { return note(address); }
  QStringList opened;
  bool opens = true;  ///< whether there are programs for it

 private:
  bool note(const QString& what) {
    opened << what;
    return opens;
  }
};

/// The window with its controller, in a home of its own, the log switched off. The application object is made once for
/// the program (Application.cpp).
class WindowFixture : public testing::Test {
 protected:
  WindowFixture();
  ~WindowFixture() override;

  void makeController(const MainInterface::MakeView& makeView = [] { return new QVMovieView; });
  /// The same for a program with other information keys or in another place.
  void makeController(const BundleInfo& bundle);
  /// Qt's panels for files read folders on a thread of Qt's own, whose order the thread sanitizer cannot see.
  static bool mayShowFilePanels();
  /// As the program starts.
  void launch();
  /// Ends the controller and the window, and makes new ones in the same home.
  void relaunch();

  /// Runs the event loop until the condition holds; false when it does not within a minute: CI may be slow.
  static bool waitUntil(const std::function<bool()>& condition);
  static void runFor(int milliseconds);

  MainInterface& interface() { return *interface_; }
  LumacheckAppDelegate& controller() { return *controller_; }
  QVMovieView& sourceView() { return *interface_->source.movieView; }
  QVMovieView& destView() { return *interface_->dest.movieView; }
  QString sourcePath();
  QString destPath();
  void load(const QString& source, const QString& dest);
  /// Clicks into a field, replaces its text by typing and presses Return.
  static void type(QLineEdit& field, const QString& text);
  /// Gives the window the focus back, where no window manager does it.
  void activate();
  /// The action of that object name in one of the menus.
  QAction& menuAction(const char* name);
  /// Opens the menu that has it and clicks on it. What cannot be chosen is clicked on all the same.
  void choose(const char* name);
  static QString pathOf(const PlayableMovie* movie);
  /// What the message line says, and a text of the window: the tests' movies are named without what keeps them apart.
  Message said() const;
  static QString plainNames(QString text);

  QTemporaryDir home_;
  EnvironmentGuard environment_;
  NotedWorkspace workspace_;
  BundleInfo bundle_ = BundleInfo::mainBundle();
  std::unique_ptr<LinuxPathPlatform> platform_;
  std::unique_ptr<UserDefaults> defaults_;
  std::unique_ptr<MainInterface> interface_;
  std::unique_ptr<LumacheckAppDelegate> controller_;
};

/// Movies that the tests of the window load. Paths.
QString plainMovie();                   ///< 2 s, 25 frames a second, starts at 01:00:00:00, 320 x 180
QString retaggedMovie();                ///< the same pictures under another gamma level
QString darkerMovie();                  ///< the same, darker
QString gammaMovie(const char* gamma);  ///< the first with a gamma level as its only colour metadata
QString blackMovie();                   ///< the same length, black
QString longMovie();                    ///< 1001 frames of 25 frames a second
QString longNtscMovie();                ///< the same duration, 29.97 frames a second
QString dropFrameMovie();               ///< 29.97 frames a second, starts at 00:59:58;00 in drop frame
QString soundMovie();                   ///< 2 s of sound, no pictures
QString groupedMovie();                 ///< 2 s of H.264 with B frames
