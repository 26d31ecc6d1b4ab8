#include <gtest/gtest.h>

#include "SharedFiles/log/QVException.h"
#include "tests/SharedFiles/log/LogFixture.h"

namespace {

class QVExceptionLogging : public LogFixture {};

TEST_F(QVExceptionLogging, LogsPrintsAndReturnsWhatHappened) {
  log_->createNewLog();
  const QVPlatformException exception("beyond bounds (5)", "NSRangeException");
  const QString text = QVException::logException(exception, "-[Demo run]", *log_);
  EXPECT_EQ(text, "Exception in -[Demo run]. NSRangeException - beyond bounds (5).");
  EXPECT_EQ(output_.str(), text.toStdString() + "\n");
  EXPECT_EQ(entries(), line(text.toUtf8()));
}

TEST_F(QVExceptionLogging, KeepsAPerCentSignOfTheReason) {
  log_->createNewLog();
  const QString text = QVException::logException(QVPlatformException("at 50% of %d"), "run", *log_);
  EXPECT_EQ(text, "Exception in run. NSGenericException - at 50% of %d.");
  EXPECT_EQ(entries(), line(text.toUtf8()));
}

TEST_F(QVExceptionLogging, ShowsWhatIsNil) {
  EXPECT_EQ(QVException::logException(QVPlatformException(QString(), QString()), nullptr, *log_),
            "Exception in (null). (null) - (null).");
}

TEST(QVException, KnowsATimeOutByItsName) {
  EXPECT_TRUE(QVException::didTimeout(QVPlatformException("x", "NSPortTimeoutException")));
  EXPECT_FALSE(QVException::didTimeout(QVPlatformException("NSPortTimeoutException", "NSGenericException")));
  EXPECT_FALSE(QVException::didTimeout(QVPlatformException("x", "NSPortTimeoutExceptionX")));
}

TEST(QVPlatformException, CarriesNameAndReason) {
  const QVPlatformException plain("ä");
  EXPECT_EQ(plain.name(), "NSGenericException");
  EXPECT_EQ(plain.reason(), "ä");
  EXPECT_STREQ(plain.what(), "ä");
}

}  // namespace
