#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <functional>
#include <optional>
#include <stop_token>

#include <sys/types.h>

#include "SharedFiles/files/FileCopy.h"
#include "SharedFiles/files/FileServices.h"

/// What is done with files and folders. Stateless; callable from any thread unless stated, and blocking. Nothing is
/// thrown: a failure is logged and answered by false, a null text or none.
///
/// A path is absolute or relative to the working folder; slashes at its end do not count. Names are data: a leading
/// "-" or "@", blanks, line breaks or the characters of a shell mean nothing. A path that cannot be handed to the
/// system unaltered (a null character, half of a surrogate pair) is refused with a log line. Names inside folders are
/// bytes and need not be text.
class QVFileManager final {
 public:
  QVFileManager() = delete;

  // --- Names ------------------------------------------------------------------------------------------------------

  /// formatFileSize: a size in bytes as text with the largest unit of B, KB, MB, GB, TB (multiples of 1024) that leaves
  /// at least 1.
  static QString formatFileSize(double size);
  /// uniqueFilename: the path itself while nothing stands there, else with " 2", " 3" ... before its extension. A link
  /// that leads nowhere stands in the way too.
  static QString uniqueFilename(const QString& path);
  /// validateFilename: without one leading dot, without white space at either end, and without any "/" and ":".
  static QString validateFilename(const QString& name);
  /// fileExistsAtPath: whether something stands there, or where its link leads.
  static bool fileExistsAtPath(const QString& path);

  // --- Trash, remove, create, copy, move --------------------------------------------------------------------------
  //
  // Each first tries with the user's own rights. When that fails, for whatever reason, and `shouldAuth` is set (it is
  // in the forms without it), the same is done with administrator rights, whose tools replace a destination that
  // exists; the answer then tells that they were started. The forms with a time-out, in seconds, do as those with
  // neither and then wait until the effect shows; false when it does not in time. They let the main thread handle
  // events.

  /// trashFile: unlocks the file and moves it into the user's trash folder, under a name that is free there. True when
  /// there is no such file.
  static bool trashFile(const QString& path, const FileServices& services = {});
  /// trashFile:shouldAuth:
  static bool trashFile(const QString& path, bool shouldAuth, const FileServices& services = {});
  /// trashFile:timeout:
  static bool trashFile(const QString& path, double timeout, const FileServices& services = {});

  /// removeFile: a file, a link (never what it leads to) or a folder with all that is in it.
  static bool removeFile(const QString& path, const FileServices& services = {});
  /// removeFile:shouldAuth:
  static bool removeFile(const QString& path, bool shouldAuth, const FileServices& services = {});
  /// removeFile:timeout:
  static bool removeFile(const QString& path, double timeout, const FileServices& services = {});

  /// createDirectory: with the folders that lead there. True when it exists already.
  static bool createDirectory(const QString& path, const FileServices& services = {});
  /// createDirectory:shouldAuth:
  static bool createDirectory(const QString& path, bool shouldAuth, const FileServices& services = {});
  /// createDirectory:timeout:
  static bool createDirectory(const QString& path, double timeout, const FileServices& services = {});

  /// copyFile:toPath: see copyTree(). An existing destination is refused; a failed copy leaves nothing behind.
  static bool copyFile(const QString& source, const QString& destination, const FileServices& services = {});
  /// copyFile:toPath:shouldAuth:
  static bool copyFile(const QString& source, const QString& destination, bool shouldAuth,
                       const FileServices& services = {});
  /// copyFile:toPath:timeout:
  static bool copyFile(const QString& source, const QString& destination, double timeout,
                       const FileServices& services = {});

  /// moveFile:toPath: see moveTree(). An existing destination is refused. To another file system the source is removed
  /// once its copy is complete and on the disk.
  static bool moveFile(const QString& source, const QString& destination, const FileServices& services = {});
  /// moveFile:toPath:shouldAuth:
  static bool moveFile(const QString& source, const QString& destination, bool shouldAuth,
                       const FileServices& services = {});
  /// moveFile:toPath:timeout:
  static bool moveFile(const QString& source, const QString& destination, double timeout,
                       const FileServices& services = {});

  // --- Verified copies and digests --------------------------------------------------------------------------------

  /// copyFileWithProgress:destinations:verificationType:delegate:object:object: see copyFileToDestinations(). On a
  /// thread that may be busy for a while.
  static bool copyFileWithProgress(const QString& source, const QStringList& destinations,
                                   unsigned int verificationType, const FileCopyDelegate& delegate,
                                   const QVariant& object, const QVariant& object2);
  /// copyFileWithProgress:destination:delegate:object:
  /// copyFileWithProgress:destination:delegate:object:object: without verification.
  static bool copyFileWithProgress(const QString& source, const QString& destination, const FileCopyDelegate& delegate,
                                   const QVariant& object, const QVariant& object2 = {});

  /// md5HashForFile:delegate: see digestOfFile(). The delegate answers checksumShouldContinue:.
  static QString md5HashForFile(const QString& path, const std::function<bool()>& delegate = {});
  /// sha1HashForFile:delegate:
  static QString sha1HashForFile(const QString& path, const std::function<bool()>& delegate = {});
  /// sha512HashForFile:delegate:
  static QString sha512HashForFile(const QString& path, const std::function<bool()>& delegate = {});

  // --- Archives ---------------------------------------------------------------------------------------------------

  /// compressFile:toDestinationFile: with the parent included.
  static bool compressFile(const QString& source, const QString& archive, const FileServices& services = {});
  /// compressFile:toDestinationFile:includeParent: packs into a ZIP archive; one that is there goes to the trash first.
  /// Whether the archive exists then; one that does not hold everything is removed where the archiver tells.
  /// Asked to stop, from any thread, it ends the archiver and leaves no archive unless that was complete already.
  static bool compressFile(const QString& source, const QString& archive, bool includeParent,
                           const FileServices& services = {}, const std::stop_token& stop = {});
  /// decompressFile:toDestinationFolder: unpacks into a folder; one that is there goes to the trash first. Whether the
  /// folder exists then.
  static bool decompressFile(const QString& archive, const QString& folder, const FileServices& services = {});

  // --- Waiting for another program --------------------------------------------------------------------------------

  /// waitForFileWrites:lockFile: while the file was modified within the last 5 seconds, by the clock or by a clock that
  /// is at most 5 seconds ahead. An existing lock file (null: there is none) makes it log the wait, not wait longer.
  static void waitForFileWrites(const QString& path, const QString& lockFile = {});
  /// waitForFileCreation:timeout: one look, for callers that loop: pauses for half a millisecond unless the file is
  /// there and not empty. The time-out, in seconds, does not shorten the pause.
  static void waitForFileCreation(const QString& path, double timeout);

  // --- Attributes -------------------------------------------------------------------------------------------------
  //
  // What the original platform keeps in attributes stands here in extended attributes of the same name after "user.".
  // Links are followed.

  /// The Finder's colour label, 0 (none) to 7: three bits of the flags in the file's attribute com.apple.FinderInfo, 32
  /// bytes (flags: big-endian, at byte 8; the label: bits 1 to 3). 0 too where there is no such attribute.
  static int colorLabelOfFile(const QString& path);
  /// setColorLabel:ofFile: leaves the rest of the attribute as it is.
  static bool setColorLabel(int label, const QString& path);

  /// setCopyProgress:ofFile: 0 to 1, in the attribute com.apple.progress.fractionCompleted as text with three decimals.
  static bool setCopyProgress(double fraction, const QString& path, const FileServices& services = {});
  /// removeCopyProgressOfFile:
  static bool removeCopyProgress(const QString& path, const FileServices& services = {});

  /// touchFileForCopying: makes the file when it is missing and gives it the creation date of a file whose copy is
  /// under way, 1984-01-24 08:00:00 +0000. Linux lets nobody set a file's birth: the date stands in the attribute
  /// user.creation-date, as text of that form.
  static bool touchFileForCopying(const QString& path, const FileServices& services = {});
  /// creationDateOfFile: the attribute's, else the file system's; invalid when there is neither.
  static QDateTime creationDateOfFile(const QString& path);

  /// infoForDisk: about the volume that the path lies on, under the keys of the original platform's tool: "VolumeName",
  /// "MountPoint", "DeviceNode", "FilesystemType" (texts), "TotalSize", "FreeSpace" (bytes), "WritableVolume"
  /// (boolean). Empty when it cannot be had.
  static QVariantMap infoForDisk(const QString& path, const FileServices& services = {});

  /// lockFile: takes the permission to write from everybody.
  static bool lockFile(const QString& path);
  /// unlockFile: gives the permission to write to the owner.
  static bool unlockFile(const QString& path);
  /// isFileLocked: whether nobody has the permission to write.
  static bool isFileLocked(const QString& path);

  /// permissionsOfFile: the twelve permission bits.
  static std::optional<mode_t> permissionsOfFile(const QString& path);
  /// setPermissions:ofFile:
  static bool setPermissions(mode_t permissions, const QString& path);
  /// setOwner:ofFile: a user, user:group or :group, by name or number. Whether it is the owner then.
  static bool setOwner(const QString& owner, const QString& path, const FileServices& services = {});

  /// filename:matchesWildcard: "*", "?" and "[...]" as fnmatch(3) has them; a leading dot is as any character.
  static bool filenameMatchesWildcard(const QString& name, const QString& wildcard);
  /// filesInFolder:matchingWildcard: the names, in the order of their bytes. A name that is not UTF-8 is left out with
  /// a log line.
  static QStringList filesInFolder(const QString& folder, const QString& wildcard);
};
