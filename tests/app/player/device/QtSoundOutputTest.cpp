#include <string>
#include <vector>

#include <QtCore/QString>
#include <gmock/gmock.h>

#include "app/player/device/QtSoundOutput.h"

namespace player {
namespace {

std::vector<std::string> heard;

void hear(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text) {
  heard.push_back(text.toStdString());
}

TEST(QtSoundOutput, KeepsQuietAboutTheSoundServerAndAboutNothingElse) {
  qInstallMessageHandler(&hear);
  {
    const QtSoundOutput output;
    qWarning("PulseAudioService: pa_context_connect() failed");
    qWarning("Stream error: Connection terminated");
    qWarning("Cannot open the font database");
  }
  qInstallMessageHandler(nullptr);
  EXPECT_THAT(heard, testing::ElementsAre("Cannot open the font database"));
}

}  // namespace
}  // namespace player
