#include "SharedFiles/privileged/ProtectedPlaces.h"

#include <QString>
#include <algorithm>
#include <memory>

#include "SharedFiles/foundation/PathPlatform.h"
#include "SharedFiles/foundation/QVLocalPaths.h"
#include "SharedFiles/privileged/PinnedFolder.h"

namespace privileged {

ProtectedPlaces systemPlaces(const std::vector<uid_t>& users, const BundleInfo& application) {
  ProtectedPlaces places;
  places.folders = {"/",    "/bin", "/boot", "/dev",  "/etc", "/home", "/lib", "/lib32", "/lib64", "/libx32", "/media",
                    "/mnt", "/opt", "/proc", "/root", "/run", "/sbin", "/srv", "/sys",   "/tmp",   "/usr",    "/var"};
  std::vector<std::shared_ptr<const PathPlatform>> platforms;
  for (const uid_t user : users) {
    platforms.push_back(std::make_shared<LinuxPathPlatform>(user, application));
    // Nor may anything go that a home folder lies in.
    for (std::string folder = platforms.back()->homeDirectory().toStdString(); folder != "/"; folder = parentOf(folder))
      places.folders.push_back(folder);
  }
  places.isProtected = [platforms, folders = places.folders](const std::string& path) {
    const QString text = QString::fromStdString(path);
    return std::find(folders.begin(), folders.end(), path) != folders.end() ||
           std::any_of(platforms.begin(), platforms.end(), [&text](const auto& platform) {
             return QVLocalPaths::isPathSystemDirectory(text, true, *platform);
           });
  };
  return places;
}

}  // namespace privileged
