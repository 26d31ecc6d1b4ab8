#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "SharedFiles/log/QVLog.h"

namespace check::test {

/// Drops every entry, so that tests leave no log files behind.
struct DiscardingSink final : LogSink {
  void write(const QByteArray&) override {}
};

inline void sendLogTo(std::shared_ptr<LogSink> sink) {
  QVLog::finishWriting();
  QVLog::sharedController().setSink(std::move(sink));
}

inline const bool logIsDiscarded = [] {
  QVLog::sharedController().setNoPrinting(true);
  sendLogTo(std::make_shared<DiscardingSink>());
  return true;
}();

/// The process's log, caught as long as this lives.
class CapturedLog {
 public:
  CapturedLog() : lines_(std::make_shared<Lines>()) { sendLogTo(lines_); }
  ~CapturedLog() { sendLogTo(std::make_shared<DiscardingSink>()); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  /// The texts of the entries so far, without their dates.
  std::vector<std::string> texts() const {
    QVLog::finishWriting();
    return lines_->texts;
  }

 private:
  struct Lines final : LogSink {
    void write(const QByteArray& line) override {
      const std::string whole = line.trimmed().toStdString();
      texts.push_back(whole.substr(whole.find(" - ") + 3));
    }
    std::vector<std::string> texts;
  };
  std::shared_ptr<Lines> lines_;
};

}  // namespace check::test
