#include "app/scan/ScanStrip.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <utility>

#include "app/scan/TimelineView.h"
#include "app/widgets/MessageSign.h"
#include "app/widgets/OneLineLabel.h"
#include "app/widgets/TextLook.h"

namespace {

constexpr int scanSpacing = 4;

/// In one line: the strip is always equally high, and leaves the room to the movies.
QLabel* scanLabel(const char* name) {
  auto* const label = new OneLineLabel;
  label->setObjectName(QLatin1String(name));
  return label;
}

}  // namespace

ScanStrip::ScanStrip(QWidget* parent)
    : AlertingWidget(parent),
      sign_(new MessageSign),
      headline_(scanLabel("scanHeadline")),
      advice_(scanLabel("scanAdvice")),
      note_(scanLabel("scanNote")),
      place_(scanLabel("scanPlace")),
      timeline_(new TimelineView) {
  setObjectName(QStringLiteral("scanStrip"));
  setBold(*headline_);
  setSlanted(*note_);
  advice_->hide();
  note_->hide();
  sign_->hide();
  auto* const row = new QHBoxLayout;
  row->setSpacing(scanSpacing);
  row->addWidget(sign_);
  row->addWidget(headline_, 1);
  auto* const column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(scanSpacing);
  column->addLayout(row);
  column->addWidget(advice_);
  column->addWidget(note_);
  column->addWidget(timeline_, 1);
  column->addWidget(place_);
}

void ScanStrip::setView(const ScanView& view) {
  if (view == view_) return;
  const ScanView before = std::exchange(view_, view);
  sign_->setKind(view.holds() ? view.kind : std::nullopt);
  sign_->setVisible(view.kind && view.holds());
  headline_->setText(view.headline);
  advice_->setText(view.advice);
  advice_->setVisible(!view.advice.isEmpty() && view.holds());  // nobody is to act on what holds no longer
  note_->setText(view.note);
  note_->setVisible(!view.note.isEmpty());
  timeline_->setHolds(view.holds());
  showHolding();
  setAccessibleName(QStringList{view.headline, view.note}.join(u' ').trimmed());
  setAccessibleDescription(view.advice);
  const bool isNews = view.kind && (view.headline != before.headline || view.note != before.note);
  if (isNews) alert();
}

void ScanStrip::setPlace(const QString& place) {
  if (place != place_->text()) place_->setText(place);
}

void ScanStrip::showHolding() {
  const QPalette colors = view_.holds() ? QPalette() : faintColors(palette(), {QPalette::WindowText});
  for (QLabel* label : {headline_, advice_, place_}) label->setPalette(colors);
}

void ScanStrip::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) showHolding();
}
