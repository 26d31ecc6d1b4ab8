#include "tests/app/WindowFixture.h"

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

#include "SharedFiles/foundation/BundleInfo.h"
#include "app/widgets/MessageLine.h"
#include "tests/support/MovieFixture.h"
#include "tests/support/TaggedProRes.h"

namespace {

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
constexpr bool threadSanitized = true;
#else
constexpr bool threadSanitized = false;
#endif
#else
constexpr bool threadSanitized = false;
#endif
// Qt paints large areas on threads of its own, whose order the thread sanitizer cannot see. Painting is the main
// thread's alone and all of it Qt's, so nothing of ours goes unseen without it.
constexpr bool isPainted = !threadSanitized;

}  // namespace

WindowFixture::WindowFixture() {
  environment_.set("HOME", home_.path().toUtf8());
  for (const char* variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) environment_.clear(variable);
  platform_ = std::make_unique<LinuxPathPlatform>(::getuid(), BundleInfo::mainBundle());
  makeController();
}

WindowFixture::~WindowFixture() = default;

bool WindowFixture::mayShowFilePanels() {
  return !threadSanitized;
}

void WindowFixture::makeController(const MainInterface::MakeView& makeView) {
  controller_.reset();
  interface_.reset();
  defaults_ = std::make_unique<UserDefaults>(*platform_, BundleInfo::mainBundle());
  interface_ = std::make_unique<MainInterface>(makeView);
  controller_ = std::make_unique<LumacheckAppDelegate>(
      *interface_, *defaults_, ControllerServices{.paths = *platform_, .workspace = workspace_, .bundle = bundle_});
}

void WindowFixture::makeController(const BundleInfo& bundle) {
  controller_.reset();
  defaults_.reset();
  bundle_ = bundle;
  platform_ = std::make_unique<LinuxPathPlatform>(::getuid(), bundle);
  makeController();
}

void WindowFixture::launch() {
  controller_->awakeFromNib();
  interface_->window().setUpdatesEnabled(isPainted);
  interface_->window().show();
  EXPECT_TRUE(QTest::qWaitForWindowExposed(&interface_->window()));
  interface_->window().activateWindow();  // where no window manager does it
  EXPECT_TRUE(QTest::qWaitForWindowActive(&interface_->window()));
  controller_->applicationDidFinishLaunching();
}

void WindowFixture::relaunch() {
  makeController();
  launch();
}

bool WindowFixture::waitUntil(const std::function<bool()>& condition) {
  QElapsedTimer timer;
  timer.start();
  constexpr int patience = 60000;
  while (!condition()) {
    if (timer.elapsed() > patience) return false;
    QApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
    QTest::qWait(1);
  }
  return true;
}

void WindowFixture::runFor(int milliseconds) {
  QTest::qWait(milliseconds);
}

QString WindowFixture::sourcePath() {
  return interface_->source.filenameText->text();
}

QString WindowFixture::destPath() {
  return interface_->dest.filenameText->text();
}

void WindowFixture::load(const QString& source, const QString& dest) {
  controller_->loadQTMovieWithPath(source, QStringLiteral("source"));
  controller_->loadQTMovieWithPath(dest, QStringLiteral("dest"));
}

void WindowFixture::type(QLineEdit& field, const QString& text) {
  field.setFocus();
  field.selectAll();
  QTest::keyClick(&field, Qt::Key_Delete);
  QTest::keyClicks(&field, text);
  QTest::keyClick(&field, Qt::Key_Return);
}

void WindowFixture::activate() {
  QTest::qWait(1);  // what was closed before takes the focus with it
  interface_->window().activateWindow();
  EXPECT_TRUE(QTest::qWaitForWindowActive(&interface_->window()));
}

QAction& WindowFixture::menuAction(const char* name) {
  auto* const action = interface_->window().menuBar()->findChild<QAction*>(QLatin1String(name));
  if (action == nullptr) ADD_FAILURE() << "no menu has " << name;
  static QAction none;
  return action == nullptr ? none : *action;
}

void WindowFixture::choose(const char* name) {
  QAction& action = menuAction(name);
  auto* const menu = qobject_cast<QMenu*>(action.parent());
  ASSERT_NE(menu, nullptr);
  activate();
  menu->popup(interface_->window().mapToGlobal(QPoint(0, 0)));
  ASSERT_TRUE(QTest::qWaitForWindowExposed(menu));
  QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(&action).center());
  menu->hide();
}

Message WindowFixture::said() const {
  Message message = interface_->messageLine->message();
  message.text = plainNames(message.text);
  return message;
}

QString WindowFixture::plainNames(QString text) {
  static const QRegularExpression key("-[0-9a-f]{16}(?=\\.mov)");
  return text.remove(key);
}

QString WindowFixture::pathOf(const PlayableMovie* movie) {
  return movie == nullptr ? QString() : QString::fromStdString(movie->content().path());
}

namespace {

using Arguments = std::vector<std::string>;

QString made(const std::string& name, const Arguments& arguments) {
  return QString::fromStdString(movie::test::fixtureMovie(name, arguments));
}

QString picturesUnder(const std::string& name, const std::string& filter, const std::string& gamma) {
  std::vector<std::string> arguments{"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25:duration=2", "-vf", filter};
  const auto encoder = movie::test::taggedProRes(gamma);
  arguments.insert(arguments.end(), encoder.begin(), encoder.end());
  return made(name, arguments);
}

QString longOf(const std::string& name, const std::string& rate, const std::string& frames) {
  return made(name, {"-f", "lavfi", "-i", "testsrc=size=64x36:rate=" + rate, "-frames:v", frames, "-c:v", "mjpeg",
                     "-video_track_timescale", "30000"});
}

}  // namespace

QString plainMovie() {
  return picturesUnder("plain.mov", "format=yuv422p10", "2.2");
}
QString retaggedMovie() {
  return picturesUnder("retagged.mov", "format=yuv422p10", "1.8");
}
QString darkerMovie() {
  return picturesUnder("darker.mov", "format=yuv422p10,lutyuv=y='64+876*pow(clip((val-64)/876,0,1),1.5)'", "2.2");
}
QString gammaMovie(const char* gamma) {
  return made(std::string("gamma-") + gamma + ".mov",
              {"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25:duration=2", "-vf", "format=yuv422p10", "-c:v",
               "prores_ks", "-movflags", "write_gama", "-mov_gamma", gamma});
}
QString blackMovie() {
  return picturesUnder("black.mov", "drawbox=color=black:t=fill,format=yuv422p10", "2.2");
}
QString longMovie() {
  return longOf("long.mov", "25", "1001");
}
QString longNtscMovie() {
  return longOf("long-ntsc.mov", "30000/1001", "1200");
}
QString dropFrameMovie() {
  return made("drop.mov", {"-f", "lavfi", "-i", "testsrc=size=64x36:rate=30000/1001:duration=5", "-c:v", "mjpeg",
                           "-timecode", "00:59:58;00"});
}
QString soundMovie() {
  return made("sound.mov", {"-f", "lavfi", "-i", "sine=duration=2", "-c:a", "pcm_s16le"});
}
QString groupedMovie() {
  return made("grouped.mov", {"-f", "lavfi", "-i", "testsrc2=size=320x180:rate=25:duration=2", "-c:v", "libx264",
                              "-preset", "veryfast", "-bf", "2", "-g", "25", "-pix_fmt", "yuv420p"});
}
