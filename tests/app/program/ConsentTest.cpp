// The question for consent, in the program: when it comes, what each answer leaves on the disk, and how it ends without
// one.

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QThread>
#include <csignal>

#include <gmock/gmock.h>

#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/app/program/ProgramFixture.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* question = "Help improve Quorvane software by submitting analytics and usage data";

class Consent : public ProgramFixture {
 protected:
  Consent() {
    for (const QString& variable : environment_.keys()) {
      if (variable.endsWith("_proxy", Qt::CaseInsensitive)) environment_.remove(variable);
    }
  }
  /// Starts as if it had been started that often already.
  void startAfter(int launches) {
    put(defaultsFile(), PropertyList::toBytes(QVariantMap{{"launchCount", launches}}).value_or(""));
    start();
  }
  QString contentsOfEvents() const { return contentsOf(eventsFile()); }
  void expectNoAnswer() const {
    EXPECT_EQ(contentsOf(decisionFile()), "none");
    EXPECT_EQ(contentsOfEvents(), "none");
  }

  static constexpr const char* twoEvents =
      "^array \\[\\{date: integer [0-9]{10}, event: string launch\\}, "
      "\\{data: string [^,]+, date: integer [0-9]{10}, event: string specs\\}\\]$";
};

TEST_F(Consent, IsAskedForFiveSecondsAfterTheThirdStart) {
  QElapsedTimer since;
  since.start();
  startAfter(2);
  const auto sinceStart = since.elapsed();
  while (dialogs().isEmpty() && since.elapsed() < 20000) QThread::msleep(20);
  EXPECT_EQ(dialogs(), QStringList(question));
  EXPECT_GE(since.elapsed(), 5000);
  EXPECT_LE(since.elapsed() - sinceStart, 10000);
  EXPECT_EQ(endWith(SIGTERM), 0) << "while it is asked";
  expectNoAnswer();
}

TEST_F(Consent, GivenOnTheThirdStartIsStoredWithTheEventsOfTheStart) {
  startAfter(2);
  ASSERT_TRUE(waitForDialog(question));
  EXPECT_TRUE(press("Allow"));
  EXPECT_TRUE(waitUntil([this] { return contentsOfEvents().contains(QRegularExpression(twoEvents)); }))
      << contentsOfEvents().toStdString();
  EXPECT_EQ(contentsOf(decisionFile()), "logQC: boolean true");
  EXPECT_THAT(contentsOf(defaultsFile()).toStdString(),
              testing::MatchesRegex("lastOSVersion: string .*\nlaunch: date\nlaunchCount: integer 3"));
  EXPECT_TRUE(choose("preferences"));
  EXPECT_TRUE(waitForDialog("Preferences"));
  EXPECT_EQ(tell("checked qcLoggingCheck"), "yes");
  const QString events = contentsOfEvents();
  EXPECT_EQ(endWith(SIGTERM), 0);
  EXPECT_EQ(contentsOfEvents(), events);

  start();
  QThread::msleep(6000);
  EXPECT_THAT(dialogs(), IsEmpty());
  EXPECT_EQ(endWith(SIGTERM), 0);
  EXPECT_EQ(contentsOfEvents(), events) << "kept for an upload, and nothing added";
}

TEST_F(Consent, GivenLaterSendsTheEventsAtOnce) {
  startAfter(3);
  ASSERT_TRUE(waitForDialog(question));
  EXPECT_TRUE(press("Allow"));
  EXPECT_TRUE(waitUntil([this] { return contentsOf(defaultsFile()).contains("lastSubmission: date"); }));
  EXPECT_THAT(contentsOf(decisionFile()).toStdString(),
              testing::MatchesRegex("logQC: boolean true\nuid: string [A-Za-z0-9]{12}\nuidAssigned: date"));
  EXPECT_EQ(contentsOfEvents(), "none");
  EXPECT_TRUE(waitUntil([this] { return log(1).contains("Connection failed - "); })) << "the host does not exist";
  EXPECT_THAT(log(1).toStdString(), HasSubstr(" - Sending QC log to Quorvane...\n"));
  EXPECT_EQ(endWith(SIGTERM), 0);
  EXPECT_EQ(contentsOfEvents(), "array []");
}

TEST_F(Consent, IsAskedForAgainWithoutAnAnswer) {
  startAfter(2);
  ASSERT_TRUE(waitForDialog(question));
  EXPECT_EQ(tell("close"), "yes");
  EXPECT_EQ(ended(), 0);
  expectNoAnswer();
  start();
  EXPECT_TRUE(waitForDialog(question));
  EXPECT_TRUE(press("More Info"));
  EXPECT_TRUE(waitUntil([this] {
    return tell("opened") == "[\"https://www.quorvane.example/support/posts/app_analytics_and_usage_data\"]";
  }));
  EXPECT_EQ(endWith(SIGTERM), 0);
  expectNoAnswer();
  start();
  EXPECT_TRUE(waitForDialog(question));
}

TEST_F(Consent, IsNotAskedForOnceTheWindowIsClosed) {
  startAfter(2);
  EXPECT_EQ(tell("close"), "yes");
  EXPECT_EQ(ended(), 0);
  expectNoAnswer();
}

TEST_F(Consent, CanBeRefusedWhileAnotherSheetIsUp) {
  startAfter(2);
  EXPECT_TRUE(choose("openSource"));
  EXPECT_TRUE(waitUntil([this] { return !dialogs().isEmpty(); }));
  ASSERT_TRUE(waitForDialog(question));
  EXPECT_EQ(dialogs().size(), 2);
  EXPECT_TRUE(press("Don't Allow"));
  EXPECT_TRUE(waitUntil([this] { return QFile::exists(decisionFile()); }));
  EXPECT_EQ(contentsOf(decisionFile()), "logQC: boolean false");
  EXPECT_TRUE(press("Cancel"));
  EXPECT_TRUE(waitUntil([this] { return dialogs().isEmpty(); }));
  EXPECT_EQ(endWith(SIGTERM), 0);
  EXPECT_EQ(contentsOfEvents(), "none");
}

}  // namespace
