#include <QRegularExpression>

#include <gtest/gtest.h>

#include "SharedFiles/foundation/BundleInfo.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

TEST(BundleInfo, HoldsTheKeysOfTheApplication) {
  const BundleInfo& bundle = BundleInfo::mainBundle();
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleIdentifier"), "com.quorvane.Lumacheck");
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleName"), "Lumacheck");
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("QVShortName"), "lumacheck");
  const QString version = bundle.objectForInfoDictionaryKey("CFBundleVersion");
  EXPECT_TRUE(QRegularExpression("^\\d+\\.\\d+\\.\\d+$").match(version).hasMatch()) << version.toStdString();
  EXPECT_EQ(bundle.objectForInfoDictionaryKey("CFBundleShortVersionString"), version);
  EXPECT_TRUE(bundle.objectForInfoDictionaryKey("CFBundleOther").isNull());
}

TEST(BundleInfo, KnowsTheRunningExecutable) {
  const BundleInfo& bundle = BundleInfo::mainBundle();
  EXPECT_EQ(bundle.executableName(), "test_shared_foundation");
  EXPECT_EQ(bundle.executablePath(), bundle.executableFolder() + "/test_shared_foundation");
  EXPECT_TRUE(bundle.executableFolder().startsWith('/'));
}

TEST(BundleInfo, NamesTheExecutableWithoutItsExtension) {
  const struct {
    const char *path, *name, *folder;
  } rows[] = {{"/usr/bin/lumacheck", "lumacheck", "/usr/bin"},
              {"/usr/bin/demo.bin", "demo", "/usr/bin"},
              {"/usr/bin/demo.1.bin", "demo.1", "/usr/bin"},
              {"/usr/bin.d/.hidden", ".hidden", "/usr/bin.d"},
              {"/demo", "demo", "/"}};
  for (const auto& row : rows) {
    const BundleInfo bundle({}, row.path);
    EXPECT_EQ(bundle.executableName(), row.name) << row.path;
    EXPECT_EQ(bundle.executableFolder(), row.folder) << row.path;
  }
}

TEST(BundleInfo, HasNothingWhenThereIsNone) {
  const BundleInfo none;
  EXPECT_TRUE(none.executablePath().isNull());
  EXPECT_TRUE(none.executableName().isEmpty());
  EXPECT_TRUE(none.executableFolder().isEmpty());
  EXPECT_TRUE(none.objectForInfoDictionaryKey("CFBundleVersion").isNull());
}

}  // namespace
