#include "app/dialogs/AboutDialog.h"

#include <QCoreApplication>
#include <QDialog>
#include <QGridLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "SharedFiles/foundation/BundleInfo.h"
#include "app/dialogs/OnlyDialog.h"
#include "app/widgets/ApplicationIcon.h"

namespace {

struct Library {
  QString name, version, licence;
};

/// Qt's version is that of the library that runs; the others' are those that the build saw.
QList<Library> libraries() {
  return {
      {"Qt", qVersion(), "LGPL-3.0"},
#ifdef LUMACHECK_LIBAVCODEC_VERSION
      {"FFmpeg libavcodec", LUMACHECK_LIBAVCODEC_VERSION, "GPL-2.0-or-later"},
      {"FFmpeg libavformat", LUMACHECK_LIBAVFORMAT_VERSION, "GPL-2.0-or-later"},
      {"FFmpeg libavutil", LUMACHECK_LIBAVUTIL_VERSION, "GPL-2.0-or-later"},
#endif
      {"Little CMS", LUMACHECK_LCMS_VERSION, "MIT"},
      {"libplist", LUMACHECK_LIBPLIST_VERSION, "LGPL-2.1-or-later"},
      {"elfutils libdw", LUMACHECK_LIBDW_VERSION, "LGPL-3.0-or-later"},
      {"OpenSSL", LUMACHECK_OPENSSL_VERSION, "Apache-2.0"},
      {"zlib", LUMACHECK_ZLIB_VERSION, "Zlib"},
  };
}

QLabel* selectable(const QString& text) {
  auto* const label = new QLabel(text);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QLabel* heading() {
  const BundleInfo& bundle = BundleInfo::mainBundle();
  auto* const label = selectable(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleName")) + u' ' +
                                 bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleShortVersionString")));
  QFont font = label->font();
  font.setBold(true);
  constexpr double larger = 1.4;
  font.setPointSizeF(font.pointSizeF() * larger);
  label->setFont(font);
  return label;
}

QLayout* titleRow() {
  constexpr int iconSize = 64;
  auto* const icon = new QLabel;
  icon->setPixmap(applicationIcon().pixmap(iconSize));
  auto* const texts = new QVBoxLayout;
  texts->addWidget(heading());
  texts->addWidget(
      selectable(QCoreApplication::translate("AboutDialog", "Finds gamma and colour shifts between two movies.")));
  texts->addWidget(selectable(
      QCoreApplication::translate("AboutDialog", "Licence: GPL-3.0-or-later. It comes without any warranty.")));
  auto* const row = new QHBoxLayout;
  row->addWidget(icon);
  row->addLayout(texts, 1);
  return row;
}

QLayout* libraryTable() {
  auto* const grid = new QGridLayout;
  constexpr int between = 24;
  grid->setHorizontalSpacing(between);
  for (const Library& library : libraries()) {
    const int row = grid->rowCount();
    grid->addWidget(selectable(library.name), row, 0);
    grid->addWidget(selectable(library.version), row, 1);
    grid->addWidget(selectable(library.licence), row, 2);
  }
  return grid;
}

}  // namespace

void showAboutDialog(QWidget& window) {
  auto* const dialog = onlyDialog(window, QStringLiteral("about"));
  if (dialog == nullptr) return;
  dialog->setWindowTitle(QCoreApplication::translate("AboutDialog", "About Lumacheck"));
  auto* const column = new QVBoxLayout(dialog);
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->addLayout(titleRow());
  column->addSpacing(column->spacing());
  column->addWidget(new QLabel(QCoreApplication::translate("AboutDialog", "It is built on:")));
  column->addLayout(libraryTable());
  column->addWidget(closeButton(*dialog));
  dialog->show();
}
