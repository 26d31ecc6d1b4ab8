#include "app/player/device/QtSoundOutput.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include <QtCore/QIODevice>
#include <QtCore/QScopedValueRollback>
#include <QtCore/QString>
#include <QtMultimedia/QAudioDevice>
#include <QtMultimedia/QAudioSink>
#include <QtMultimedia/QMediaDevices>

#include "app/player/SoundClock.h"
#include "app/player/SoundResampler.h"

namespace player {
namespace {

thread_local bool quiet = false;  ///< nothing that Qt says on this thread is passed on
std::atomic<QtMessageHandler> handlerBefore;

/// What Qt says of a sound server that goes away, on a thread of its own.
bool isAboutSoundServer(const QString& text) {
  return text.contains(QLatin1String("Stream error: ")) || text.startsWith(QLatin1String("PulseAudio"));
}

void passOn(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (quiet || isAboutSoundServer(text)) return;
  if (const QtMessageHandler handler = handlerBefore.load(); handler != nullptr) handler(type, context, text);
}

/// Keeps Qt's remarks about sound off the terminal from now on; what else it says goes where it went.
void filterMessages() {
  static const bool once = [] {
    handlerBefore.store(qInstallMessageHandler(&passOn));
    return true;
  }();
  static_cast<void>(once);
}

std::optional<QAudioFormat> supportedFormat(const QAudioDevice& device, int rate) {
  constexpr int usualRate = 48000;
  for (const int tried : {rate, usualRate, device.preferredFormat().sampleRate()}) {
    for (const QAudioFormat::SampleFormat samples : {QAudioFormat::Float, QAudioFormat::Int16}) {
      QAudioFormat format;
      format.setSampleRate(tried);
      format.setChannelCount(2);
      format.setSampleFormat(samples);
      if (tried > 0 && device.isFormatSupported(format)) return format;
    }
  }
  return std::nullopt;
}

/// What the sink reads from. Never at its end.
class PulledSound final : public QIODevice {
 public:
  PulledSound(const QAudioFormat& format, int rate, SoundOutput::Pull pull)
      : format_(format),
        atRate_(format.sampleRate() == rate),
        pull_(std::move(pull)),
        resampler_(rate, format.sampleRate(), pull_) {}

  std::int64_t frames() const { return frames_; }
  bool isSequential() const override { return true; }
  qint64 bytesAvailable() const override { return 1 << 20; }

 protected:
  qint64 readData(char* data, qint64 size) override {
    const qint64 count = std::max<qint64>(size, 0) / format_.bytesPerFrame();
    stereo_.resize(2 * static_cast<std::size_t>(count));
    if (atRate_) {
      pull_(stereo_);
    } else {
      resampler_.read(stereo_);
    }
    write(data);
    frames_ += count;
    return count * format_.bytesPerFrame();
  }
  qint64 writeData(const char*, qint64) override { return -1; }

 private:
  void write(char* data) const {
    if (format_.sampleFormat() == QAudioFormat::Float) {
      std::memcpy(data, stereo_.data(), stereo_.size() * sizeof(float));
      return;
    }
    for (const float value : stereo_) {
      const auto sample = static_cast<std::int16_t>(std::lround(std::clamp(value, -1.0F, 1.0F) * 32767.0F));
      std::memcpy(data, &sample, sizeof sample);
      data += sizeof sample;
    }
  }

  QAudioFormat format_;
  bool atRate_;
  SoundOutput::Pull pull_;
  SoundResampler resampler_;
  std::vector<float> stereo_;
  std::int64_t frames_ = 0;
};

}  // namespace

/// A device at work.
class QtSoundOutput::Opened {
 public:
  Opened(const QAudioDevice& device, const QAudioFormat& format, int rate, Pull pull, double volume)
      : format_(format), rate_(rate), clock_(rate), source_(format, rate, std::move(pull)), sink_(device, format) {
    constexpr qint64 bufferedMicroseconds = 200'000;  // the event loop may be busy for so long
    source_.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    sink_.setBufferSize(format.bytesForDuration(bufferedMicroseconds));
    sink_.setVolume(volume);
    sink_.start(&source_);
  }
  ~Opened() { sink_.stop(); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  /// Stopped by itself, or broken.
  bool isDead() const { return sink_.state() == QAudio::StoppedState || sink_.error() == QAudio::FatalError; }

  /// In frames at the rate of those who pull.
  std::int64_t played() {
    const std::int64_t waiting = (sink_.bufferSize() - sink_.bytesFree()) / format_.bytesPerFrame();
    const std::int64_t heard = source_.frames() - std::clamp<std::int64_t>(waiting, 0, source_.frames());
    return clock_.heard(std::chrono::steady_clock::now(), heard * rate_ / format_.sampleRate());
  }
  void setVolume(double volume) { sink_.setVolume(volume); }

 private:
  QAudioFormat format_;
  std::int64_t rate_;
  SoundClock clock_;
  PulledSound source_;
  QAudioSink sink_;
};

QtSoundOutput::QtSoundOutput() {
  filterMessages();
}
QtSoundOutput::~QtSoundOutput() = default;

bool QtSoundOutput::open(int rate, Pull pull) {
  const QScopedValueRollback quietly(quiet, true);
  opened_.reset();
  const QAudioDevice device = QMediaDevices::defaultAudioOutput();
  if (device.isNull()) return false;
  const auto format = supportedFormat(device, rate);
  if (!format) return false;
  opened_ = std::make_unique<Opened>(device, *format, rate, std::move(pull), volume_);
  if (opened_->isDead()) opened_.reset();
  return opened_ != nullptr;
}

void QtSoundOutput::stop() {
  const QScopedValueRollback quietly(quiet, true);
  opened_.reset();
}

std::optional<std::int64_t> QtSoundOutput::played() {
  if (opened_ == nullptr || opened_->isDead()) return std::nullopt;
  return opened_->played();
}

void QtSoundOutput::setVolume(double volume) {
  volume_ = volume;
  if (opened_ != nullptr) opened_->setVolume(volume);
}

}  // namespace player
