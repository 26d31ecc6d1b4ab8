#pragma once

#include <QString>

#include <sys/types.h>

/// Whether nobody but the user and the superuser can change what stands at an absolute path, with all that is in it, or
/// put something else there: the two own it and the folders that lead to it, and nobody else may write to any of them.
/// A folder with the sticky bit may be written to by all: there nobody takes away what is not his. The same holds for
/// what links in it lead to. False too when something cannot be looked at. Callable from any thread.
bool isOutOfOthersReach(const QString& path, uid_t user);
