#pragma once

#include <QString>
#include <exception>
#include <string>
#include <utility>

/// The platform's general exception: a name and a reason. Guards catch this class and nothing else; whatever else is
/// thrown passes on. Only adapters to libraries throw it.
class QVPlatformException : public std::exception {
 public:
  explicit QVPlatformException(QString reason, QString name = QStringLiteral("NSGenericException"))
      : name_(std::move(name)), reason_(std::move(reason)), what_(reason_.toUtf8().toStdString()) {}

  const QString& name() const { return name_; }
  const QString& reason() const { return reason_; }
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  QString name_, reason_;
  std::string what_;
};
