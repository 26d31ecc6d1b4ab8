#pragma once

#include <QStringList>

class QFileDialog;
class QWidget;

/// The files that panels offer: three extensions, and the HFS file type of movies. Nothing records that type here; a
/// file has it that has no extension and a QuickTime movie in it.
QStringList movieFileTypes();

/// A panel that offers files of those types, and folders; not yet open, a sheet of the window once it is. Deletes
/// itself when it is closed. It is Qt's own: the desktop's offer files by their names alone.
QFileDialog* makeMoviePanel(QWidget& window, const QString& title);
