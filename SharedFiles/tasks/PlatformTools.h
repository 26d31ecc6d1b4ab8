#pragma once

#include <QString>
#include <QStringList>
#include <optional>

/// A program and its arguments, as they are handed to it: no shell is in between.
struct ToolCommand {
  QString path;
  QStringList arguments;

  bool operator==(const ToolCommand&) const = default;
};

/// The command lines of the external tools. Where the tool of the original platform exists its command line is taken,
/// else that of the tool that does the same here. A tool is looked for when it is asked for. Immutable; callable from
/// any thread.
///
/// All paths of files are absolute. Names may begin with any character: none becomes an option.
class PlatformTools {
 public:
  /// `root` goes before the path of every tool.
  explicit PlatformTools(QString root = {});

  static const PlatformTools& standard();

  /// Packs a file or folder into a ZIP archive that does not exist yet: "/usr/bin/ditto" "-ck", else bsdtar. A folder's
  /// entries stand at the top of the archive or, with the parent included, under the folder's name. Links stay links,
  /// and names the bytes that they are.
  ToolCommand compress(const QString& source, const QString& archive, bool includeParent) const;
  /// Unpacks a ZIP archive into a folder: "/usr/bin/ditto" "-xk", which makes the folder, else bsdtar, which does not.
  ToolCommand decompress(const QString& archive, const QString& folder) const;
  /// Whether ditto is there. bsdtar unpacks into a folder that exists, and stops at the first file that it cannot read,
  /// with a part of an archive and another status than 0.
  bool archivesWithDitto() const { return has(ditto); }

  /// "/usr/bin/xattr" "-w" name value file. None where it is absent: system calls do the same.
  std::optional<ToolCommand> writeAttribute(const QString& name, const QString& value, const QString& file) const;
  /// "/usr/bin/xattr" "-d" name file.
  std::optional<ToolCommand> deleteAttribute(const QString& name, const QString& file) const;
  /// "/usr/sbin/diskutil" "info" "-plist" volume. None where it is absent: system calls do the same.
  std::optional<ToolCommand> diskInformation(const QString& volume) const;
  /// "/usr/bin/touch" file.
  ToolCommand touch(const QString& file) const;
  /// "/usr/sbin/chown", else "/usr/bin/chown", and these two. `owner` is a user, user:group or :group, by name or
  /// number.
  ToolCommand changeOwner(const QString& owner, const QString& file) const;
  /// "/sbin/ifconfig", else "/usr/bin/ip", with which the network's interfaces are listed.
  ToolCommand networkInterfaces() const;

 private:
  static constexpr auto ditto = "/usr/bin/ditto";

  bool has(const char* path) const;
  ToolCommand bsdtar(const char* locale, const QStringList& arguments) const;
  QString rooted(const char* path) const { return root_ + QLatin1String(path); }

  QString root_;
};
