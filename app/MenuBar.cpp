#include "app/MenuBar.h"

#include <QAction>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

#include "app/EditMenu.h"

namespace {

QMenu& addMenu(QMainWindow& window, const char* name, const QString& text) {
  QMenu* const menu = window.menuBar()->addMenu(text);
  menu->setObjectName(QLatin1String(name));
  return *menu;
}

QAction* add(QMenu& menu, const char* name, const QString& text, const QKeySequence& key = {}) {
  QAction* const action = menu.addAction(text);
  action->setObjectName(QLatin1String(name));
  action->setMenuRole(QAction::NoRole);
  if (key.isEmpty()) return action;
  action->setShortcut(key);
  action->setAutoRepeat(false);
  return action;
}

/// Not one of the bar's menus, which are named so.
void addRecentPairs(MenuBar& bar, QMenu& file) {
  bar.recentPairs = file.addMenu(MenuBar::tr("&Recent Pairs"));
  bar.recentPairs->menuAction()->setObjectName(QStringLiteral("recentPairs"));
  bar.recentPairs->setToolTipsVisible(true);
  bar.endOfPairs = bar.recentPairs->addSeparator();
  bar.forgetPairs = add(*bar.recentPairs, "forgetPairs", MenuBar::tr("&Forget These Pairs"));
}

void addFileMenu(MenuBar& bar, QMainWindow& window) {
  QMenu& file = addMenu(window, "fileMenu", MenuBar::tr("&File"));
  bar.openSource = add(file, "openSource", MenuBar::tr("&Open Source…"), QKeySequence(QKeySequence::Open));
  bar.openDest =
      add(file, "openDest", MenuBar::tr("Open &Destination…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O));
  addRecentPairs(bar, file);
  file.addSeparator();
  bar.save = add(file, "save", MenuBar::tr("&Save"), QKeySequence(Qt::CTRL | Qt::Key_S));
  bar.saveAs = add(file, "saveAs", MenuBar::tr("Save &As…"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S));
  file.addSeparator();
  bar.quit = add(file, "quit", MenuBar::tr("&Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q));
}

void addEditMenu(MenuBar& bar, QMainWindow& window) {
  QMenu& edit = addMenu(window, "editMenu", MenuBar::tr("&Edit"));
  fillEditMenu(edit, window);
  edit.addSeparator();
  bar.preferences = add(edit, "preferences", MenuBar::tr("Pr&eferences…"), QKeySequence(Qt::CTRL | Qt::Key_Comma));
}

void addMoviesMenu(MenuBar& bar, QMainWindow& window) {
  QMenu& movies = addMenu(window, "moviesMenu", MenuBar::tr("&Movies"));
  bar.check = add(movies, "check", MenuBar::tr("&Check"), QKeySequence(Qt::CTRL | Qt::Key_Return));
  bar.scan = add(movies, "scan", MenuBar::tr("Sc&an"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Return));
  bar.sync = add(movies, "sync", MenuBar::tr("Sync &Metadata"), QKeySequence(Qt::CTRL | Qt::Key_M));
  movies.addSeparator();
  bar.swap = add(movies, "swap", MenuBar::tr("&Swap Movies"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_X));
  bar.link = add(movies, "link", MenuBar::tr("&Link Playheads"), QKeySequence(Qt::CTRL | Qt::Key_L));
  bar.link->setCheckable(true);
}

void addViewMenu(MenuBar& bar, QMainWindow& window) {
  QMenu& view = addMenu(window, "viewMenu", MenuBar::tr("&View"));
  bar.fullScreen = add(view, "fullScreen", MenuBar::tr("&Full Screen"), QKeySequence(Qt::Key_F11));
}

void addHelpMenu(MenuBar& bar, QMainWindow& window) {
  QMenu& help = addMenu(window, "helpMenu", MenuBar::tr("&Help"));
  bar.userManual = add(help, "userManual", MenuBar::tr("&User Manual"));
  bar.keys = add(help, "keys", MenuBar::tr("&Keys"), QKeySequence(Qt::Key_F1));
  help.addSeparator();
  bar.vextrelHome = add(help, "vextrelHome", MenuBar::tr("&Vextrel Home Page"));
  bar.quorvaneHome = add(help, "quorvaneHome", MenuBar::tr("&Quorvane Home Page"));
  bar.support = add(help, "support", MenuBar::tr("&Support"));
  help.addSeparator();
  bar.reportBug = add(help, "reportBug", MenuBar::tr("Report a &Bug…"));
  bar.suggestFeature = add(help, "suggestFeature", MenuBar::tr("Suggest a &Feature…"));
  help.addSeparator();
  bar.viewLog = add(help, "viewLog", MenuBar::tr("View &Log"));
  bar.viewTaskLog = add(help, "viewTaskLog", MenuBar::tr("View &Task Log"));
  bar.gatherLogs = add(help, "gatherLogs", MenuBar::tr("&Gather Logs…"));
  help.addSeparator();
  bar.updateCheck = add(help, "updateCheck", MenuBar::tr("Check for U&pdates…"));
  bar.about = add(help, "about", MenuBar::tr("&About Lumacheck"));
}

}  // namespace

MenuBar MenuBar::in(QMainWindow& window) {
  MenuBar bar;
  addFileMenu(bar, window);
  addEditMenu(bar, window);
  addMoviesMenu(bar, window);
  addViewMenu(bar, window);
  addHelpMenu(bar, window);
  return bar;
}
