#include "app/verdict/VerdictStrip.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <utility>

#include "app/verdict/CurvePicture.h"
#include "app/verdict/FactTable.h"
#include "app/verdict/VerdictWords.h"
#include "app/widgets/MessageSign.h"
#include "app/widgets/RoomyButton.h"
#include "app/widgets/TextLook.h"

namespace {

constexpr int stripMargin = 8, stripSpacing = 6;

QLabel* textLabel(const char* name) {
  auto* const label = new QLabel;
  label->setObjectName(QLatin1String(name));
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum);
  return label;
}

void showText(QLabel& label, const QString& text) {
  label.setText(text);
  label.setVisible(!text.isEmpty());
}

}  // namespace

VerdictStrip::VerdictStrip(QWidget* parent)
    : AlertingWidget(parent),
      sign_(new MessageSign),
      headline_(textLabel("verdictHeadline")),
      advice_(textLabel("verdictAdvice")),
      notes_(textLabel("verdictNotes")),
      facts_(new FactTable),
      curve_(new CurvePicture) {
  setObjectName(QStringLiteral("verdictStrip"));
  setBold(*headline_);
  setSlanted(*notes_);
  layOut();
}

void VerdictStrip::layOut() {
  auto* const row = new QHBoxLayout;
  row->setSpacing(stripSpacing);
  row->addWidget(sign_);
  row->addWidget(headline_, 1);
  addButtons(*row);

  auto* const words = new QVBoxLayout;
  words->setSpacing(stripSpacing / 2);
  words->addLayout(row);
  words->addWidget(advice_);
  words->addWidget(notes_);
  words->addWidget(facts_);
  words->addStretch();

  auto* const all = new QHBoxLayout(this);
  all->setContentsMargins(stripMargin, stripSpacing, stripMargin, stripSpacing);
  all->setSpacing(stripMargin);
  all->addLayout(words, 1);
  all->addWidget(curve_, 0, Qt::AlignVCenter);
}

void VerdictStrip::addButtons(QHBoxLayout& row) {
  for (const VerdictAction action : verdictActions) {
    const ButtonWords words = VerdictWords::button(action);
    auto* const button = roomyButton(words.text);
    button->setToolTip(words.tip);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, action] { emit chosen(action); });
    row.addWidget(button, 0, Qt::AlignTop);
    buttons_.insert(action, button);
    button->hide();
  }
}

void VerdictStrip::setView(const VerdictView& view) {
  if (view == view_ && !headline_->text().isEmpty()) return;
  const VerdictView before = std::exchange(view_, view);
  sign_->setKind(view.kind);
  sign_->setVisible(view.kind.has_value());
  headline_->setText(view.headline);
  showText(*advice_, view.why.isEmpty() ? view.advice : view.advice + u' ' + view.why);
  showText(*notes_, view.notes.join(u' '));
  if (view.facts != before.facts || view.holds != before.holds) facts_->setFacts(view.facts, view.holds);
  facts_->setVisible(!view.facts.isEmpty());
  curve_->setCurve(view.curve);
  curve_->setVisible(view.curve.size() > 1);
  showHolding();
  for (const auto& [action, button] : buttons_.asKeyValueRange()) button->setVisible(view.actions.contains(action));
  update();
  tellScreenReaders(before);
}

void VerdictStrip::showHolding() {
  // The strip's own where it holds.
  const QPalette colors =
      view_.holds ? QPalette() : faintColors(palette(), {QPalette::WindowText, QPalette::Text, QPalette::Highlight});
  for (QWidget* part : {static_cast<QWidget*>(headline_), static_cast<QWidget*>(advice_), static_cast<QWidget*>(facts_),
                        static_cast<QWidget*>(curve_)}) {
    if (part->palette().resolveMask() != colors.resolveMask() || !view_.holds) part->setPalette(colors);
  }
}

void VerdictStrip::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) showHolding();
}

/// Of verdicts and of what is to be known besides; not of what can be done once more.
void VerdictStrip::tellScreenReaders(const VerdictView& before) {
  setAccessibleName(QStringList{view_.headline, notes_->text()}.join(u' ').trimmed());
  setAccessibleDescription(advice_->text());
  if (view_.headline != before.headline || view_.notes != before.notes || view_.kind != before.kind) alert();
}

/// A ground in the colour of the verdict, faint enough to read on.
void VerdictStrip::paintEvent(QPaintEvent* /*event*/) {
  constexpr double radius = 4;
  constexpr float faint = 0.14F;
  constexpr int middle = 128;
  const bool onDark = palette().color(QPalette::Window).lightness() < middle;
  QColor ground = view_.kind ? MessageSign::colorOf(*view_.kind, onDark) : palette().color(QPalette::Mid);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(ground);
  ground.setAlphaF(faint);
  painter.setBrush(ground);
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
}
