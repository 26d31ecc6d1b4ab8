#include "tests/app/program/ProgramFixture.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QThread>
#include <csignal>

#include <unistd.h>

#include "SharedFiles/settings/PropertyList.h"

namespace {

constexpr int patience = 30000;  // ms

/// Reads property lists without any code of ours.
constexpr const char* reader = R"(
import datetime, plistlib, sys
def told(value):
    if isinstance(value, bool): return "boolean " + str(value).lower()
    if isinstance(value, int): return "integer " + str(value)
    if isinstance(value, float): return "real " + str(value)
    if isinstance(value, str): return "string " + value
    if isinstance(value, datetime.datetime): return "date"
    if isinstance(value, list): return "array [" + ", ".join(told(each) for each in value) + "]"
    if isinstance(value, dict): return "{" + ", ".join(key + ": " + told(value[key]) for key in sorted(value)) + "}"
    return type(value).__name__
with open(sys.argv[1], "rb") as file: all = plistlib.load(file)
print("\n".join(key + ": " + told(all[key]) for key in sorted(all)) if isinstance(all, dict) else told(all), end="")
)";

}  // namespace

ProgramFixture::ProgramFixture() {
  environment_ = QProcessEnvironment::systemEnvironment();
  for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "DISPLAY", "WAYLAND_DISPLAY"}) {
    environment_.remove(variable);
  }
  for (const char* made : {"home", "run", "tmp", "data", "prefix/share/quorvane/Logs/Quorvane"}) {
    QDir().mkpath(path(made));
  }
  QFile::setPermissions(path("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  environment_.insert("HOME", path("home"));
  environment_.insert("TMPDIR", path("tmp"));
  environment_.insert("XDG_RUNTIME_DIR", path("run"));
  environment_.insert("XDG_DATA_DIRS", path("data"));
  environment_.insert("QT_QPA_PLATFORM", "offscreen");
  environment_.insert("QT_PLUGIN_PATH", LUMACHECK_TEST_PLUGINS);
  environment_.insert("QT_QPA_GENERIC_PLUGINS", "hand");
  environment_.insert("LUMACHECK_HAND", path("run/hand"));
  install(LUMACHECK_WINDOW, program());
  install(LUMACHECK_CRASH_REPORT, path("prefix/lib/lumacheck/lumacheck-crash-report"));
  for (const QFileInfo& module : QDir(LUMACHECK_MODULES).entryInfoList({"*.so"})) {
    QFile::link(module.filePath(), path("prefix/lib/lumacheck/" + module.fileName()));
  }
}

ProgramFixture::~ProgramFixture() {
  running_.kill();
  running_.waitForFinished();
}

void ProgramFixture::install(const QString& file, const QString& target) {
  QDir().mkpath(QFileInfo(target).path());
  EXPECT_TRUE(QFile::copy(file, target)) << target.toStdString();
}

bool ProgramFixture::waitUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  while (!condition() && timer.elapsed() < patience) QThread::msleep(20);
  return condition();
}

QByteArray ProgramFixture::contentOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ProgramFixture::put(const QString& path, const QByteArray& content) {
  EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
  file.write(content);
}

QString ProgramFixture::contentsOf(const QString& propertyList) {
  if (!QFile::exists(propertyList)) return QStringLiteral("none");
  QProcess python;
  python.start("python3", {"-c", QString::fromLatin1(reader), propertyList});
  EXPECT_TRUE(python.waitForFinished(patience));
  EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
  return QString::fromUtf8(python.readAllStandardOutput());
}

QDateTime ProgramFixture::stamp(const char* key) const {
  return PropertyList::readDictionary(defaultsFile()).value_or(QVariantMap()).value(key).toDateTime();
}

QString ProgramFixture::lastFile(const char* key) const {
  return PropertyList::readDictionary(defaultsFile()).value_or(QVariantMap()).value(key).toString();
}

QByteArray ProgramFixture::log(int generation) const {
  const bool elsewhere = ::getuid() == 0 && generation == 1;
  return contentOf((elsewhere ? path("prefix/share/quorvane/") : library({})) +
                   QStringLiteral("Logs/Quorvane/Lumacheck.%1.log").arg(generation));
}

QStringList ProgramFixture::filesBelow(const QString& folder) {
  QStringList files;
  QDirIterator entries(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
  while (entries.hasNext()) files << QDir(folder).relativeFilePath(entries.next());
  files.sort();
  return files;
}

void ProgramFixture::writeCrashline(const QString& file) const {
  put(file, "#!/bin/sh\nprintf '%s\\n' \"$@\" >> '" + QFile::encodeName(path("given")) + "'\n");
  QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void ProgramFixture::writeCrashlineEntry() const {
  writeCrashline(crashline());
  put(path("data/applications/com.quorvane.Crashline.desktop"),
      "[Desktop Entry]\nType=Application\nName=Crashline\nExec=\"" + QFile::encodeName(crashline()) + "\" %f\n");
}

void ProgramFixture::run(QProcess& process, const QString& program, const QStringList& arguments) {
  process.setProcessEnvironment(environment_);
  process.setWorkingDirectory(path("home"));
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(program, arguments);
  ASSERT_TRUE(process.waitForStarted());
}

void ProgramFixture::start(const QStringList& files) {
  QFile::remove(path("run/hand"));
  run(running_, program(), files);
  ASSERT_TRUE(waitUntil([this] { return tell("window").contains("\"visible\":true"); }))
      << running_.readAll().toStdString();
}

int ProgramFixture::ended() {
  EXPECT_TRUE(running_.waitForFinished(patience));
  return running_.exitCode();
}

int ProgramFixture::endWith(int signal) {
  const auto process = static_cast<pid_t>(running_.processId());
  if (process <= 0) return -1;
  ::kill(process, signal);
  return ended();
}

QByteArray ProgramFixture::tell(const QString& what) const {
  QLocalSocket socket;
  socket.connectToServer(path("run/hand"));
  constexpr int answerTime = 10000;
  if (!socket.waitForConnected(100)) return {};
  socket.write(what.toUtf8() + '\n');
  while (!socket.canReadLine()) {
    if (!socket.waitForReadyRead(answerTime)) return {};
  }
  return socket.readLine().trimmed();
}

QStringList ProgramFixture::dialogs() const {
  QStringList names;
  for (const auto& name : QJsonDocument::fromJson(tell("dialogs")).array()) names << name.toString();
  return names;
}

bool ProgramFixture::waitForDialog(const QString& name) const {
  return waitUntil([&] { return dialogs().contains(name); });
}
