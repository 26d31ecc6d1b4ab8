#pragma once

#include <QString>

/// Whether the path is a package: a folder that users see as one file. That is a folder with `Contents/Info.plist` or
/// `AppRun` inside. Links are followed. Callable from any thread.
bool isFilePackageAtPath(const QString& path);

/// Whether something stands there, or where its link leads.
bool fileExists(const QString& path);

/// Whether this process may run what stands there; a folder counts when it may be entered.
bool isExecutableFileAtPath(const QString& path);
