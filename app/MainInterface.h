#pragma once

#include <QCoreApplication>
#include <QList>
#include <functional>
#include <memory>

#include "SharedFiles/support/QVSoftwareUpdate.h"
#include "app/KeyTable.h"
#include "app/MenuBar.h"
#include "app/Subclasses/QVMovieView.h"
#include "app/Subclasses/QVQTWindow.h"
#include "app/messages/WhyNot.h"

class QCheckBox;
class QDialog;
class QLabel;
class QLineEdit;
class QPushButton;
class MessageLine;
class ResultsView;
class ScanStrip;
class TransportBar;
class VerdictStrip;

/// The controls of one movie.
struct SideInterface {
  QLineEdit* filenameText = nullptr;
  QPushButton* browseBtn = nullptr;
  QVMovieView* movieView = nullptr;
  TransportBar* transport = nullptr;
  QLineEdit* timecodeText = nullptr;
};

/// The main window with its controls, laid out but not wired to a controller. The window owns the controls.
class MainInterface {
  Q_DECLARE_TR_FUNCTIONS(MainInterface)

 public:
  using MakeView = std::function<QVMovieView*()>;

  explicit MainInterface(const MakeView& makeView = [] { return new QVMovieView; });
  ~MainInterface();
  MainInterface(const MainInterface&) = delete;
  MainInterface& operator=(const MainInterface&) = delete;

  QVQTWindow& window() { return *window_; }

  SideInterface source, dest;
  QCheckBox* linkBtn = nullptr;
  QLabel* linkLabel = nullptr;
  QPushButton* swapBtn = nullptr;
  QPushButton *checkBtn = nullptr, *scanBtn = nullptr;
  QPushButton *syncBtn = nullptr, *saveBtn = nullptr, *saveAsBtn = nullptr;
  ScanStrip* scanStrip = nullptr;  ///< hidden until a scan is begun
  VerdictStrip* verdictStrip = nullptr;
  ResultsView* resultsView = nullptr;
  MessageLine* messageLine = nullptr;
  QVSoftwareUpdate softwareUpdate;
  MenuBar menus;
  QDialog* preferences = nullptr;       ///< not modal; closing hides it
  QCheckBox* qcLoggingCheck = nullptr;  ///< in the preferences

  /// The view that the movie keys act on: the one whose controls have or last had the focus, at first the source's.
  QVMovieView& activeView() const { return *activeView_; }
  /// Has the tool tips of the controls say which of them can do nothing, and why. All of them stay as they are.
  void tellWhyNot(const WindowState& state);
  /// What begins a scan ends it while it runs, and can do nothing without two movies.
  void showScanning(const WindowState& state);
  /// The keys that move a movie: part of the window's table.
  void addMovieKeys(KeyTable& keys) const;

 private:
  struct SideTexts {
    QString name, dropHint, pathHint;
  };
  void makePreferences();
  static SideInterface makeSide(const SideTexts& texts, QVMovieView* movieView);
  QWidget* sidePanel(const SideInterface& side, const QString& name);
  QWidget* linkColumn();
  QWidget* bottomPanel();
  void layOut();
  void orderFocus();
  void followFocus();
  void giveRoomToPictures(bool all);

  std::unique_ptr<QVQTWindow> window_;
  QVMovieView* activeView_ = nullptr;
  QList<QWidget*> besidePictures_;  ///< step back where the pictures get all the room
};
