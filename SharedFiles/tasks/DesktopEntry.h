#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <optional>

/// An application as the desktop knows it: the file IDENTIFIER.desktop in the folder `applications` of the XDG data
/// folders, as the Desktop Entry Specification 1.5 describes it. Immutable; callable from any thread.
class DesktopEntry {
 public:
  /// The one that counts: of $XDG_DATA_HOME, then of $XDG_DATA_DIRS in their order, with their defaults. None when
  /// there is none, or it is hidden, cannot be read or starts nothing.
  static std::optional<DesktopEntry> find(const QString& identifier);

  /// None for text that has no group "Desktop Entry" of type Application with an Exec line that can be read. `path` is
  /// where the text comes from.
  static std::optional<DesktopEntry> parse(const QByteArray& text, const QString& path);

  /// The Exec line for one file: a program, absolute or to be found in $PATH, and its arguments. Codes for files and
  /// URLs become the file; an entry without such a code gets the file as its last argument.
  QStringList commandFor(const QString& file) const;

  /// Starts the program with the file and returns at once; false when there is nothing that could be started.
  bool open(const QString& file) const;

 private:
  /// Sets `given` where the argument has a code for a file or URL.
  QString expanded(const QString& argument, const QString& file, bool& given) const;

  QString path_, name_, icon_;
  QStringList exec_;  ///< the arguments of the Exec line, unquoted, their codes as they stand
};
