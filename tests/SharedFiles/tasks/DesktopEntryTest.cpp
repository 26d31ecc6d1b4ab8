#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include "SharedFiles/tasks/DesktopEntry.h"
#include "tests/SharedFiles/EventLoop.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

QByteArray entryWith(const QByteArray& exec) {
  return "[Desktop Entry]\nType=Application\nName=Crash Line\nIcon=crash\nExec=" + exec + "\n";
}

TEST(DesktopEntry, MakesACommandOfItsExecLine) {
  struct Row {
    const char* exec;
    QStringList command;
  };
  const QString file = "/a b/$(id);\"x";
  const QString url = "file:///a%20b/$(id);%22x";
  for (const Row& row : {
           Row{"show %f", {"show", file}},
           Row{"show %F", {"show", file}},
           Row{"show --url=%u -v", {"show", "--url=" + url, "-v"}},
           Row{"show %U", {"show", url}},
           Row{"show", {"show", file}},
           Row{"show %%f", {"show", "%f", file}},
           Row{"show %i %c %k %f", {"show", "--icon", "crash", "Crash Line", "/there.desktop", file}},
           Row{"show %d %D %n %N %v %m %f", {"show", file}},
           Row{"\"/opt/my tools/show\" \"a;b\" %f", {"/opt/my tools/show", "a;b", file}},
           Row{"show \"\" %f", {"show", "", file}},
           Row{"show \"\\\\$x \\\\\"q\\\\\" \\\\\\\\\" %f", {"show", "$x \"q\" \\", file}},
           Row{"show  \t a\\sb %f", {"show", "a", "b", file}},
           Row{"show %", {"show", "%", file}},
       }) {
    const auto entry = DesktopEntry::parse(entryWith(row.exec), "/there.desktop");
    ASSERT_TRUE(entry) << row.exec;
    EXPECT_EQ(entry->commandFor(file), row.command) << row.exec;
  }
}

TEST(DesktopEntry, IsNoneWithoutAnApplicationToStart) {
  for (const QByteArray& text :
       {QByteArray(), QByteArray("[Desktop Entry]\nType=Application\n"), entryWith(""), entryWith("\"never closed"),
        entryWith("\"\" %f"), entryWith("show") + "Hidden=true\n",
        QByteArray("[Desktop Entry]\nType=Link\nExec=show\n"), QByteArray("[Other]\nType=Application\nExec=show\n"),
        QByteArray("\xff\xfe[\0Desktop", 12)}) {
    EXPECT_FALSE(DesktopEntry::parse(text, "/there.desktop")) << text.toStdString();
  }
}

TEST(DesktopEntry, ReadsItsOwnGroupOnly) {
  const auto entry = DesktopEntry::parse(
      "# Exec=comment\n[Desktop Action x]\nExec=other\n[Desktop Entry]\n Type = Application\nExec[de]=zeigen\n"
      "#Exec=comment\nExec = show %f\nExec=twice\n[Desktop Action y]\nExec=other\n",
      "/there.desktop");
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->commandFor("/f"), QStringList({"show", "/f"}));
}

class DesktopEntries : public testing::Test {
 protected:
  DesktopEntries() {
    environment_.set("XDG_DATA_HOME", QFile::encodeName(path("own")));
    environment_.set("XDG_DATA_DIRS", QFile::encodeName(path("one") + ":relative:" + path("two")));
    environment_.set("PATH", QFile::encodeName(path("programs")) + ":" + qgetenv("PATH"));
  }
  QString path(const QString& name) const { return folder_.filePath(name); }
  void write(const QString& name, const QByteArray& text) const {
    QDir().mkpath(QFileInfo(path(name)).path());
    QFile file(path(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }
  static QString programOf(const QString& identifier) {
    const auto entry = DesktopEntry::find(identifier);
    return entry ? entry->commandFor("/f").first() : QString();
  }

  ProcessLog log_;
  QTemporaryDir folder_;
  EnvironmentGuard environment_;
};

TEST_F(DesktopEntries, AreLookedForInTheDataFoldersInTheirOrder) {
  EXPECT_EQ(programOf("com.example.Show"), QString());
  write("two/applications/com.example.Show.desktop", entryWith("second"));
  EXPECT_EQ(programOf("com.example.Show"), "second");
  write("one/applications/com.example.Show.desktop", entryWith("first"));
  EXPECT_EQ(programOf("com.example.Show"), "first");
  write("own/applications/com.example.Show.desktop", entryWith("mine"));
  EXPECT_EQ(programOf("com.example.Show"), "mine");
  write("own/applications/com.example.Show.desktop", entryWith("mine") + "Hidden=true\n");
  EXPECT_EQ(programOf("com.example.Show"), QString()) << "a hidden entry hides those behind it";
}

TEST_F(DesktopEntries, StartTheirProgramWithoutAShell) {
  write("programs/show it", "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.given\"\nmv \"$0.given\" \"$0.arguments\"\n");
  const auto entry = DesktopEntry::parse(entryWith("\"show it\" '$(id)' %f"), {});
  ASSERT_TRUE(entry);
  EXPECT_TRUE(entry->open("/-rf; a b"));
  QFile given(path("programs/show it.arguments"));
  ASSERT_TRUE(runEventLoopUntil([&] { return given.exists(); }, 20000));
  ASSERT_TRUE(given.open(QIODevice::ReadOnly));
  EXPECT_EQ(given.readAll(), "'$(id)'\n/-rf; a b\n");
}

TEST_F(DesktopEntries, StartNothingThatIsNotThere) {
  EXPECT_FALSE(DesktopEntry::parse(entryWith("no-such-program-here %f"), {})->open("/f"));
  EXPECT_FALSE(DesktopEntry::parse(entryWith("/no/such/program %f"), {})->open("/f"));
  EXPECT_FALSE(DesktopEntry::parse(entryWith("/tmp %f"), {})->open("/f"));
}

}  // namespace
