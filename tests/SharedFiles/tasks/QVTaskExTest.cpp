#include <QElapsedTimer>
#include <QRegularExpression>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SharedFiles/foundation/QVPlatformException.h"
#include "SharedFiles/tasks/QVTaskEx.h"
#include "system/Descriptor.h"
#include "tests/SharedFiles/ProcessLog.h"
#include "tests/SharedFiles/QtPrinters.h"
#include "tests/SharedFiles/tasks/Shell.h"
#include "tests/system/ThreadsRefused.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TaskRuns : public testing::Test {
 protected:
  QString file(const QString& name) const { return log_.home() + "/" + name; }
  /// An executable file with that content.
  QString program(const QString& name, const QByteArray& content) const {
    QFile written(file(name));
    EXPECT_TRUE(written.open(QIODevice::WriteOnly));
    written.write(content);
    written.close();
    EXPECT_EQ(::chmod(QFile::encodeName(written.fileName()).constData(), 0755), 0);
    return written.fileName();
  }
  static std::optional<QByteArray> collect(const QByteArray& script, bool logOutput = true, bool logError = true) {
    return QVTaskEx::dataFromTask(shell, {"-c", script}, nullptr, std::nullopt, logOutput, logError);
  }

  ProcessLog log_;
};

// --- Where the streams of a program lead ----------------------------------------------------------------------------

/// The programs of a test are told to write where their three streams lead, with "pipe" for a pipe that this process
/// does not have; meanwhile the test's own input and output are files.
class TaskStreams : public TaskRuns {
 protected:
  TaskStreams() : input_(replace(STDIN_FILENO, "input")), output_(replace(STDOUT_FILENO, "output")) {}
  ~TaskStreams() override {
    ::dup2(input_.get(), STDIN_FILENO);
    ::dup2(output_.get(), STDOUT_FILENO);
  }

  QStringList told() const {
    return {"-c",
            "a=$(readlink /proc/$$/fd/0) b=$(readlink /proc/$$/fd/1) c=$(readlink /proc/$$/fd/2);"
            "printf '%s\\n' \"$a\" \"$b\" \"$c\" > \"$0.new\"; mv \"$0.new\" \"$0\"",
            file("told")};
  }
  /// Once the program has told of all three.
  QStringList streams() const {
    QStringList lines;
    for (int i = 0; i < 5000 && lines.size() < 3; ++i, ::usleep(1000)) {
      QFile written(file("told"));
      if (written.open(QIODevice::ReadOnly))
        lines = QString::fromUtf8(written.readAll()).split('\n', Qt::SkipEmptyParts);
    }
    QFile::remove(file("told"));
    for (QString& line : lines) line.replace(QRegularExpression("^pipe:.*"), "pipe");
    return lines;
  }

 private:
  sys::Descriptor replace(int standard, const QString& name) const {
    sys::Descriptor before(::fcntl(standard, F_DUPFD_CLOEXEC, 10));
    const sys::Descriptor made(::open(QFile::encodeName(file(name)).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    ::dup2(made.get(), standard);
    return before;
  }

  sys::Descriptor input_, output_;
};

TEST_F(TaskStreams, LeadNowhereWhereNobodyReads) {
  const QStringList silent = {file("input"), "/dev/null", "/dev/null"};
  EXPECT_TRUE(QVTaskEx::runTask(shell, told()));
  EXPECT_EQ(streams(), silent);
  QVTaskEx::runTaskAndReturn(shell, told());
  EXPECT_EQ(streams(), silent);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, told()), 0);
  EXPECT_EQ(streams(), silent);
}

TEST_F(TaskStreams, ArePipesWhereOutputIsCollected) {
  const struct {
    bool logOutput, logError;
    QStringList streams;
  } rows[] = {{true, true, {"pipe", "pipe", "pipe"}},
              {true, false, {"pipe", "pipe", "/dev/null"}},
              {false, true, {"pipe", file("output"), "pipe"}},
              {false, false, {"pipe", file("output"), "/dev/null"}}};
  for (const auto& row : rows) {
    QVTaskEx::dataFromTask(shell, told(), nullptr, std::nullopt, row.logOutput, row.logError);
    EXPECT_EQ(streams(), row.streams) << row.logOutput << row.logError;
  }
  QVTaskEx::dataFromTask(shell, told(), nullptr);
  EXPECT_EQ(streams(), rows[0].streams);
}

TEST_F(TaskStreams, LeadToTheDelegateFromTheOutputAlone) {
  const auto task = QVTaskEx::create();
  std::atomic<bool> ended = false;
  task->asyncDataFromTask(
      shell, told(), [&](const QByteArray& chunk, QVTaskEx&, const QVariant&) { ended = chunk.isEmpty(); }, QVariant());
  EXPECT_EQ(streams(), QStringList({file("input"), "pipe", "/dev/null"}));
  while (!ended) ::usleep(1000);
}

// --- Run and wait ---------------------------------------------------------------------------------------------------

TEST_F(TaskRuns, AreTrueOnceTheProgramEndedWhateverItsStatus) {
  EXPECT_TRUE(QVTaskEx::runTask(shell, {"-c", "exit 0"}));
  EXPECT_TRUE(QVTaskEx::runTask(shell, {"-c", "exit 7"}));
  EXPECT_TRUE(QVTaskEx::runTask("/bin/true"));
  EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(TaskRuns, WaitForTheProgramsEnd) {
  const QString made = file("made");
  EXPECT_TRUE(QVTaskEx::runTask(shell, {"-c", "sleep 0.2; : > \"$0\"", made}));
  EXPECT_TRUE(QFile::exists(made));
}

TEST_F(TaskRuns, HandArgumentsOverAsTheyAre) {
  for (const QString& argument :
       {QString("-rf"), QString("a;id"), QString("$(id)"), QString("`id`"), QString("a b"), QString("two\nlines"),
        QString("*"), QString("\"'\\"), QString(""), QString::fromUtf8("Grün €")}) {
    EXPECT_EQ(QVTaskEx::dataFromTask("/usr/bin/printf", {"%s.", argument}, nullptr), argument.toUtf8() + ".");
  }
}

TEST_F(TaskRuns, PutTheProcessWhereTheCallerLooks) {
  ChildProcessSlot task;
  EXPECT_TRUE(QVTaskEx::runTask(shell, {"-c", "exit 3"}, &task));
  ASSERT_TRUE(task.get());
  EXPECT_EQ(task.get()->launchPath(), shell);
  EXPECT_FALSE(task.get()->isRunning());
  EXPECT_EQ(task.get()->terminationStatus(), 3);
}

TEST_F(TaskRuns, ReturnAtOnceWhenNobodyWaits) {
  const QString made = file("made");
  QVTaskEx::runTaskAndReturn(shell, {"-c", "sleep 0.3; : > \"$0\"", made});
  EXPECT_FALSE(QFile::exists(made));
  QElapsedTimer elapsed;
  elapsed.start();
  while (!QFile::exists(made) && elapsed.elapsed() < 20000) ::usleep(10000);
  EXPECT_TRUE(QFile::exists(made));
}

TEST_F(TaskRuns, FailWhereTheSystemGivesNoThread) {
  const auto task = QVTaskEx::create();
  bool called = false;
  {
    const ThreadsRefused refused;
    EXPECT_FALSE(QVTaskEx::runTask(shell, {"-c", "exit 0"}));
    EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, {"-c", "exit 0"}, 1.0), -1);
    task->asyncDataFromTask(
        shell, {"-c", "echo"}, [&called](const QByteArray&, QVTaskEx&, const QVariant&) { called = true; }, QVariant());
  }
  EXPECT_EQ(task->theTask(), nullptr);
  EXPECT_FALSE(called);
  const QString reason = QString::fromLocal8Bit(std::generic_category().message(EAGAIN).c_str());
  const QString run = "Exception running task " + shell + ": no thread: " + reason;
  EXPECT_THAT(log_.entries(), ElementsAre(run, "No thread could be started: " + reason, run, "Exception: " + reason));
}

// --- Refused paths --------------------------------------------------------------------------------------------------

TEST_F(TaskRuns, RefuseWhatIsNotExecutable) {
  const QString plain = file("plain");
  QFile(plain).open(QIODevice::WriteOnly);
  const QString refused = "Error: " + plain + " is not executable";
  EXPECT_FALSE(QVTaskEx::runTask(plain));
  QVTaskEx::runTaskAndReturn(plain);
  EXPECT_EQ(QVTaskEx::dataFromTask(plain, {}, nullptr), std::nullopt);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(plain), -1);
  EXPECT_EQ(QVTaskEx::stringFromTask(plain, {}), "");
  EXPECT_THAT(log_.entries(), ElementsAre(refused, refused, refused, refused, refused));
  EXPECT_EQ(log_.printed().count(refused), 5);
}

TEST_F(TaskRuns, RefuseWhatIsMissing) {
  EXPECT_FALSE(QVTaskEx::runTask("/no/such"));
  EXPECT_EQ(QVTaskEx::dataFromTask("/no/such", {}, nullptr), std::nullopt);
  EXPECT_EQ(QVTaskEx::dataFromTask(QString(), {}, nullptr), std::nullopt);
  EXPECT_THAT(log_.entries(), ElementsAre("Error: /no/such is not executable", "Error: /no/such is not executable",
                                          "Error: (null) is not executable"));
}

TEST_F(TaskRuns, RefuseAPackage) {
  for (const QString& inside : {QString("Contents/Info.plist"), QString("AppRun")}) {
    const QString package = file("Tool-" + inside.section('/', -1) + ".app");
    ASSERT_TRUE(QDir().mkpath(QFileInfo(package + "/" + inside).path()));
    QFile(package + "/" + inside).open(QIODevice::WriteOnly);
    EXPECT_FALSE(QVTaskEx::runTask(package));
    EXPECT_EQ(QVTaskEx::terminationCodeFromTask(package), -1);
    EXPECT_EQ(QVTaskEx::dataFromTask(package, {}, nullptr), std::nullopt);
    EXPECT_EQ(log_.entries().count("Error: " + package + " is not executable"), 3);
  }
}

TEST_F(TaskRuns, LaunchARelativePathUnchecked) {
  EXPECT_FALSE(QVTaskEx::runTask("no-such-program"));
  EXPECT_FALSE(QVTaskEx::runTask(""));
  const QStringList entries = log_.entries();
  ASSERT_EQ(entries.size(), 2);
  EXPECT_TRUE(entries[0].startsWith("Exception running task no-such-program: ")) << entries[0].toStdString();
  EXPECT_TRUE(entries[1].startsWith("Exception running task : "));
  EXPECT_FALSE(log_.printed().contains("Exception"));
}

TEST_F(TaskRuns, TellOfAFolderThatCannotBeLaunched) {
  EXPECT_FALSE(QVTaskEx::runTask(log_.home()));
  EXPECT_EQ(QVTaskEx::dataFromTask(log_.home(), {}, nullptr), std::nullopt);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(log_.home()), -1);
  EXPECT_EQ(log_.entries().filter("Exception running task " + log_.home() + ": ").size(), 3);
  EXPECT_EQ(log_.printed().count("Exception running task"), 1) << "only collecting prints it";
}

TEST_F(TaskRuns, TellOfAProgramThatTheSystemCannotRun) {
  const QString broken = program("broken", "no program and no script");
  EXPECT_EQ(QVTaskEx::dataFromTask(broken, {}, nullptr), std::nullopt);
  EXPECT_TRUE(log_.entries().value(0).startsWith("Exception running task " + broken));
}

TEST_F(TaskRuns, RefuseTextsThatCannotBeHandedOverUnaltered) {
  for (const QString& text : {QString("a") + QChar(0) + "b", QString("a") + QChar(0xd800)}) {
    EXPECT_FALSE(QVTaskEx::runTask("/bin/echo", {text}));
    EXPECT_EQ(QVTaskEx::dataFromTask("/bin/echo", {text}, nullptr), std::nullopt);
  }
  EXPECT_EQ(log_.entries().filter("Exception running task /bin/echo: ").size(), 4);
}

// --- Collected output -----------------------------------------------------------------------------------------------

TEST_F(TaskRuns, CollectWhatTheProgramWrites) {
  EXPECT_EQ(QVTaskEx::dataFromTask("/bin/echo", {"-n", "hello"}, nullptr), QByteArray("hello"));
  EXPECT_EQ(collect("printf 'a\\0b'"), QByteArray("a\0b", 3));
  EXPECT_EQ(collect("echo out; echo err >&2"), QByteArray("out\n"));
  EXPECT_EQ(collect("echo out; exit 9"), QByteArray("out\n"));
}

TEST_F(TaskRuns, CollectErrorsWhenNothingElseWasWritten) {
  EXPECT_EQ(collect("echo err >&2"), QByteArray("err\n"));
  EXPECT_EQ(collect("echo err >&2", true, false), QByteArray(""));
  EXPECT_EQ(collect("echo err >&2", false, true), QByteArray("err\n"));
  EXPECT_EQ(collect("exit 0", false, false), QByteArray(""));
}

TEST_F(TaskRuns, GiveEmptyDataForAProgramThatWritesNothing) {
  const auto data = collect(":");
  ASSERT_TRUE(data.has_value());
  EXPECT_TRUE(data->isEmpty());
  EXPECT_FALSE(data->isNull());
  EXPECT_EQ(QVTaskEx::stringFromTask("/bin/true", {}), "");
  EXPECT_FALSE(QVTaskEx::stringFromTask("/bin/true", {}).isNull());
}

TEST_F(TaskRuns, AreNotHeldUpByMegabytesOfErrors) {
  const auto data = collect("head -c 4000000 /dev/zero >&2; printf out; head -c 4000000 /dev/zero >&2");
  EXPECT_EQ(data, QByteArray("out"));
  const auto errors = collect("head -c 4000000 /dev/zero >&2");
  ASSERT_TRUE(errors);
  EXPECT_EQ(errors->size(), 4000000);
}

TEST_F(TaskRuns, CollectMegabytesOfOutput) {
  const auto data = collect("head -c 9000000 /dev/zero");
  ASSERT_TRUE(data);
  EXPECT_EQ(data->size(), 9000000);
}

TEST_F(TaskRuns, KeepStandardInputOpenAndSilent) {
  EXPECT_EQ(collect("timeout 0.3 cat; echo $?"), QByteArray("124\n"));
}

TEST_F(TaskRuns, PassOnTheEnvironmentThatIsGiven) {
  const QVTaskEx::Environment environment{{"LUMA", "a b=c"}, {"PATH", "/usr/bin:/bin"}};
  EXPECT_EQ(QVTaskEx::dataFromTask("/usr/bin/env", {}, nullptr, environment),
            QByteArray("LUMA=a b=c\nPATH=/usr/bin:/bin\n"));
  EXPECT_EQ(QVTaskEx::dataFromTask("/usr/bin/env", {}, nullptr, QVTaskEx::Environment()), QByteArray(""));
  EXPECT_TRUE(QVTaskEx::dataFromTask("/usr/bin/env", {}, nullptr)->contains("HOME=" + QFile::encodeName(log_.home())));
}

TEST_F(TaskRuns, GiveProgramsTheStandardStreamsAndNoOtherDescriptor) {
  QFile open("/dev/null");
  ASSERT_TRUE(open.open(QIODevice::ReadOnly));
  const int inherited = ::dup(open.handle());  // one that a careless library left without close-on-exec
  EXPECT_EQ(collect("ls /proc/$$/fd"), QByteArray("0\n1\n2\n"));
  ::close(inherited);
}

TEST_F(TaskRuns, GiveProgramsTheDefaultSignals) {
  sigset_t pipe, before;
  ::sigemptyset(&pipe);
  ::sigaddset(&pipe, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
  const auto handler = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, {"-c", "kill -PIPE $$; exit 1"}), SIGPIPE);
  std::signal(SIGPIPE, handler);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(TaskRuns, DecodeTheOutput) {
  EXPECT_EQ(QVTaskEx::stringFromTask("/bin/echo", {"plain"}), "plain\n");
  EXPECT_TRUE(QVTaskEx::stringFromTask("/bin/echo", {QString::fromUtf8("ü")}).isNull()) << "not 7-bit ASCII";
  EXPECT_EQ(QVTaskEx::stringFromTask("/bin/echo", {QString::fromUtf8("ü")}, StringEncoding::utf8, nullptr),
            QString::fromUtf8("ü\n"));
  EXPECT_EQ(QVTaskEx::stringFromTask("/usr/bin/printf", {"\\374"}, StringEncoding::isoLatin1, nullptr),
            QString::fromUtf8("ü"));
  EXPECT_TRUE(QVTaskEx::stringFromTask("/usr/bin/printf", {"\\374"}, StringEncoding::utf8, nullptr).isNull());
  EXPECT_EQ(QVTaskEx::stringFromTask("/usr/bin/printf", {"A\\0"}, StringEncoding::utf16, nullptr), "A");
}

// --- Exit status ----------------------------------------------------------------------------------------------------

TEST_F(TaskRuns, ReturnTheExitStatus) {
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask("/bin/true"), 0);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, {"-c", "echo out; echo err >&2; exit 41"}), 41);
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, {"-c", "kill -KILL $$"}), SIGKILL);
  ChildProcessSlot task;
  EXPECT_EQ(QVTaskEx::terminationCodeFromTask(shell, {"-c", "exit 5"}, &task), 5);
  EXPECT_EQ(task.get()->terminationStatus(), 5);
}

}  // namespace
