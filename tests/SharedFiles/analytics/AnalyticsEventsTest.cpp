#include <QCheckBox>
#include <QSet>

#include <gmock/gmock.h>

#include "SharedFiles/analytics/QVQC.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/analytics/AnalyticsFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AnalyticsEvents : public Analytics {};

TEST_F(AnalyticsEvents, CountsEveryLaunch) {
  for (int count = 1; count <= 3; ++count) {
    launch();
    EXPECT_EQ(defaults_->integerForKey("launchCount"), count);
  }
}

TEST_F(AnalyticsEvents, ReadsTheDecisionAtTheStart) {
  const struct {
    QVariant decision;
    bool atOnce, afterLoading;
  } rows[] = {{true, true, true}, {false, false, false}, {1, true, true}, {0, false, false}, {2, false, true}};
  for (const auto& row : rows) {
    EXPECT_EQ(launchWith(1, row.decision).shouldLog(), row.atOnce) << row.decision.toString().toStdString();
    controller_->loadQC(window_.get());
    EXPECT_EQ(controller_->shouldLog(), row.afterLoading) << row.decision.toString().toStdString();
    finish();
    EXPECT_THAT(controller_->cache(), IsEmpty()) << "loading a decision logs nothing";
  }
}

TEST_F(AnalyticsEvents, WritesWhatAStartLogs) {
  launchWith(1, true).setupInitialLogging();
  finish();
  controller_->willTerminate();
  const QVariantMap launched{{"event", "launch"}, {"date", qint64{1'700'000'000}}};
  const QVariantMap specs{{"event", "specs"}, {"date", qint64{1'700'000'000}}, {"data", "12.4.0"}};
  EXPECT_EQ(storedCache(), (QVariantList{launched, specs}));
  EXPECT_EQ(launch().cache(), (QVariantList{launched, specs}));
  EXPECT_THAT(posted(), IsEmpty()) << "not before the fourth launch";
}

TEST_F(AnalyticsEvents, LogsALaunchUnlessOneOfTheLastMinuteIsCached) {
  for (const auto& [after, events] :
       std::vector<std::pair<qint64, int>>{{0, 1}, {59, 1}, {60, 2}, {3600, 2}, {-3600, 1}}) {
    now_ = startOfTest;
    launchWith(1, true).logLoadEvent();
    controller_->willTerminate();
    now_ = startOfTest + after * 1000;
    launch().logLoadEvent();
    EXPECT_EQ(controller_->cache().size(), events) << after;
    controller_.reset();
    QFile::remove(cacheFile());
  }
}

TEST_F(AnalyticsEvents, LogsTheSystemOncePerVersion) {
  const auto logged = [this](const QString& version) {
    osVersion_ = version;
    const qsizetype before = launchWith(1, true).cache().size();
    controller_->logSystemSpecsEvent();
    controller_->willTerminate();
    return controller_->cache().size() - before;
  };
  EXPECT_EQ(logged("12.4.0"), 1);
  EXPECT_EQ(logged("12.4.0"), 0);
  EXPECT_EQ(logged(QString()), 0);
  EXPECT_EQ(defaults_->stringForKey("lastOSVersion"), "12.4.0");
  EXPECT_EQ(logged("12.5.0"), 1);
  EXPECT_EQ(logged("12.5.0"), 0);
}

TEST_F(AnalyticsEvents, KeepsEventsOfTheSecondAfterAWriteForTheNext) {
  launchWith(1, true).logQCEvent(event("one"));
  finish();
  EXPECT_EQ(storedCache(), QVariantList{event("one")});
  now_ += 999;
  controller_->logQCEvent(event("two"));
  finish();
  EXPECT_EQ(storedCache(), QVariantList{event("one")});
  now_ += 1;
  controller_->logQCEvent(event("three"));
  finish();
  EXPECT_EQ(storedCache(), (QVariantList{event("one"), event("two"), event("three")}));
  controller_->logQCEvent(event("four"));
  controller_->logQCEvent({});
  controller_->willTerminate();
  EXPECT_EQ(storedCache().size(), 4);
}

TEST_F(AnalyticsEvents, GathersInMemoryAloneWithoutConsent) {
  for (const QVariant& decision : {QVariant(), QVariant(false)}) {
    launchWith(9, decision).logQCEvent(event("one"));
    controller_->setupInitialLogging();
    controller_->writeCacheOnThread();
    controller_->uploadData();
    controller_->willTerminate();
    EXPECT_EQ(controller_->cache(), QVariantList{event("one")});
    EXPECT_FALSE(QFile::exists(home_.filePath(".cache/Quorvane")));
    EXPECT_THAT(posted(), IsEmpty());
    EXPECT_FALSE(stored().contains("uid"));
  }
}

TEST_F(AnalyticsEvents, TellsOfAMissingIdentifierAtEveryWrite) {
  bundle_ = BundleInfo();
  const check::test::CapturedLog log;
  launchWith(1, true).logQCEvent(event("one"));
  finish();
  controller_->willTerminate();
  const std::string line = "Error: unable to save QC data. Bundle ID not found.";
  EXPECT_THAT(log.texts(), ElementsAre(line, line));
  EXPECT_THAT(QDir(home_.filePath(".cache/Quorvane/QC")).entryList(QDir::Files), IsEmpty());
}

TEST_F(AnalyticsEvents, TakesUnreadableFilesForEmpty) {
  launchWith(1, true).logQCEvent(event("one"));
  controller_->willTerminate();
  for (const QByteArray& bytes : {QByteArray("no list"), QByteArray(), *PropertyList::toBytes(QVariantMap{{"a", 1}}),
                                  *PropertyList::toBytes(QVariantList{"text", 7})}) {
    for (const QString& path : {cacheFile(), AnalyticsPreferences(paths_).path()}) {
      QFile file(path);
      ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
      file.write(bytes);
    }
    EXPECT_THAT(launch().cache(), IsEmpty());
    EXPECT_FALSE(controller_->shouldLog());
  }
  controller_->setQCLogging(true);
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", true}}));
}

TEST_F(AnalyticsEvents, ReadsPreferencesInTheBinaryFormAndKeepsWhatElseIsInThem) {
  // As another application of the maker's leaves them: logQC true, uid abcDEF123456 and a key of its own.
  const QByteArray bytes = QByteArray::fromHex(
      "62706c6973743030d3010203040507556c6f675143556f746865725375696409a10610015c61626344454631323334353608"
      "0f151b1f2022240000000000000101000000000000000800000000000000000000000000000031");
  const QString path = AnalyticsPreferences(paths_).path();
  ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(bytes);
  file.close();
  EXPECT_TRUE(launch().shouldLog());
  controller_->setQCLogging(false);
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", false}, {"uid", "abcDEF123456"}, {"other", QVariantList{1LL}}}));
}

TEST_F(AnalyticsEvents, CachesAnEventWithACarriageReturn) {
  const QVariantMap odd{{"event", "two\r\nlines"}, {"date", 1LL}};
  launchWith(1, true).logQCEvent(odd);
  controller_->willTerminate();
  EXPECT_EQ(storedCache(), QVariantList{odd});
}

TEST_F(AnalyticsEvents, SwitchesAndKeepsTheCacheAndTheOtherKeys) {
  launchWith(1, true).logQCEvent(event("one"));
  finish();
  AnalyticsPreferences(paths_).setObjects({{"uid", "abc"}});
  QCheckBox box;
  controller_->setQcShouldLogCheckbox(&box);
  controller_->awakeFromNib();
  EXPECT_TRUE(box.isChecked());
  box.setChecked(false);
  controller_->toggleQCLogging(box);
  EXPECT_FALSE(controller_->shouldLog());
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", false}, {"uid", "abc"}}));
  EXPECT_EQ(storedCache(), QVariantList{event("one")});
  controller_->enableQCLogging();
  finish();
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", true}, {"uid", "abc"}}));
  EXPECT_EQ(controller_->cache().size(), 1) << "switching on logs nothing";
  controller_->disableQCLogging();
  controller_->awakeFromNib();
  EXPECT_FALSE(box.isChecked());
}

TEST_F(AnalyticsEvents, MakesRandomStringsOfItsAlphabet) {
  const QString alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXZY0123456789";
  EXPECT_EQ(launch().generateRandomString(124), alphabet + alphabet);
  random_ = 4'294'967'295U;
  EXPECT_EQ(controller_->generateRandomString(2), QString(alphabet[3]) + "a");
  EXPECT_EQ(controller_->generateRandomString(0), QString());
  EXPECT_EQ(controller_->generateRandomString(-1), QString());
  AnalyticsServices real = services();
  real.random = QVQC::services().random;
  const AnalyticsController controller(real);
  QSet<QString> made;
  for (int i = 0; i < 1000; ++i) made.insert(controller.generateRandomString(12));
  EXPECT_EQ(made.size(), 1000);
}

TEST_F(AnalyticsEvents, LosesNothingThatIsRecordedDuringWritesAndUploads) {
  launchWith(1, true);
  constexpr int each = 200;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 3; ++thread) {
    threads.emplace_back([this] {
      for (int i = 0; i < each; ++i) {
        now_ += 1000;
        controller_->logQCEvent(event("one", i));
        if (i % 50 == 0) controller_->opQueue().addOperation([this] { controller_->uploadData(); });
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  controller_->opQueue().addOperation([this] { controller_->uploadData(); });
  finish();
  EXPECT_THAT(controller_->cache(), IsEmpty());
  qsizetype sent = 0;
  for (const UrlRequest& request : posted()) sent += request.body.count("\"event\":\"one\"");
  EXPECT_EQ(sent, 3 * each);
}

TEST_F(AnalyticsEvents, EndDropsWhatIsQueuedAndWritesTheCache) {
  launchWith(1, true);
  std::atomic<bool> began = false, uploaded = false;
  controller_->opQueue().addOperation([&] {
    began = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  });
  controller_->logQCEvent(event("one"));
  controller_->opQueue().addOperation([&] { uploaded = true; });
  while (!began) std::this_thread::yield();
  controller_->willTerminate();
  EXPECT_FALSE(uploaded);
  EXPECT_EQ(storedCache(), QVariantList{event("one")});
  controller_->logQCEvent(event("two"));
  controller_->willTerminate();
  EXPECT_EQ(storedCache().size(), 1) << "it ends once";
}

TEST_F(AnalyticsEvents, EndsWithTheApplication) {
  launchWith(1, true).logQCEvent(event("one"));
  controller_->logQCEvent(event("two"));
  QTimer::singleShot(0, qApp, [] { QCoreApplication::exit(); });
  QCoreApplication::exec();
  EXPECT_EQ(storedCache().size(), 2);
}

}  // namespace
