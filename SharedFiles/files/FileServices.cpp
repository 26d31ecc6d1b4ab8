#include "SharedFiles/files/FileServices.h"

#include "SharedFiles/authorization/QVAuthorization.h"

namespace {

class AuthorizedFileOperations final : public PrivilegedFileOperations {
 public:
  bool authTrashFile(const QString& path) override { return QVAuthorization::sharedController().authTrashFile(path); }
  bool authRemoveFile(const QString& path) override { return QVAuthorization::sharedController().authRemoveFile(path); }
  bool authCreateDir(const QString& path) override { return QVAuthorization::sharedController().authCreateDir(path); }
  bool authCopyFile(const QString& source, const QString& destination) override {
    return QVAuthorization::sharedController().authCopyFile(source, destination);
  }
  bool authMoveFile(const QString& source, const QString& destination) override {
    return QVAuthorization::sharedController().authMoveFile(source, destination);
  }
};

}  // namespace

PrivilegedFileOperations& PrivilegedFileOperations::standard() {
  static AuthorizedFileOperations operations;
  return operations;
}
