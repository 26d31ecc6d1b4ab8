#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "SharedFiles/settings/PropertyList.h"
#include "SharedFiles/tasks/ApplicationBundle.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

class ApplicationBundles : public testing::Test {
 protected:
  QString path(const QString& name) const { return folder_.filePath(name); }

  void writeProgram(const QString& file) const {
    QDir().mkpath(QFileInfo(file).path());
    QFile program(file);
    ASSERT_TRUE(program.open(QIODevice::WriteOnly));
    program.write("#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.given\"\nmv \"$0.given\" \"$0.arguments\"\n");
    program.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  void writeInformation(const QString& bundle, const QVariant& executable) const {
    QDir().mkpath(bundle + "/Contents");
    ASSERT_TRUE(PropertyList::write(QVariantMap{{"CFBundleExecutable", executable}}, bundle + "/Contents/Info.plist"));
  }
  static QByteArray argumentsGivenTo(const QString& program) {
    QFile file(program + ".arguments");
    runEventLoopUntil([&] { return file.exists(); }, 20000);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  ProcessLog log_;
  QTemporaryDir folder_;
};

TEST_F(ApplicationBundles, StartTheExecutableThatTheirInformationNames) {
  const QString bundle = path("$(id) a;b.app");
  writeInformation(bundle, "run it");
  writeProgram(bundle + "/Contents/MacOS/run it");
  EXPECT_EQ(ApplicationBundle(bundle).executable(), bundle + "/Contents/MacOS/run it");
  EXPECT_TRUE(ApplicationBundle(bundle).open({"-rf", "a b", "$(id)"}));
  EXPECT_EQ(argumentsGivenTo(bundle + "/Contents/MacOS/run it"), "-rf\na b\n$(id)\n");
}

TEST_F(ApplicationBundles, StartAppRunOfAFolderWithoutInformation) {
  writeProgram(path("Tool.AppDir/AppRun"));
  EXPECT_EQ(ApplicationBundle(path("Tool.AppDir")).executable(), path("Tool.AppDir/AppRun"));
  EXPECT_TRUE(ApplicationBundle(path("Tool.AppDir")).open({"one"}));
  EXPECT_EQ(argumentsGivenTo(path("Tool.AppDir/AppRun")), "one\n");
}

TEST_F(ApplicationBundles, StartNothingOutsideOfThemselves) {
  writeProgram(path("outside"));
  for (const QVariant& name :
       {QVariant("../../../outside"), QVariant(".."), QVariant("."), QVariant(""), QVariant(7)}) {
    writeInformation(path("Bad.app"), name);
    EXPECT_TRUE(ApplicationBundle(path("Bad.app")).executable().isNull()) << name.toString().toStdString();
    EXPECT_FALSE(ApplicationBundle(path("Bad.app")).open({}));
  }
  EXPECT_FALSE(QFile::exists(path("outside.arguments")));
}

TEST_F(ApplicationBundles, StartNothingWithoutAnExecutableFile) {
  EXPECT_FALSE(ApplicationBundle(path("missing")).exists());
  EXPECT_FALSE(ApplicationBundle(path("missing")).open({}));
  QDir().mkpath(path("Folder.AppDir/AppRun"));
  EXPECT_TRUE(ApplicationBundle(path("Folder.AppDir")).exists());
  EXPECT_FALSE(ApplicationBundle(path("Folder.AppDir")).open({}));
  writeInformation(path("Empty.app"), "absent");
  EXPECT_FALSE(ApplicationBundle(path("Empty.app")).open({}));
  writeProgram(path("Plain.app/Contents/MacOS/plain"));
  QFile::setPermissions(path("Plain.app/Contents/MacOS/plain"), QFile::ReadOwner | QFile::WriteOwner);
  writeInformation(path("Plain.app"), "plain");
  EXPECT_FALSE(ApplicationBundle(path("Plain.app")).open({}));
}

TEST(ApplicationBundle, OfTheRunningProgramLiesUnderItsPrefix) {
  EXPECT_EQ(ApplicationBundle::hostPath(BundleInfo({}, "/opt/quorvane/bin/Lumacheck")), "/opt/quorvane/lib/lumacheck");
  EXPECT_TRUE(ApplicationBundle::hostPath(BundleInfo()).isNull());
  EXPECT_EQ(ApplicationBundle("/b").pathForResource("Crashline", "app"), "/b/Contents/Resources/Crashline.app");
}

}  // namespace
