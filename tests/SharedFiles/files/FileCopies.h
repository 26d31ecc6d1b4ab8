#pragma once

#include <QByteArray>
#include <QFile>
#include <QRandomGenerator>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include <gtest/gtest.h>

#include "SharedFiles/files/FileCopy.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"

constexpr unsigned int sha256 = 3;

/// Hears of one copy, and knows when nothing more will come.
class CopyReports {
 public:
  FileCopyDelegate delegate() {
    FileCopyDelegate heard;
    heard.fileCopyBytesWritten = [state = state_](quint64 bytes, const QVariantMap& settings) {
      const std::lock_guard guard(state->mutex);
      state->bytes.push_back(bytes);
      state->keep(settings);
    };
    heard.fileCopyVerificationFailed = [state = state_](const QVariantMap& settings, const QString& file) {
      const std::lock_guard guard(state->mutex);
      state->failed.append(file);
      state->failedChecksums.append(settings.value("destChecksum").toString());
    };
    heard.fileCopyFinished = [state = state_](const QVariantMap& settings) {
      const std::lock_guard guard(state->mutex);
      state->keep(settings);
      state->finished = true;
    };
    return heard;
  }
  bool waitForEnd() const {
    return runEventLoopUntil([this] { return state_->finished.load(); });
  }
  std::vector<quint64> bytes() const {
    const std::lock_guard guard(state_->mutex);
    return state_->bytes;
  }
  QStringList failed() const {
    const std::lock_guard guard(state_->mutex);
    return state_->failed;
  }
  /// What stood under "destChecksum" when a destination was told of.
  QStringList failedChecksums() const {
    const std::lock_guard guard(state_->mutex);
    return state_->failedChecksums;
  }
  QVariantMap settings() const {
    const std::lock_guard guard(state_->mutex);
    return state_->settings;
  }
  bool finished() const { return state_->finished; }

 private:
  struct State {
    std::mutex mutex;
    std::vector<quint64> bytes;
    QStringList failed, failedChecksums;
    QVariantMap settings;
    std::atomic<bool> finished = false;

    /// All but the delegate, which holds this state itself.
    void keep(const QVariantMap& told) {
      EXPECT_TRUE(told.contains("delegate"));
      settings = told;
      settings.remove("delegate");
    }
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// Copies in a folder of their own.
class FileCopies : public testing::Test {
 protected:
  QString path(const QString& name) const { return log_.home() + "/" + name; }
  QString put(const QString& name, const QByteArray& bytes) const {
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(file.write(bytes), bytes.size());
    return file.fileName();
  }
  static QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
  }
  static QByteArray noise(qsizetype size) {
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(7);
    for (char& byte : bytes) byte = static_cast<char>(generator.generate());
    return bytes;
  }
  bool copy(const QString& source, const QStringList& destinations, unsigned int verification = 0) {
    return copyFileToDestinations({.source = source,
                                   .destinations = destinations,
                                   .verificationType = verification,
                                   .delegate = reports_.delegate()});
  }

  ProcessLog log_;
  CopyReports reports_;
};
