#include "app/dialogs/MoviePanel.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>

#include "movie/atoms/AtomTypes.h"
#include "movie/atoms/FileAtoms.h"

namespace {

/// By its first atoms alone: every file of a folder is asked while the panel is drawn.
bool isQuickTimeMovie(const QFileInfo& file) {
  constexpr int firstAtoms = 64;
  if (!file.isFile()) return false;
  const auto opened = movie::ReadableFile::open(QFile::encodeName(file.filePath()).toStdString());
  if (!opened) return false;
  movie::FileAtoms atoms(*opened);
  for (int count = 0; count < firstAtoms; ++count) {
    const auto atom = atoms.next();
    if (!atom) return false;
    if (atom->type == movie::code::moov) return true;
    if (atom->type != movie::code::ftyp) continue;
    const auto brand = opened->read(atom->bodyOffset(), sizeof(movie::FourCC));
    if (!brand || brand->size() < sizeof(movie::FourCC) || movie::read32(*brand, 0) != movie::fourCC("qt  "))
      return false;
  }
  return false;
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
  panel->setOption(QFileDialog::DontUseNativeDialog);
  panel->setOption(QFileDialog::HideNameFilterDetails);
  panel->setProxyModel(new OfferedFiles(panel));
  panel->setNameFilter(QCoreApplication::translate("MoviePanel", "Movies (%1)").arg(QStringLiteral("*")));
  return panel;
}

void whenPanelEnds(QFileDialog* panel, const QObject* context, const std::function<void(int code)>& didEnd) {
  QObject::connect(panel, &QDialog::finished, context, [panel, didEnd](int code) {
    didEnd(code);
    panel->deleteLater();
  });
}
