#include "app/dialogs/PreferencesDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

PreferencesDialog::PreferencesDialog(QWidget& window)
    : QDialog(&window), qcLoggingCheck(new QCheckBox(tr("&Send anonymous usage data to Quorvane"))) {
  setObjectName(QStringLiteral("preferences"));
  setWindowTitle(tr("Preferences"));
  qcLoggingCheck->setObjectName(QStringLiteral("qcLoggingCheck"));
  auto* const note =
      new QLabel(tr("It is anonymous: when Lumacheck starts, and on which system.\n"
                    "Nothing of your movies, nor their names."));
  note->setIndent(qcLoggingCheck->style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                  qcLoggingCheck->style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing));
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* const column = new QVBoxLayout(this);
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->addWidget(qcLoggingCheck);
  column->addWidget(note);
  column->addSpacing(column->spacing());
  column->addWidget(buttons);
}
