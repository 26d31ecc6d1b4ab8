#include "SharedFiles/files/FileDigest.h"
#include "SharedFiles/files/QVFileManager.h"

bool QVFileManager::copyFileWithProgress(const QString& source, const QStringList& destinations,
                                         unsigned int verificationType, const FileCopyDelegate& delegate,
                                         const QVariant& object, const QVariant& object2) {
  return copyFileToDestinations({.source = source,
                                 .destinations = destinations,
                                 .verificationType = verificationType,
                                 .delegate = delegate,
                                 .object = object,
                                 .object2 = object2});
}

bool QVFileManager::copyFileWithProgress(const QString& source, const QString& destination,
                                         const FileCopyDelegate& delegate, const QVariant& object) {
  return copyFileWithProgress(source, destination, delegate, object, QVariant());
}

bool QVFileManager::copyFileWithProgress(const QString& source, const QString& destination,
                                         const FileCopyDelegate& delegate, const QVariant& object,
                                         const QVariant& object2) {
  constexpr unsigned int unverified = 0;
  return copyFileWithProgress(source, QStringList{destination}, unverified, delegate, object, object2);
}

QString QVFileManager::md5HashForFile(const QString& path, const std::function<bool()>& delegate) {
  return digestOfFile(path, DigestAlgorithm::md5, delegate);
}

QString QVFileManager::sha1HashForFile(const QString& path, const std::function<bool()>& delegate) {
  return digestOfFile(path, DigestAlgorithm::sha1, delegate);
}

QString QVFileManager::sha512HashForFile(const QString& path, const std::function<bool()>& delegate) {
  return digestOfFile(path, DigestAlgorithm::sha512, delegate);
}
