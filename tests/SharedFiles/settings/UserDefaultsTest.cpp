#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cmath>
#include <ctime>
#include <limits>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/settings/UserDefaults.h"
#include "tests/SharedFiles/EnvironmentGuard.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

class Defaults : public testing::Test {
 protected:
  Defaults() {
    environment_.set("HOME", home_.path().toUtf8());
    environment_.clear("XDG_DATA_HOME");
  }
  QString folder() const { return home_.path() + "/.local/share/quorvane/Preferences"; }
  QString file() const { return folder() + "/com.quorvane.Lumacheck.plist"; }
  QStringList files() const { return QDir(folder()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
  void put(const QByteArray& bytes) const {
    QDir().mkpath(folder());
    QFile out(file());
    ASSERT_TRUE(out.open(QIODevice::WriteOnly));
    ASSERT_EQ(out.write(bytes), bytes.size());
  }
  QByteArray bytesOf(const QString& path) const {
    QFile in(path);
    return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
  }
  /// Tells one written file from the next: a write makes a new one.
  ino_t identity() const {
    struct stat status {};
    return ::stat(QFile::encodeName(file()).constData(), &status) == 0 ? status.st_ino : 0;
  }

  QTemporaryDir home_;
  EnvironmentGuard environment_;
  LinuxPathPlatform platform_{1000, BundleInfo::mainBundle()};
  UserDefaults defaults_{platform_, BundleInfo::mainBundle()};
};

TEST_F(Defaults, LieInThePreferencesFolderUnderTheBundlesName) {
  EXPECT_EQ(defaults_.path(), file());
  EXPECT_FALSE(defaults_.objectForKey("lastSourceFile").isValid());
  EXPECT_FALSE(QFileInfo::exists(folder()));
  EXPECT_TRUE(defaults_.setObject("/a.mov", "lastSourceFile"));
  EXPECT_EQ(PropertyList::readDictionary(file()), QVariantMap({{"lastSourceFile", "/a.mov"}}));
  EXPECT_EQ(files(), QStringList("com.quorvane.Lumacheck.plist"));
}

TEST_F(Defaults, ComeBackInAnotherObject) {
  const QDateTime date = QDateTime::fromString("2026-11-15T13:24:25.678Z", Qt::ISODateWithMs);
  EXPECT_TRUE(defaults_.setObject(date, "launch"));
  EXPECT_TRUE(defaults_.setObject(3, "launchCount"));
  const UserDefaults other(platform_, BundleInfo::mainBundle());
  EXPECT_EQ(other.objectForKey("launch").toDateTime(), date);
  EXPECT_EQ(defaults_.objectForKey("launch").toDateTime(), date);
  EXPECT_EQ(other.integerForKey("launchCount"), 3);
}

TEST_F(Defaults, ReadAsTypes) {
  constexpr auto most = std::numeric_limits<qlonglong>::max();
  constexpr auto least = std::numeric_limits<qlonglong>::min();
  const struct {
    const char* what;
    QVariant value;
    const char* text;
    qlonglong integer;
  } rows[] = {
      {"nothing", QVariant(), nullptr, 0},
      {"text", "12", "12", 0},
      {"empty", "", "", 0},
      {"true", true, nullptr, 1},
      {"false", false, nullptr, 0},
      {"integer", -7, nullptr, -7},
      {"zero", 0, nullptr, 0},
      {"large integer", ~qulonglong{0}, nullptr, most},
      {"real", 2.75, nullptr, 2},
      {"negative real", -2.75, nullptr, -2},
      {"large", 1e300, nullptr, most},
      {"small", -1e300, nullptr, least},
      {"no number", std::nan(""), nullptr, 0},
      {"list", QVariantList{1}, nullptr, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    ASSERT_TRUE(defaults_.setObject(row.value, "key"));
    EXPECT_EQ(defaults_.stringForKey("key"), QString(row.text));
    EXPECT_EQ(defaults_.stringForKey("key").isNull(), row.text == nullptr);
    EXPECT_EQ(defaults_.integerForKey("key"), row.integer);
  }
}

TEST_F(Defaults, WriteNothingForAnEqualValue) {
  ASSERT_TRUE(defaults_.setObject(1, "a"));
  ASSERT_TRUE(defaults_.setObject(QVariantMap{{"b", true}}, "nested"));
  const ino_t before = identity();
  EXPECT_TRUE(defaults_.setObject(1LL, "a"));
  EXPECT_TRUE(defaults_.setValueForKeyPath(true, "nested.b"));
  EXPECT_TRUE(defaults_.setObject({}, "absent"));
  EXPECT_TRUE(defaults_.setValueForKeyPath({}, "absent.key"));
  EXPECT_EQ(identity(), before);
  EXPECT_TRUE(defaults_.setObject(true, "a"));  // another type
  EXPECT_NE(identity(), before);
  EXPECT_EQ(defaults_.objectForKey("a").typeId(), QMetaType::Bool);
}

TEST_F(Defaults, AreRemovedByKey) {
  ASSERT_TRUE(defaults_.setObject(1, "a"));
  ASSERT_TRUE(defaults_.setObject(2, "b"));
  EXPECT_TRUE(defaults_.setObject({}, "a"));
  EXPECT_EQ(PropertyList::readDictionary(file()), QVariantMap({{"b", 2LL}}));
}

TEST_F(Defaults, StoreSeveralKeysAtOnceOrNone) {
  ASSERT_TRUE(defaults_.setObject(1, "a"));
  EXPECT_FALSE(defaults_.setObjects({{"a", 2}, {"b", QString(QChar(0))}}));
  EXPECT_EQ(PropertyList::readDictionary(file()), QVariantMap({{"a", 1LL}}));
  EXPECT_TRUE(defaults_.setObjects({{"a", QVariant()}, {"b", 3}, {"c", "x"}}));
  EXPECT_EQ(PropertyList::readDictionary(file()), QVariantMap({{"b", 3LL}, {"c", "x"}}));
}

TEST_F(Defaults, MayBeSharedByApplicationsUnderANameOfTheirOwn) {
  UserDefaults shared(platform_, "com.quorvane.test");
  EXPECT_TRUE(shared.setObject(1, "a"));
  EXPECT_EQ(PropertyList::readDictionary(folder() + "/com.quorvane.test.plist"), QVariantMap({{"a", 1LL}}));
  EXPECT_FALSE(defaults_.objectForKey("a").isValid());
}

TEST_F(Defaults, RefuseWhatAPropertyListCannotHold) {
  ASSERT_TRUE(defaults_.setObject(1, "a"));
  EXPECT_FALSE(defaults_.setObject(QVariant::fromValue(nullptr), "a"));
  EXPECT_FALSE(defaults_.setObject(QString(QChar(0)), "a"));
  EXPECT_FALSE(defaults_.setObject(2, QString(QChar(0))));
  EXPECT_EQ(defaults_.objectForKey("a"), QVariant(1LL));
  EXPECT_EQ(files().size(), 1);
}

TEST_F(Defaults, SeeAndKeepWhatOthersWrote) {
  UserDefaults other(platform_, BundleInfo::mainBundle());
  ASSERT_TRUE(defaults_.setObject(1, "a"));
  ASSERT_TRUE(other.setObject(2, "b"));
  EXPECT_EQ(defaults_.integerForKey("b"), 2);
  ASSERT_TRUE(defaults_.setObject(3, "c"));
  ASSERT_TRUE(other.setObject({}, "a"));
  EXPECT_EQ(PropertyList::readDictionary(file()), QVariantMap({{"b", 2LL}, {"c", 3LL}}));
  ASSERT_TRUE(QFile::remove(file()));
  EXPECT_EQ(defaults_.integerForKey("b"), 0);
}

TEST_F(Defaults, TakeAKeyAsItStands) {
  ASSERT_TRUE(defaults_.setObject(1, "a.b"));
  EXPECT_EQ(defaults_.integerForKey("a.b"), 1);
  EXPECT_FALSE(defaults_.valueForKeyPath("a.b").isValid());
}

TEST_F(Defaults, FollowAKeyPathThroughDictionaries) {
  EXPECT_TRUE(defaults_.setValueForKeyPath(true, "a.b.c"));
  EXPECT_TRUE(defaults_.setValueForKeyPath(1, "a.d"));
  EXPECT_TRUE(defaults_.setValueForKeyPath(2, "plain"));
  EXPECT_EQ(PropertyList::readDictionary(file()),
            QVariantMap({{"a", QVariantMap{{"b", QVariantMap{{"c", true}}}, {"d", 1LL}}}, {"plain", 2LL}}));
  EXPECT_EQ(defaults_.valueForKeyPath("a.b.c"), QVariant(true));
  EXPECT_FALSE(defaults_.valueForKeyPath("a.b.c.d").isValid());
  EXPECT_FALSE(defaults_.setValueForKeyPath(1, "plain.inner"));  // in the way, and kept
  EXPECT_EQ(defaults_.integerForKey("plain"), 2);
  EXPECT_TRUE(defaults_.setValueForKeyPath({}, "a.b.c"));
  EXPECT_FALSE(defaults_.valueForKeyPath("a.b.c").isValid());
  for (const char* key : {"", ".x", "x.", "x..y"}) {
    EXPECT_TRUE(defaults_.setValueForKeyPath(5, key));
    EXPECT_EQ(defaults_.integerForKey(key), 5) << key;
    EXPECT_EQ(defaults_.valueForKeyPath(key), QVariant(5LL)) << key;
  }
}

TEST_F(Defaults, KeepADamagedFileAside) {
  for (const QByteArray& damaged : {QByteArray("not a list"), QByteArray("<plist version=\"1.0\"><array/></plist>")}) {
    put(damaged);
    const qsizetype before = files().size();
    EXPECT_EQ(defaults_.integerForKey("a"), 0);
    EXPECT_TRUE(defaults_.setObject({}, "a"));
    EXPECT_EQ(files().size(), before);  // reading moves nothing
    EXPECT_TRUE(defaults_.setObject(1, "a"));
    EXPECT_TRUE(defaults_.setObject(2, "a"));
    EXPECT_EQ(files().size(), before + 1);
    EXPECT_EQ(bytesOf(file() + (before == 1 ? ".damaged" : ".damaged-2")), damaged);
    EXPECT_EQ(PropertyList::readDictionary(file()), QVariantMap({{"a", 2LL}}));
  }
}

TEST_F(Defaults, SayWhenTheyCannotBeStored) {
  put("x");
  QFile blocked(home_.path() + "/blocked");
  ASSERT_TRUE(blocked.open(QIODevice::WriteOnly));
  environment_.set("XDG_DATA_HOME", blocked.fileName().toUtf8());
  EXPECT_FALSE(defaults_.setObject(1, "a"));
  EXPECT_EQ(defaults_.integerForKey("a"), 0);
  UserDefaults nameless(platform_, BundleInfo());
  EXPECT_TRUE(nameless.path().isNull());
  EXPECT_FALSE(nameless.setObject(1, "a"));
  EXPECT_FALSE(nameless.objectForKey("a").isValid());
}

TEST_F(Defaults, AreCheapToReadAgain) {
  ASSERT_TRUE(defaults_.setObject(QString("x").repeated(1 << 20), "long"));
  ASSERT_TRUE(defaults_.setObject(1, "a"));
  const std::clock_t start = std::clock();
  for (int i = 0; i < 2000; ++i) ASSERT_EQ(defaults_.integerForKey("a"), 1);
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC);
}

TEST_F(Defaults, LoseNothingWrittenByManyThreadsAndProcesses) {
  constexpr int writers = 3;
  constexpr int keys = 8;
  const auto write = [this](const QString& who) {
    UserDefaults own(platform_, BundleInfo::mainBundle());
    bool good = true;
    for (int i = 0; i < keys; ++i) good = own.setObject(i, who + QString::number(i)) && good;
    return good;
  };
  const pid_t child = ::fork();
  if (child == 0) ::_exit(write("process") ? 0 : 1);
  std::vector<std::thread> threads;
  for (int writer = 0; writer < writers; ++writer) {
    threads.emplace_back([&, writer] {
      for (int i = 0; i < keys; ++i) {
        EXPECT_TRUE(defaults_.setObject(i, QStringLiteral("thread%1-%2").arg(writer).arg(i)));
        EXPECT_EQ(defaults_.integerForKey(QStringLiteral("thread%1-%2").arg(writer).arg(i)), i);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(PropertyList::readDictionary(file()).value_or(QVariantMap()).size(), (writers + 1) * keys);
}

TEST(StandardDefaults, FollowTheHomeFolder) {
  const QTemporaryDir home;
  EnvironmentGuard environment;
  environment.set("XDG_DATA_HOME", home.path().toUtf8());
  environment.set("HOME", home.path().toUtf8());
  EXPECT_TRUE(UserDefaults::standard().path().endsWith("quorvane/Preferences/com.quorvane.Lumacheck.plist"));
  EXPECT_TRUE(UserDefaults::standard().setObject("x", "a"));
  EXPECT_EQ(UserDefaults::standard().stringForKey("a"), "x");
}

}  // namespace
