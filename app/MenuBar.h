#pragma once

#include <QCoreApplication>

class QAction;
class QMainWindow;
class QMenu;

/// The menus of the main window, laid out but not wired to a controller. The window owns menus and actions; every
/// action has an object name, and a shortcut or a mnemonic of its own. Edit acts by itself on the text that has the
/// focus.
struct MenuBar {
  Q_DECLARE_TR_FUNCTIONS(MenuBar)

 public:
  /// Fills the window's menu bar.
  static MenuBar in(QMainWindow& window);

  QMenu* recentPairs = nullptr;  ///< whoever knows the pairs inserts an item for each before endOfPairs
  QAction *endOfPairs = nullptr, *forgetPairs = nullptr;
  QAction *openSource = nullptr, *openDest = nullptr, *save = nullptr, *saveAs = nullptr, *quit = nullptr;
  QAction* preferences = nullptr;
  QAction *swap = nullptr, *link = nullptr, *check = nullptr, *scan = nullptr, *sync = nullptr;
  QAction* fullScreen = nullptr;
  QAction *userManual = nullptr, *keys = nullptr, *vextrelHome = nullptr, *quorvaneHome = nullptr, *support = nullptr,
          *reportBug = nullptr, *suggestFeature = nullptr;
  QAction *viewLog = nullptr, *viewTaskLog = nullptr, *gatherLogs = nullptr, *updateCheck = nullptr, *about = nullptr;
};
