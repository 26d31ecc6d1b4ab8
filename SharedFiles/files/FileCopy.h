#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <functional>

#include "system/FileCalls.h"

/// Who hears of a copy. Each call is made if it is set, on a background thread, one after another, while the copy goes
/// on; calls may still come after the copy has returned, fileCopyFinished being the last. `settings` is a copy of the
/// settings record.
struct FileCopyDelegate {
  /// fileCopyBytesWritten:settings: about 500 times a copy.
  std::function<void(quint64 bytesWritten, const QVariantMap& settings)> fileCopyBytesWritten;
  /// fileCopyShouldContinue: asked with each report; false ends the copy, a block or more later.
  std::function<bool(const QVariantMap& settings)> fileCopyShouldContinue;
  /// fileCopyVerificationFailed:file: a destination whose bytes are not the source's.
  std::function<void(const QVariantMap& settings, const QString& file)> fileCopyVerificationFailed;
  /// fileCopyFinished: the copy went through to its end, whatever the verification found.
  std::function<void(const QVariantMap& settings)> fileCopyFinished;
};

/// What is to be copied. The settings record holds it under "source", "destinations", "operationtype" ("copy"),
/// "delegate" and, where valid, "object" and "object2"; the checksums come in under "sourceChecksum", "destChecksums"
/// (in the order of the destinations, nil where there is none) and "destChecksum" (that of the destination a failed
/// verification is told of; in the end that of the last).
struct FileCopyRequest {
  QString source;
  QStringList destinations;
  unsigned int verificationType = 0;  ///< 1 MD5, 2 SHA-1, 3 SHA-256, 4 SHA-512, else none
  FileCopyDelegate delegate = {};
  QVariant object = {}, object2 = {};
  sys::FileCalls& calls = sys::systemCalls();
};

/// Copies a file to all destinations in one pass of 64 KiB blocks, flushes them to their disks, compares their sizes
/// and, where asked for, reads them back from there. Missing folders are made; an existing file is overwritten in
/// place, but never the source itself. Modes, owners and times are taken over, and extended attributes where that may
/// be.
///
/// True when every destination holds the source. A destination that fails is told in the log and removed, and the
/// others are completed. One that differs from the source stays for inspection. After a refusal to continue, a failure
/// to read, or the failure of the last destination that was left, the copy stops and what was begun is removed. Only
/// writing must be allowed in a destination; one that may not be read cannot be verified.
bool copyFileToDestinations(const FileCopyRequest& request);
