#pragma once

#include <QCoreApplication>
#include <QString>

#include "app/messages/Message.h"
#include "app/messages/WhyNot.h"
#include "check/MetadataSync.h"

/// What a sync changed in memory, value by value, and what it could not change.
class SyncMessages final {
  Q_DECLARE_TR_FUNCTIONS(SyncMessages)

 public:
  SyncMessages() = delete;
  static Message synced(const WindowState& state, const QString& destPath, const check::SyncOutcome& outcome);

 private:
  static Message changed(const QString& destPath, const check::SyncOutcome& outcome);
  static Message stays(const check::SyncOutcome& outcome, const check::PropertyChange& change);
  static Message setFailed(const QString& destPath, const check::PropertyChange& change);
};
