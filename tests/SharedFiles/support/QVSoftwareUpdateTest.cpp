#include <QDir>
#include <QFile>
#include <mutex>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/support/FileTrust.h"
#include "SharedFiles/support/QVSoftwareUpdate.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QString updater = "/Quorvane Software Update.app";
const QString notFound = "Error: unable to find software updater";
const QString noPath = "Unable to launch Software Update - path doesn't exist";
const QString noBundle = "Unable to launch Software Update - updater bundle not found.";
const QString noExecutable = "Unable to launch Software Update - executable path doesn't exist";

/// A machine in a folder of its own.
class UpdaterPaths : public LinuxPathPlatform {
 public:
  explicit UpdaterPaths(QString root, uid_t user = ::getuid())
      : LinuxPathPlatform(::getuid(), BundleInfo::mainBundle()), root_(std::move(root)), user_(user) {}

  QStringList searchPaths(SearchPathDirectory directory, SearchPathDomain domain) const override {
    const bool applications = directory == SearchPathDirectory::NSApplicationDirectory;
    if (applications && domain == SearchPathDomain::Local) return {root_ + "/opt"};
    return LinuxPathPlatform::searchPaths(directory, domain);
  }
  QString temporaryDirectory() const override { return root_ + "/tmp"; }
  uid_t realUserId() const override { return user_; }

 private:
  const QString root_;
  const uid_t user_;
};

class SoftwareUpdate : public testing::Test {
 protected:
  SoftwareUpdate() {
    EXPECT_TRUE(QDir().mkpath(paths_.temporaryDirectory()));
    EXPECT_EQ(::chmod(QFile::encodeName(paths_.temporaryDirectory()).constData(), 01777), 0);
  }

  QVSoftwareUpdate::Services services(const PathPlatform& paths) {
    return {.paths = paths,
            .hostBundle = host_,
            .runTaskAndReturn = [this](const QString& path,
                                       const QStringList& arguments) { note(QStringList{path} + arguments); },
            .openApplication =
                [this](const QString& path) {
                  note({"open", path});
                }};
  }
  QVSoftwareUpdate::Services services() { return services(paths_); }
  std::vector<QStringList> started() {
    const std::lock_guard guard(mutex_);
    return started_;
  }
  void checkWithin(QVSoftwareUpdate::Services given) {
    QVSoftwareUpdate update(std::move(given));
    update.awakeFromNib();
  }

  static void put(const QString& path, const QByteArray& bytes, mode_t mode = 0644) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
    ASSERT_EQ(::fchmod(file.handle(), mode), 0);
  }
  /// An updater that writes what it is started with.
  void putUpdater(const QString& folder, const QByteArray& marker = "updater") {
    const QString bundle = folder + updater;
    ASSERT_TRUE(QDir().mkpath(bundle));
    const auto information = PropertyList::toBytes(QVariantMap{{"CFBundleExecutable", "Updater"}});
    ASSERT_TRUE(information);
    put(bundle + "/Contents/Info.plist", *information);
    put(bundle + "/Contents/MacOS/Updater",
        "#!/bin/sh\nprintf '" + marker + ":%s' \"$*\" > '" + QFile::encodeName(answer()) + "'\n", 0755);
  }
  QString notOurs() const { return "Unable to launch Software Update - others could have changed " + copy_; }
  QString answer() const { return log_.home() + "/answer"; }
  static QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
  void note(const QStringList& command) {
    const std::lock_guard guard(mutex_);
    started_.push_back(command);
  }

  ProcessLog log_;
  const UpdaterPaths paths_{log_.home()};
  const QString host_ = log_.home() + "/prefix/lib/lumacheck";
  const QString installed_ = log_.home() + "/opt/Quorvane";
  const QString copy_ = log_.home() + "/tmp" + updater;
  std::mutex mutex_;
  std::vector<QStringList> started_;
};

TEST_F(SoftwareUpdate, ChecksAtStartupUnlessTheSettingIsFalse) {
  putUpdater(installed_);
  const QString prefs = QVLocalPaths::prefsDirectory(true, paths_);
  ASSERT_TRUE(QDir().mkpath(prefs));
  const struct {
    QVariantMap settings;
    std::size_t checks;
  } rows[] = {{{}, 1},
              {{{"SUCheckAtStartup", true}}, 1},
              {{{"SUCheckAtStartup", false}}, 0},
              {{{"SUCheckAtStartup", "NO"}}, 1},
              {{{"SUCheckAtStartup", 0}}, 1},
              {{{"other", false}}, 1}};
  checkWithin(services());
  EXPECT_EQ(started().size(), 1u) << "without settings";
  for (const auto& row : rows) {
    ASSERT_TRUE(PropertyList::write(row.settings, prefs + "/com.quorvane.global.plist"));
    started_.clear();
    checkWithin(services());
    EXPECT_EQ(started().size(), row.checks);
  }
  put(prefs + "/com.quorvane.global.plist", "no property list");
  started_.clear();
  checkWithin(services());
  EXPECT_EQ(started().size(), 1u) << "with unreadable settings";
}

TEST_F(SoftwareUpdate, TakesAnInstalledUpdaterWhereItIs) {
  putUpdater(host_ + "/Contents/Resources");
  putUpdater(installed_);
  EXPECT_EQ(QVSoftwareUpdate::updaterPath(services()), installed_ + updater);
  checkWithin(services());
  QVSoftwareUpdate(services()).manualUpdateCheck();
  EXPECT_THAT(started(), ElementsAre(QStringList{installed_ + updater + "/Contents/MacOS/Updater", "-checkpath", host_},
                                     QStringList{"open", installed_ + updater}));
  EXPECT_FALSE(QFile::exists(copy_));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(SoftwareUpdate, CopiesAnUpdaterOfTheHostBundle) {
  putUpdater(host_ + "/Contents/MacOS", "last");
  putUpdater(log_.home() + "/tmp", "older");
  put(copy_ + "/Contents/older", "");
  EXPECT_EQ(QVSoftwareUpdate::updaterPath(services()), copy_);
  EXPECT_FALSE(QFile::exists(copy_ + "/Contents/older"));
  EXPECT_TRUE(contents(copy_ + "/Contents/MacOS/Updater").contains("last"));

  putUpdater(host_ + "/Contents/Resources", "first");
  checkWithin(services());
  QVSoftwareUpdate(services()).manualUpdateCheck();
  EXPECT_TRUE(contents(copy_ + "/Contents/MacOS/Updater").contains("first"));
  EXPECT_THAT(started(), ElementsAre(QStringList{copy_ + "/Contents/MacOS/Updater", "-checkpath", host_},
                                     QStringList{"open", copy_}));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(SoftwareUpdate, GivesThePathOfACopyThatFailed) {
  putUpdater(host_ + "/Contents/Resources");
  ASSERT_TRUE(QDir(log_.home() + "/tmp").removeRecursively());
  EXPECT_EQ(QVSoftwareUpdate::updaterPath(services()), copy_);
  checkWithin(services());
  QVSoftwareUpdate(services()).manualUpdateCheck();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(log_.entries(), ElementsAre(noBundle, noPath));
}

TEST_F(SoftwareUpdate, LogsThatThereIsNone) {
  EXPECT_TRUE(QVSoftwareUpdate::updaterPath(services()).isNull());
  checkWithin(services());
  QVSoftwareUpdate(services()).manualUpdateCheck();
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(log_.entries(), ElementsAre(notFound, notFound, noPath, notFound, noPath));
  EXPECT_TRUE(log_.printed().contains(notFound));
  EXPECT_FALSE(log_.printed().contains(noPath));
}

TEST_F(SoftwareUpdate, LogsWhatTheUpdaterLacks) {
  put(installed_ + updater, "a file");
  checkWithin(services());
  ASSERT_TRUE(QFile::remove(installed_ + updater));
  ASSERT_TRUE(QDir().mkpath(installed_ + updater));
  checkWithin(services());
  putUpdater(installed_);
  ASSERT_TRUE(QFile::remove(installed_ + updater + "/Contents/MacOS/Updater"));
  checkWithin(services());
  EXPECT_THAT(log_.entries(), ElementsAre(noBundle, noExecutable, noExecutable));
  EXPECT_THAT(started(), IsEmpty());
}

TEST_F(SoftwareUpdate, StartsAnAppDir) {
  put(installed_ + updater + "/AppRun", "#!/bin/sh\n", 0755);
  checkWithin(services());
  EXPECT_THAT(started(), ElementsAre(QStringList{installed_ + updater + "/AppRun", "-checkpath", host_}));
}

TEST_F(SoftwareUpdate, ReallyStartsTheUpdater) {
  putUpdater(host_ + "/Contents/Resources");
  auto real = QVSoftwareUpdate::Services::standard();
  const QVSoftwareUpdate::Services given = {.paths = paths_,
                                            .hostBundle = host_,
                                            .runTaskAndReturn = real.runTaskAndReturn,
                                            .openApplication = real.openApplication};
  checkWithin(given);
  EXPECT_TRUE(runEventLoopUntil([&] { return contents(answer()) == "updater:-checkpath " + host_.toUtf8(); }));
  QVSoftwareUpdate(given).manualUpdateCheck();
  EXPECT_TRUE(runEventLoopUntil([&] { return contents(answer()) == "updater:"; }));
}

// --- A temporary folder that others share ---------------------------------------------------------------------------

TEST_F(SoftwareUpdate, DoesNotStartWhatIsSomebodyElses) {
  putUpdater(host_ + "/Contents/Resources");
  if (::getuid() == 0) {
    const UpdaterPaths nobodys(log_.home());
    // What the superuser's copy takes over of the source's owner is somebody else's.
    const QByteArray program = QFile::encodeName(host_ + "/Contents/Resources" + updater + "/Contents/MacOS/Updater");
    ASSERT_EQ(::chown(program.constData(), 65534, 65534), 0);
    checkWithin(services(nobodys));
    QVSoftwareUpdate(services(nobodys)).manualUpdateCheck();
  } else {
    const UpdaterPaths another(log_.home(), ::getuid() + 1);
    checkWithin(services(another));
    QVSoftwareUpdate(services(another)).manualUpdateCheck();
  }
  EXPECT_THAT(started(), IsEmpty());
  EXPECT_THAT(log_.entries(), ElementsAre(notOurs(), notOurs()));
}

TEST_F(SoftwareUpdate, ReplacesALinkPlantedInTheTemporaryFolder) {
  putUpdater(host_ + "/Contents/Resources", "ours");
  for (const QString& target : {log_.home() + "/elsewhere" + updater, log_.home() + "/nowhere"}) {
    putUpdater(log_.home() + "/elsewhere", "theirs");
    ASSERT_TRUE(QFile::link(target, copy_));
    EXPECT_EQ(QVSoftwareUpdate::updaterPath(services()), copy_);
    EXPECT_FALSE(QFileInfo(copy_).isSymLink());
    EXPECT_TRUE(contents(copy_ + "/Contents/MacOS/Updater").contains("ours"));
    EXPECT_TRUE(contents(log_.home() + "/elsewhere" + updater + "/Contents/MacOS/Updater").contains("theirs"));
    ASSERT_TRUE(QDir(copy_).removeRecursively());
  }
}

TEST_F(SoftwareUpdate, StartsACopyThatTheGroupMayNotChange) {
  const QString bundle = host_ + "/Contents/Resources" + updater;
  putUpdater(host_ + "/Contents/Resources");
  const QStringList inside = {"", "/Contents", "/Contents/MacOS", "/Contents/MacOS/Updater", "/Contents/Info.plist"};
  for (const QString& path : inside)
    ASSERT_EQ(::chmod(QFile::encodeName(bundle + path).constData(), path.endsWith("plist") ? 0664 : 02775), 0);
  ASSERT_TRUE(QFile::link("Updater", bundle + "/Contents/MacOS/link"));
  checkWithin(services());
  QVSoftwareUpdate(services()).manualUpdateCheck();
  EXPECT_THAT(started(), ElementsAre(QStringList{copy_ + "/Contents/MacOS/Updater", "-checkpath", host_},
                                     QStringList{"open", copy_}));
  EXPECT_THAT(log_.entries(), IsEmpty());
  for (const QString& path : inside) {
    struct stat copied {
    }, original{};
    ASSERT_EQ(::stat(QFile::encodeName(copy_ + path).constData(), &copied), 0);
    ASSERT_EQ(::stat(QFile::encodeName(bundle + path).constData(), &original), 0);
    EXPECT_EQ(copied.st_mode & 0777, path.endsWith("plist") ? 0644U : 0755U) << path.toStdString();
    EXPECT_EQ(original.st_mode & 0777, path.endsWith("plist") ? 0664U : 0775U) << path.toStdString();
  }
  EXPECT_EQ(QDir(log_.home() + "/tmp").entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList(copy_.mid(copy_.lastIndexOf('/') + 1)));
}

TEST_F(SoftwareUpdate, StartsACopyOfWhatItsOwnerMayNotWriteTo) {
  putUpdater(host_ + "/Contents/Resources");
  for (const char* folder : {"", "/Contents"}) {
    const QByteArray closed = QFile::encodeName(host_ + "/Contents/Resources" + updater + folder);
    ASSERT_EQ(::chmod(closed.constData(), 0555), 0);
    started_.clear();
    checkWithin(services());
    QVSoftwareUpdate(services()).manualUpdateCheck();
    EXPECT_EQ(::chmod(closed.constData(), 0755), 0);
    EXPECT_THAT(started(), ElementsAre(QStringList{copy_ + "/Contents/MacOS/Updater", "-checkpath", host_},
                                       QStringList{"open", copy_}))
        << folder;
    EXPECT_THAT(log_.entries(), IsEmpty());
    EXPECT_EQ(QDir(log_.home() + "/tmp").entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1) << folder;
  }
}

TEST_F(SoftwareUpdate, DoesNotStartWhatOthersCanChange) {
  const struct {
    const char* path;
    mode_t mode;
  } rows[] = {{"", 0777}, {"/Contents", 0757}, {"/Contents/MacOS", 0777}, {"/Contents/MacOS/Updater", 0757}};
  const QString bundle = host_ + "/Contents/Resources" + updater;
  for (const auto& row : rows) {
    ASSERT_TRUE(!QFile::exists(bundle) || QDir(bundle).removeRecursively());
    putUpdater(host_ + "/Contents/Resources");
    ASSERT_EQ(::chmod(QFile::encodeName(bundle + row.path).constData(), row.mode), 0);
    checkWithin(services());
    EXPECT_THAT(started(), IsEmpty()) << row.path;
    EXPECT_EQ(log_.entries().last(), notOurs());
  }
  ASSERT_TRUE(QDir(bundle).removeRecursively());
  putUpdater(host_ + "/Contents/Resources");
  ASSERT_EQ(::chmod(QFile::encodeName(log_.home() + "/tmp").constData(), 0777), 0);
  checkWithin(services());
  EXPECT_THAT(started(), IsEmpty()) << "in a folder where anybody replaces anything";
  ASSERT_EQ(::chmod(QFile::encodeName(log_.home() + "/tmp").constData(), 01777), 0);
  checkWithin(services());
  EXPECT_EQ(started().size(), 1u);
}

TEST_F(SoftwareUpdate, LooksWhereLinksLead) {
  const QString shared = log_.home() + "/shared", own = log_.home() + "/tmp/own";
  put(shared + "/program", "", 0755);
  put(own + "/program", "", 0755);
  ASSERT_EQ(::chmod(QFile::encodeName(shared).constData(), 0777), 0);
  const struct {
    QString target;
    bool ours;
  } rows[] = {{"program", true},
              {own + "/program", true},
              {"../own/program", true},
              {".", true},
              {shared + "/program", false},
              {"../../shared/program", false},
              {"none", false},
              {"link", false},
              {log_.home() + "/tmp", false}};
  for (const auto& row : rows) {
    ASSERT_TRUE(QFile::link(row.target, own + "/link"));
    EXPECT_EQ(isOutOfOthersReach(own, ::getuid()), row.ours) << row.target.toStdString();
    ASSERT_TRUE(QFile::remove(own + "/link"));
  }
  EXPECT_TRUE(isOutOfOthersReach(own, ::getuid()));
  EXPECT_TRUE(isOutOfOthersReach(own + "/program", ::getuid()));
  EXPECT_FALSE(isOutOfOthersReach(log_.home() + "/tmp", ::getuid()));
  EXPECT_FALSE(isOutOfOthersReach(own + "/none", ::getuid()));
  for (const char* path : {"", "relative", "."}) EXPECT_FALSE(isOutOfOthersReach(path, ::getuid())) << path;
}

}  // namespace
