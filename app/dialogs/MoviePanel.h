#pragma once

#include <QStringList>
#include <functional>

class QFileDialog;
class QObject;
class QWidget;

/// The files that panels offer: three extensions, and the HFS file type of movies. Nothing records that type here; a
/// file has it that has no extension and a QuickTime movie in it.
QStringList movieFileTypes();

/// A panel that offers files of those types, and folders; not yet open, a sheet of the window once it is.
/// Whoever makes it says what is done when it ends (whenPanelEnds). It is Qt's own: the desktop's offer files by their
/// names alone.
QFileDialog* makeMoviePanel(QWidget& window, const QString& title);
/// Calls that with the panel's result when it ends, while the context exists, and deletes the panel after that: what is
/// done may take long and run the event loop, and quitting meanwhile closes every window, while the panel is still
/// ending.
void whenPanelEnds(QFileDialog* panel, const QObject* context, const std::function<void(int code)>& didEnd);
