#include "app/dialogs/MoviePanel.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>

#include "movie/atoms/MovieFile.h"

namespace {

bool isQuickTimeMovie(const QFileInfo& file) {
  if (!file.isFile()) return false;
  const auto opened = movie::MovieFile::open(QFile::encodeName(file.filePath()).toStdString());
  return opened && (*opened)->isQuickTime();
}

/// Folders, and the files of the types; in the order of the model below, which puts folders first.
class OfferedFiles : public QSortFilterProxyModel {
 public:
  using QSortFilterProxyModel::QSortFilterProxyModel;

  void sort(int column, Qt::SortOrder order) override { sourceModel()->sort(column, order); }

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
    const auto& files = static_cast<const QFileSystemModel&>(*sourceModel());
    const QFileInfo file = files.fileInfo(files.index(row, 0, parent));
    if (file.isDir()) return true;
    const QString extension = file.suffix();
    return extension.isEmpty() ? isQuickTimeMovie(file) : movieFileTypes().contains(extension, Qt::CaseInsensitive);
  }
};

}  // namespace

QStringList movieFileTypes() {
  return {QStringLiteral("mov"), QStringLiteral("qt"), QStringLiteral("m4v"), QStringLiteral("'MooV'")};
}

QFileDialog* makeMoviePanel(QWidget& window, const QString& title) {
  auto* const panel = new QFileDialog(&window, title);
  panel->setAttribute(Qt::WA_DeleteOnClose);
  panel->setOption(QFileDialog::DontUseNativeDialog);
  panel->setOption(QFileDialog::HideNameFilterDetails);
  panel->setProxyModel(new OfferedFiles(panel));
  panel->setNameFilter(QCoreApplication::translate("MoviePanel", "Movies (%1)").arg(u'*'));
  return panel;
}
