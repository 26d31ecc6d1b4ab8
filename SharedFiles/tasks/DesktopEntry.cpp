#include "SharedFiles/tasks/DesktopEntry.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QStandardPaths>
#include <QUrl>

#include "SharedFiles/foundation/FilePackage.h"
#include "SharedFiles/tasks/QVTaskEx.h"

namespace {

constexpr qint64 largestFile = 1 << 20;

/// A value of type string: \s, \n, \t, \r and \\ stand for a character.
QString unescaped(const QString& value) {
  QString text;
  for (qsizetype i = 0; i < value.size(); ++i) {
    if (value[i] != u'\\' || i + 1 == value.size()) {
      text += value[i];
      continue;
    }
    const QChar code = value[++i];
    const qsizetype known = QStringLiteral("sntr\\").indexOf(code);
    if (known < 0) {
      text += u'\\';
      text += code;
    } else {
      text += u" \n\t\r\\"[known];
    }
  }
  return text;
}

/// The keys of the group "Desktop Entry"; translations have names of their own.
QHash<QString, QString> entryKeys(const QByteArray& text) {
  QHash<QString, QString> keys;
  bool inside = false;
  for (const QString& line : QString::fromUtf8(text).split(u'\n')) {
    const QString trimmed = line.trimmed();
    if (trimmed.startsWith(u'[')) {
      inside = trimmed == QLatin1String("[Desktop Entry]");
    } else if (const qsizetype equals = trimmed.indexOf(u'='); inside && equals > 0 && !trimmed.startsWith(u'#')) {
      const QString key = trimmed.left(equals).trimmed();
      if (!keys.contains(key)) keys.insert(key, unescaped(trimmed.mid(equals + 1).trimmed()));
    }
  }
  return keys;
}

/// Reads the quoted part that begins after `i`, and leaves `i` on its closing quote; false without one.
bool readQuoted(const QString& line, qsizetype& i, QString& argument) {
  for (++i; i < line.size(); ++i) {
    if (line[i] == u'"') return true;
    const bool escaped = line[i] == u'\\' && i + 1 < line.size() && QStringLiteral("\"`$\\").contains(line[i + 1]);
    if (escaped) ++i;
    argument += line[i];
  }
  return false;
}

/// The arguments of an Exec line; nothing for a quote that is never closed.
std::optional<QStringList> argumentsOf(const QString& line) {
  QStringList arguments;
  QString argument;
  bool begun = false;
  for (qsizetype i = 0; i < line.size(); ++i) {
    if (line[i] == u' ' || line[i] == u'\t' || line[i] == u'\n') {
      if (begun) arguments << argument;
      argument.clear();
      begun = false;
      continue;
    }
    begun = true;
    if (line[i] != u'"') {
      argument += line[i];
    } else if (!readQuoted(line, i, argument)) {
      return std::nullopt;
    }
  }
  if (begun) arguments << argument;
  return arguments;
}

}  // namespace

std::optional<DesktopEntry> DesktopEntry::find(const QString& identifier) {
  const QString name = identifier + QStringLiteral(".desktop");
  QFile file(QStandardPaths::locate(QStandardPaths::ApplicationsLocation, name));
  if (file.fileName().isEmpty()) return std::nullopt;
  return file.open(QIODevice::ReadOnly) ? parse(file.read(largestFile), file.fileName()) : std::nullopt;
}

std::optional<DesktopEntry> DesktopEntry::parse(const QByteArray& text, const QString& path) {
  const QHash<QString, QString> keys = entryKeys(text);
  if (keys.value(QStringLiteral("Type")) != QLatin1String("Application")) return std::nullopt;
  if (keys.value(QStringLiteral("Hidden")) == QLatin1String("true")) return std::nullopt;
  const auto exec = argumentsOf(keys.value(QStringLiteral("Exec")));
  if (!exec || exec->isEmpty() || exec->first().isEmpty()) return std::nullopt;
  DesktopEntry entry;
  entry.path_ = path;
  entry.name_ = keys.value(QStringLiteral("Name"));
  entry.icon_ = keys.value(QStringLiteral("Icon"));
  entry.exec_ = *exec;
  return entry;
}

QString DesktopEntry::expanded(const QString& argument, const QString& file, bool& given) const {
  QString text;
  for (qsizetype i = 0; i < argument.size(); ++i) {
    if (argument[i] != u'%' || i + 1 == argument.size()) {
      text += argument[i];
      continue;
    }
    const char code = argument[++i].toLatin1();
    const bool isName = code == 'f' || code == 'F', isUrl = code == 'u' || code == 'U';
    given = given || isName || isUrl;
    if (isName) text += file;
    if (isUrl) text += QString::fromLatin1(QUrl::fromLocalFile(file).toEncoded());
    if (code == 'c') text += name_;
    if (code == 'k') text += path_;
    if (code == '%') text += u'%';
  }
  return text;
}

QStringList DesktopEntry::commandFor(const QString& file) const {
  QStringList command(exec_.first());
  bool given = false;
  for (const QString& argument : exec_.mid(1)) {
    if (argument == QLatin1String("%i")) {
      if (!icon_.isEmpty()) command << QStringLiteral("--icon") << icon_;
      continue;
    }
    const QString text = expanded(argument, file, given);
    // A code that stands for nothing leaves no argument behind.
    if (!text.isEmpty() || argument.isEmpty()) command << text;
  }
  if (!given) command << file;
  return command;
}

bool DesktopEntry::open(const QString& file) const {
  QStringList command = commandFor(file);
  QString program = command.takeFirst();
  if (!program.startsWith(u'/')) program = QStandardPaths::findExecutable(program);
  if (program.isEmpty() || QFileInfo(program).isDir() || !isExecutableFileAtPath(program)) return false;
  QVTaskEx::runTaskAndReturn(program, command);
  return true;
}
