#pragma once

#include <stop_token>

#include <sys/stat.h>

/// Copies the bytes of an open file, from its beginning to its end, into an open file that is empty: holes stay holes,
/// and blocks are shared where the file system can. 0 or an errno: ECANCELED once it is asked to stop.
int copyContents(int from, int to, const std::stop_token& stop = {});

/// Gives an open file or folder the owner and group, extended attributes and access lists, permissions and times of
/// another, in this order, whose status is `status`. Owner, group and attributes as far as the process and the file
/// system allow; without the owner or group the set-id bits stay away. 0 or an errno.
int copyAttributes(int from, int to, const struct stat& status);

/// The permission bits for a copy that belongs to `owner` and `group`: those of the original, its set-id bits only
/// where they still mean the same user and group.
mode_t permissionsOfCopy(const struct stat& original, uid_t owner, gid_t group);
