#include <QApplication>
#include <memory>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/MainThread.h"
#include "tests/check/CapturedLog.h"

namespace {

/// The one application object of a test program. Without a screen of its own choice it runs offscreen.
class ApplicationEnvironment : public testing::Environment {
 public:
  void SetUp() override {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    application_ = std::make_unique<QApplication>(argc_, argv_);
    QApplication::setQuitOnLastWindowClosed(false);
    mainThread_ = std::make_unique<MainThread>();
  }
  void TearDown() override {
    mainThread_.reset();
    application_.reset();
  }

 private:
  int argc_ = 1;
  char name_[10] = "Lumacheck";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
  std::unique_ptr<MainThread> mainThread_;
};

[[maybe_unused]] testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(std::make_unique<ApplicationEnvironment>().release());

}  // namespace
