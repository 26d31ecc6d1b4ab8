#pragma once

#include <QByteArray>
#include <memory>
#include <utility>

#include "system/Descriptor.h"

/// Where entry lines go. Used by one thread at a time.
class LogSink {
 public:
  virtual ~LogSink() = default;
  /// Appends the whole line; throws QVPlatformException when that fails.
  virtual void write(const QByteArray& line) = 0;
};

/// A log file, written to at its end even where others write to it too. Closed when the object goes, on whichever
/// thread that is: a bare descriptor, since a QFile belongs to the thread that made it.
class LogFileSink final : public LogSink {
 public:
  enum class IfMissing { Fail, Create };

  /// The path in the file system's own bytes. Null when the file cannot be opened, which a pipe cannot.
  static std::shared_ptr<LogSink> open(const QByteArray& path, IfMissing ifMissing);

  explicit LogFileSink(sys::Descriptor descriptor) : descriptor_(std::move(descriptor)) {}

  void write(const QByteArray& line) override;

 private:
  const sys::Descriptor descriptor_;
};
