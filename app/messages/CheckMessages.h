#pragma once

#include <QCoreApplication>
#include <QString>

#include "app/messages/Message.h"
#include "app/messages/WhyNot.h"
#include "check/GammaCheck.h"

/// A frame that was to be compared.
struct CheckedFrame {
  QString path, timecode;
};

/// Which frames a check compared, or why it compared none. What it found is the report's.
class CheckMessages final {
  Q_DECLARE_TR_FUNCTIONS(CheckMessages)

 public:
  CheckMessages() = delete;
  static Message checked(const WindowState& state, const CheckedFrame& source, const CheckedFrame& dest,
                         const check::CheckOutcome& outcome);
};
