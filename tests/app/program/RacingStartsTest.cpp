// Starts at the same time: one window comes up, and gets what the others were given.

#include <QProcess>
#include <algorithm>
#include <csignal>
#include <memory>
#include <vector>

#include <gmock/gmock.h>
#include <unistd.h>

#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/program/ProgramFixture.h"

namespace {

class RacingStarts : public ProgramFixture {
 protected:
  RacingStarts() {
    environment_.remove("QT_QPA_GENERIC_PLUGINS");
    running_.close();
  }
  ~RacingStarts() override {
    for (const auto& start : starts_) {
      start->kill();
      start->waitForFinished();
    }
  }
  void race(int count) {
    starts_.clear();
    for (int i = 0; i < count; ++i) {
      starts_.push_back(std::make_unique<QProcess>());
      starts_.back()->setProcessEnvironment(environment_);
      starts_.back()->start(program(), QStringList());
    }
  }
  std::ptrdiff_t runningCount() {
    return std::count_if(starts_.begin(), starts_.end(), [](const auto& start) {
      start->waitForFinished(1);
      return start->state() != QProcess::NotRunning;
    });
  }
  qlonglong launches() const {
    return PropertyList::readDictionary(defaultsFile()).value_or(QVariantMap()).value("launchCount").toLongLong();
  }

  std::vector<std::unique_ptr<QProcess>> starts_;
};

TEST_F(RacingStarts, MakeOneWindow) {
  constexpr int rounds = 10, atOnce = 5;
  for (int round = 1; round <= rounds; ++round) {
    race(atOnce);
    EXPECT_TRUE(waitUntil([&] { return launches() == round && runningCount() == 1; }))
        << "round " << round << ": " << runningCount() << " windows, " << launches() << " launches";
    for (const auto& start : starts_) {
      if (start->state() == QProcess::NotRunning) {
        EXPECT_EQ(start->exitCode(), 0);
        continue;
      }
      // Every second round leaves what a crash leaves.
      ::kill(static_cast<pid_t>(start->processId()), round % 2 == 0 ? SIGKILL : SIGTERM);
      EXPECT_TRUE(start->waitForFinished(20000));
    }
    if (HasFailure()) return;
  }
}

}  // namespace
