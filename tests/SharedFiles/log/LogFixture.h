#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <functional>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "SharedFiles/log/LogController.h"
#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"

/// Folders inside one temporary folder, for any user id.
class TestPaths : public LinuxPathPlatform {
 public:
  TestPaths(QString root, uid_t userId) : LinuxPathPlatform(userId, BundleInfo()), root_(std::move(root)) {}

  QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const override {
    if (directory != SearchPathDirectory::NSLibraryDirectory) return {};
    if (domain == SearchPathDomain::Local) return {root_ + "/machine"};
    return {realUserId() == 0 ? QStringLiteral("/var/root/Library") : root_ + "/home/Library"};
  }
  QString homeDirectory() const override { return root_ + "/home"; }

 private:
  QString root_;
};

/// A log in a temporary folder with a clock, a thread and an output that the test holds.
class LogFixture : public ::testing::Test {
 protected:
  static constexpr const char* date = "2026-11-15 13:24:25 +0000";
  static constexpr uid_t ordinaryUser = 1000;
  static constexpr uid_t superuser = 0;

  void SetUp() override {
    ASSERT_TRUE(root_.isValid());
    start(ordinaryUser);
  }

  BundleInfo bundle() const { return BundleInfo({{"CFBundleVersion", "1.2.3"}}, "/opt/maker/bin/demo.bin"); }

  void start(uid_t userId) { start(userId, bundle()); }
  void start(uid_t userId, const BundleInfo& bundleInfo) {
    log_.reset();
    paths_ = std::make_unique<TestPaths>(root_.path(), userId);
    queue_ = std::make_shared<sys::SerialQueue>();
    log_ = std::make_unique<LogController>(LogEnvironment{
        .paths = *paths_,
        .bundle = bundleInfo,
        .now = [this] { return now_; },
        .isMainThread = [this] { return onMainThread_; },
        .system =
            [] {
              return LogSystemSummary{"14.2", 8, quint64{16} << 30};
            },
        .output = output_,
        .queue = queue_,
    });
  }

  QString userFolder() const { return root_.path() + "/home/Library/Logs/Quorvane"; }
  QString machineFolder() const { return root_.path() + "/machine/Logs/Quorvane"; }
  QString file(int generation, const QString& name = "demo") const {
    return userFolder() + QString("/%1.%2.log").arg(name).arg(generation);
  }
  static QByteArray contents(const QString& path) {
    QFile opened(path);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(no file)");
  }
  static void put(const QString& path, const QByteArray& bytes) {
    ASSERT_TRUE(QDir().mkpath(path.section('/', 0, -2)));
    QFile opened(path);
    ASSERT_TRUE(opened.open(QIODevice::WriteOnly));
    ASSERT_EQ(opened.write(bytes), bytes.size());
  }
  void putSetting(const QVariant& value) {
    const QString folder = root_.path() + "/home/Library/Preferences";
    ASSERT_TRUE(QDir().mkpath(folder));
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"disable-logging", value}}, folder + "/com.quorvane.global.plist"));
  }

  static QByteArray line(const QByteArray& text) { return QByteArray(date) + " - " + text + "\n"; }
  static QByteArray header() {
    return line("Log started: " + QByteArray(date)) + line("Version: 1.2.3") + line("Path: /opt/maker/bin/demo.bin") +
           line("System: macOS 14.2, 8 CPU(s), 16.00 GB RAM") + line("Running in 32-bit mode");
  }
  /// What the current file holds after its header, once all is written.
  QByteArray entries() {
    log_->finishWriting();
    const QByteArray all = contents(file(1));
    EXPECT_TRUE(all.startsWith(header())) << all.toStdString();
    return all.mid(header().size());
  }

  QTemporaryDir root_;
  QDateTime now_ = QDateTime::fromString("2026-11-15T13:24:25Z", Qt::ISODate);
  bool onMainThread_ = true;
  std::ostringstream output_;
  std::unique_ptr<TestPaths> paths_;
  std::shared_ptr<sys::SerialQueue> queue_;
  std::unique_ptr<LogController> log_;
};

/// A sink that keeps its lines, and can hold the writer up or fail.
class TestSink : public LogSink {
 public:
  void write(const QByteArray& line) override {
    if (before) before();
    lines.push_back(line);
  }

  std::function<void()> before;
  std::vector<QByteArray> lines;
};
