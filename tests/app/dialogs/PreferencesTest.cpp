#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QTest>

#include <unistd.h>

#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/settings/PropertyList.h"
#include "tests/app/WindowFixture.h"

namespace {

class Preferences : public WindowFixture {
 protected:
  QString file() const { return QVLocalPaths::prefsDirectory(true, *platform_) + "/com.quorvane.qc.plist"; }
  QVariantMap stored() const { return PropertyList::readDictionary(file()).value_or(QVariantMap()); }
  void store(const QVariant& value) {
    ASSERT_TRUE(QDir().mkpath(QFileInfo(file()).path()));
    ASSERT_TRUE(PropertyList::write(value, file()));
  }
  QCheckBox& analytics() { return *interface().qcLoggingCheck; }
  void click() { QTest::mouseClick(&analytics(), Qt::LeftButton, Qt::NoModifier, QPoint(8, analytics().height() / 2)); }
};

TEST_F(Preferences, ShowTheSwitchOffTheFirstTime) {
  launch();
  EXPECT_FALSE(analytics().isChecked());
  EXPECT_FALSE(QFile::exists(file()));
}

TEST_F(Preferences, ShowTheStoredSwitch) {
  struct Row {
    QVariant value;
    bool on;
  };
  const Row rows[] = {{true, true},    {false, false},      {qlonglong{1}, true}, {qlonglong{0}, false},
                      {"text", false}, {QVariant(), false}, {1.0, true},          {QVariantMap(), false}};
  for (const Row& row : rows) {
    QVariantMap values{{"other", "kept"}};
    if (row.value.isValid()) values["logQC"] = row.value;
    store(values);
    relaunch();
    EXPECT_EQ(analytics().isChecked(), row.on) << row.value.toString().toStdString();
  }
}

TEST_F(Preferences, AreOffOverAFileThatCannotBeRead) {
  store(QVariantList{1});
  launch();
  EXPECT_FALSE(analytics().isChecked());
  choose("preferences");
  click();
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", true}}));
}

TEST_F(Preferences, MakeTheFileWithTheSwitchAlone) {
  launch();
  choose("preferences");
  click();
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", true}}));
  EXPECT_EQ(stored()["logQC"].metaType().id(), QMetaType::Bool);
  relaunch();
  EXPECT_TRUE(analytics().isChecked());
}

TEST_F(Preferences, KeepEveryOtherKey) {
  const QVariantMap others{{"uuid", "9C1F"},
                           {"count", qlonglong{3}},
                           {"ratio", 0.5},
                           {"bytes", QByteArray("x")},
                           {"list", QVariantList{"a", QVariantMap{{"k", true}}}}};
  QVariantMap expected = others;
  store(others);
  launch();
  choose("preferences");
  for (const bool on : {true, false, true}) {
    click();
    expected["logQC"] = on;
    EXPECT_EQ(analytics().isChecked(), on);
    EXPECT_EQ(stored(), expected);
  }
}

TEST_F(Preferences, TakeAMixedStateForOff) {
  launch();
  QCheckBox sender;
  sender.setTristate(true);
  sender.setCheckState(Qt::PartiallyChecked);
  controller().prefsToggleQCLogging(&sender);
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", false}}));
}

TEST_F(Preferences, ShowWhatWasDecidedMeanwhile) {
  launch();
  store(QVariantMap{{"logQC", true}});
  choose("preferences");
  EXPECT_TRUE(analytics().isChecked());
  EXPECT_TRUE(interface().preferences->isVisible());
  QDialog& preferences = *interface().preferences;
  // Without a window manager the window may take the activation back, and its own Escape would be meant.
  ASSERT_TRUE(QTest::qWaitFor([&] {
    preferences.activateWindow();
    return QApplication::activeWindow() == &preferences;
  }));
  QTest::keyClick(&preferences, Qt::Key_Escape);
  EXPECT_FALSE(preferences.isVisible());
}

TEST_F(Preferences, GoOnWhereTheFileCannotBeWritten) {
  if (::geteuid() == 0) GTEST_SKIP() << "nothing is closed to the superuser";
  launch();
  const QString folder = QFileInfo(file()).path();
  ASSERT_TRUE(QDir().mkpath(folder));
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
  choose("preferences");
  click();
  EXPECT_TRUE(analytics().isChecked());
  EXPECT_FALSE(QFileInfo::exists(file()));
  EXPECT_EQ(said(), Message(MessageKind::Warning, "The settings cannot be written, and stay as they were."));
  ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

TEST_F(Preferences, MoveAsideWhatStandsInThePlaceOfTheirFile) {
  launch();
  ASSERT_TRUE(QDir().mkpath(file()));
  choose("preferences");
  click();
  EXPECT_EQ(stored(), (QVariantMap{{"logQC", true}}));
  EXPECT_TRUE(QFileInfo(file() + ".damaged").isDir());
}

}  // namespace
