#include <future>
#include <vector>

#include <gmock/gmock.h>

#include "SharedFiles/authorization/QVAuthorization.h"
#include "tests/SharedFiles/authorization/AuthorizationFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Authorization : public AuthorizationFixture {
 protected:
  /// This process as pkcheck is told of it.
  static QString subject() {
    QFile file("/proc/self/stat");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray status = file.readAll();
    const auto fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
    return QString("%1,%2,1000").arg(::getpid()).arg(QString(fields.at(19)));
  }
  static QStringList question() {
    return {"pkcheck", "--action-id", "system.privilege.admin", "--process", subject(), "--allow-user-interaction"};
  }
  static int touch(AuthorizationController& controller, const QString& path) {
    return controller.authExecTask("/bin/mkdir", {"-p", path});
  }
};

// --- The superuser --------------------------------------------------------------------------------------------------

TEST_F(Authorization, IsTheSuperusersWithoutADialog) {
  for (const Interface interface : {Interface::gui, Interface::none}) {
    AuthorizationController& controller = superusers(interface);
    EXPECT_TRUE(controller.isAuthorized());
    EXPECT_TRUE(controller.canAuthorize());
    EXPECT_TRUE(controller.authStart());
    EXPECT_TRUE(controller.authStartWithUser("root", "wrong"));
    EXPECT_TRUE(controller.authStartWithUser(QString(), QString()));
    controller.authEnd();
    EXPECT_TRUE(controller.isAuthorized());
    EXPECT_TRUE(controller.userDirectory().isNull());
  }
  EXPECT_THAT(calls(), IsEmpty());
}

// --- The dialog -----------------------------------------------------------------------------------------------------

TEST_F(Authorization, AsksForTheRightOnce) {
  AuthorizationController& user = controller();
  EXPECT_TRUE(user.hasGUI());
  EXPECT_EQ(user.userDirectory(), log_.home());
  EXPECT_TRUE(user.canAuthorize());
  EXPECT_FALSE(user.isAuthorized());
  EXPECT_TRUE(user.authStart());
  EXPECT_TRUE(user.isAuthorized());
  EXPECT_TRUE(user.authStart());
  EXPECT_THAT(calls(), ElementsAre(question()));
  user.authEnd();
  EXPECT_FALSE(user.isAuthorized());
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_TRUE(user.authStart());
  EXPECT_THAT(calls(), ElementsAre(question()));
}

TEST_F(Authorization, IsRefusedWithoutAWindow) {
  AuthorizationController& user = controller(Interface::none);
  EXPECT_FALSE(user.canAuthorize());
  EXPECT_EQ(console([&] { EXPECT_FALSE(user.authStart()); }), "Unable to authorize\n");
  EXPECT_EQ(console([&] { EXPECT_EQ(touch(user, at("made")), -1); }), "Unable to authorize\n");
  EXPECT_THAT(calls(), IsEmpty());
  EXPECT_FALSE(stands("made"));
}

TEST_F(Authorization, FollowsTheAnswer) {
  AuthorizationController& user = controller();
  for (const char* refusal : {"exit 1", "exit 2", "exit 3", "exit 127", "kill -9 $$"}) {
    standIn("pkcheck", refusal);
    EXPECT_EQ(console([&] { EXPECT_EQ(touch(user, at("made")), -1) << refusal; }), "");
    EXPECT_FALSE(user.isAuthorized());
    EXPECT_THAT(calls(), ElementsAre(question()));
  }
  EXPECT_FALSE(stands("made"));
}

TEST_F(Authorization, TakesAnAbsentServiceForARefusal) {
  QFile::remove(at("bin/pkcheck"));
  AuthorizationController& user = controller();
  EXPECT_EQ(console([&] {
              EXPECT_FALSE(user.authStart());
              EXPECT_EQ(touch(user, at("made")), -1);
              EXPECT_FALSE(user.authCreateDir(at("made")));
            }),
            "");
  EXPECT_THAT(log_.entries(), IsEmpty());
  EXPECT_EQ(log_.printed(), "");
}

// --- Credentials ----------------------------------------------------------------------------------------------------

TEST_F(Authorization, TriesAPasswordOnAPipe) {
  standIn("sudo", "case $1 in -S) cat >'" + QFile::encodeName(at("typed")) + "';; esac");
  AuthorizationController& user = controller(Interface::none);
  EXPECT_TRUE(user.authStartWithUser("ann", "p\u00e4ss $(id) '\"\\ -rf"));
  EXPECT_TRUE(user.isAuthorized());
  EXPECT_EQ(QString::fromUtf8(read("typed")), "p\u00e4ss $(id) '\"\\ -rf\n");
  EXPECT_THAT(calls(), ElementsAre(QStringList{"sudo", "-k"}, QStringList{"sudo", "-S", "-p", "", "-v"}));
  user.authEnd();
  EXPECT_THAT(calls(), ElementsAre(QStringList{"sudo", "-k"}));
  EXPECT_FALSE(user.isAuthorized());
}

TEST_F(Authorization, TellsNobodyThePassword) {
  AuthorizationController& user = controller(Interface::none);
  const QString said = console([&] {
    EXPECT_FALSE(user.authStartWithUser("ann", "close sesame"));
    EXPECT_TRUE(user.authStartWithUser("ann", "open sesame"));
    EXPECT_TRUE(user.authCreateDir(at("made")));
    EXPECT_TRUE(eventually([&] { return stands("made"); }));
  });
  EXPECT_FALSE(said.contains("sesame"));
  EXPECT_FALSE(log_.entries().join('\n').contains("sesame"));
  EXPECT_FALSE(read("calls").contains("sesame"));
  EXPECT_FALSE(read("environments").isEmpty());
  EXPECT_FALSE(read("environments").contains("sesame"));
}

TEST_F(Authorization, RefusesWrongCredentials) {
  struct Row {
    QString user, password;
    bool isTried;
  };
  const std::vector<Row> rows = {{"ann", "wrong", true},
                                 {"ann", "", true},
                                 {"root", "open sesame", false},
                                 {"", "open sesame", false},
                                 {"Ann", "open sesame", false},
                                 {"ann", "open sesame\nsecond", false},
                                 {"ann", "open sesame\r", false},
                                 {"ann", QString("open sesame") + QChar(0), false},
                                 {"ann", QString(QChar(0xD800)), false},
                                 {"ann", QString(1001, 'x'), false}};
  for (const Row& row : rows) {
    AuthorizationController& user = controller();
    EXPECT_EQ(console([&] { EXPECT_FALSE(user.authStartWithUser(row.user, row.password)); }),
              "Authorization failed. Invalid username or password\n");
    EXPECT_FALSE(user.isAuthorized());
    EXPECT_EQ(calls().contains(QStringList{"sudo", "-S", "-p", "", "-v"}), row.isTried)
        << row.user.toStdString() << row.password.toStdString();
  }
  EXPECT_EQ(log_.entries(),
            QStringList(static_cast<qsizetype>(rows.size()), "Authorization failed. Invalid username or password"));
}

TEST_F(Authorization, NeedsBothAUserAndAPassword) {
  AuthorizationController& user = controller();
  EXPECT_EQ(console([&] {
              EXPECT_FALSE(user.authStartWithUser(QString(), "open sesame"));
              EXPECT_FALSE(user.authStartWithUser("ann", QString()));
            }),
            "");
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Authorization, SaysWhenNoPasswordCanBeTried) {
  QFile::remove(at("bin/sudo"));
  AuthorizationController& user = controller();
  EXPECT_EQ(console([&] { EXPECT_FALSE(user.authStartWithUser("ann", "open sesame")); }),
            "Unable to create authRef - error 2\n");
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(Authorization, SurvivesAProgramThatReadsNoPassword) {
  standIn("sudo", "exec 0<&-; exit 1");
  AuthorizationController& user = controller();
  console([&] {
    for (int i = 0; i < 20; ++i) EXPECT_FALSE(user.authStartWithUser("ann", "open sesame"));
  });
}

TEST_F(Authorization, LosesTheRightWhenLaterCredentialsAreWrong) {
  AuthorizationController& user = controller();
  EXPECT_TRUE(user.authStartWithUser("ann", "open sesame"));
  console([&] { EXPECT_FALSE(user.authStartWithUser("ann", "wrong")); });
  EXPECT_FALSE(user.isAuthorized());
}

TEST_F(Authorization, GivesThePasswordsRightBackAtItsEnd) {
  {
    AuthorizationController user(environment(), Interface::none);
    EXPECT_TRUE(user.authStartWithUser("ann", "open sesame"));
    calls();
  }
  EXPECT_THAT(calls(), ElementsAre(QStringList{"sudo", "-k"}));
}

// --- Running a tool -------------------------------------------------------------------------------------------------

TEST_F(Authorization, MissesAToolBeforeItAsks) {
  AuthorizationController& user = controller();
  EXPECT_EQ(console([&] { EXPECT_EQ(user.authExecTask("/no/such/tool", {"x"}), -2); }),
            "Unable to execute task: path /no/such/tool doesn't exist\n");
  EXPECT_EQ(console([&] { EXPECT_EQ(superusers().authExecTask("", {}), -2); }),
            "Unable to execute task: path  doesn't exist\n");
  EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(Authorization, RunsAToolThroughPkexec) {
  AuthorizationController& user = controller();
  EXPECT_EQ(touch(user, at("made")), 0);
  EXPECT_THAT(calls(), ElementsAre(question(), QStringList{"pkexec", "--disable-internal-agent", LUMACHECK_PRIVILEGED,
                                                           "/bin/mkdir", "-p", at("made")}));
  EXPECT_TRUE(eventually([&] { return stands("made"); }));
}

TEST_F(Authorization, RunsAToolThroughSudoWhereAPasswordWasGiven) {
  AuthorizationController& user = controller(Interface::none);
  ASSERT_TRUE(user.authStartWithUser("ann", "open sesame"));
  calls();
  EXPECT_EQ(touch(user, at("made")), 0);
  EXPECT_THAT(calls(),
              ElementsAre(QStringList{"sudo", "-n", "--", LUMACHECK_PRIVILEGED, "/bin/mkdir", "-p", at("made")}));
  EXPECT_TRUE(eventually([&] { return stands("made"); }));
}

TEST_F(Authorization, TellsWhyAToolDidNotStart) {
  AuthorizationController& user = controller();
  const std::vector<std::pair<QByteArray, int>> rows = {
      {"exit 126", 126}, {"exit 127", 127}, {"exit 0", -3}, {"echo something else; exit 5", 5}};
  for (const auto& [script, status] : rows) {
    standIn("pkexec", script);
    EXPECT_EQ(touch(user, at("made")), status) << script.toStdString();
    EXPECT_FALSE(user.authCreateDir(at("made")));
    EXPECT_TRUE(user.isAuthorized()) << "pkexec asks again by itself";
  }
  QFile::remove(at("bin/pkexec"));
  console([&] { EXPECT_EQ(touch(user, at("made")), -3); });
  EXPECT_FALSE(stands("made"));
}

TEST_F(Authorization, LetsOnlyTheFewToolsThrough) {
  AuthorizationController& user = controller();
  EXPECT_EQ(user.authExecTask("/bin/sh", {"-c", "touch " + at("made")}), 64);
  EXPECT_EQ(user.authExecTask("/bin/rm", {"-Rdf", "relative"}), 65);
  EXPECT_EQ(user.authExecTask("/bin/mv", {"-f", "/usr", at("absent/destination")}), 77);
  EXPECT_EQ(user.authExecTask("/bin/rm", {"-Rdf", QString("/a") + QChar(0) + "b"}), 65);
  EXPECT_FALSE(stands("made"));
  EXPECT_THAT(calls(), IsEmpty()) << "nor is anybody asked";
  EXPECT_EQ(log_.entries().first(),
            "Unable to run /bin/sh with administrator rights because it is not one of the tools that may.");
}

TEST_F(Authorization, ForgetsAPasswordsRightThatHasRunOut) {
  AuthorizationController& user = controller();
  ASSERT_TRUE(user.authStartWithUser("ann", "open sesame"));
  standIn("sudo", "exit 1");
  EXPECT_EQ(touch(user, at("made")), 1);
  EXPECT_FALSE(user.isAuthorized());
  calls();
  EXPECT_EQ(touch(user, at("made")), 0);
  EXPECT_EQ(calls().first(), question());
}

TEST_F(Authorization, WaitsForTheToolWhenAsked) {
  AuthorizationController& user = controller();
  standIn("pkexec", "echo started; sleep 0.5; touch '" + QFile::encodeName(at("through")) + "'");
  EXPECT_EQ(touch(user, at("made")), 0);
  EXPECT_FALSE(stands("through"));
  EXPECT_TRUE(eventually([&] { return stands("through"); }));
  QFile::remove(at("through"));
  EXPECT_EQ(user.authExecTask("/bin/mkdir", {"-p", at("made")}, false), 0);
  EXPECT_TRUE(stands("through"));
}

TEST_F(Authorization, RunsToolsDirectlyForTheSuperuser) {
  AuthorizationController& root = superusers();
  EXPECT_EQ(root.authExecTask("/bin/mkdir", {"-p", at("made/now")}, false), 0);
  EXPECT_TRUE(stands("made/now"));
  EXPECT_EQ(root.authExecTask("/bin/mkdir", {"-p", at("made/later")}), 0);
  EXPECT_TRUE(eventually([&] { return stands("made/later"); }));
  EXPECT_EQ(root.authExecTask("/bin/false", {}, false), 0) << "a tool's own status is not looked at";
  EXPECT_THAT(calls(), IsEmpty());
}

// --- The shared instance --------------------------------------------------------------------------------------------

TEST_F(Authorization, IsOneForTheProcess) {
  std::vector<std::future<AuthorizationController*>> threads;
  for (int i = 0; i < 8; ++i)
    threads.push_back(std::async(std::launch::async, [] { return &QVAuthorization::sharedController(false); }));
  AuthorizationController* const shared = threads.front().get();
  for (std::size_t i = 1; i < threads.size(); ++i) EXPECT_EQ(threads[i].get(), shared);
  EXPECT_EQ(&QVAuthorization::sharedController(), shared);
  EXPECT_EQ(&QVAuthorization::sharedController(true), shared);
  EXPECT_FALSE(shared->hasGUI()) << "the first caller says";
}

TEST(AuthorizationPrograms, AreTheSystemsAndTheOneInstalledBesideThis) {
  const AuthorizationPrograms programs = AuthorizationPrograms::standard();
  EXPECT_EQ(programs.pkcheck, "/usr/bin/pkcheck");
  EXPECT_EQ(programs.pkexec, "/usr/bin/pkexec");
  EXPECT_EQ(programs.sudo, "/usr/bin/sudo");
  EXPECT_EQ(programs.privileged, LUMACHECK_PRIVILEGED);
}

}  // namespace
