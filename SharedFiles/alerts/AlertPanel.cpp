#include "SharedFiles/alerts/AlertPanel.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>
#include <QTextEdit>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int panelMargin = 20;
constexpr int panelSpacing = 12;
constexpr int iconSize = 64;
constexpr int columnCharacters = 46;
constexpr int smallestButton = 84;

/// A read-only text that breaks anywhere if need be, as tall as it needs and scrolling where that is too much.
class TextBlock final : public QTextEdit {
 public:
  TextBlock(const QString& text, const QFont& font, int width, int tallest) : tallest_(tallest) {
    setFont(font);
    setFrameShape(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    setReadOnly(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setTabChangesFocus(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(0);
    setFixedWidth(width);
    setPlainText(text);
    document()->setTextWidth(width);
    fit();
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this, [this] { fit(); });
  }

 private:
  void fit() {
    const int needed = static_cast<int>(std::ceil(document()->size().height()));
    setVerticalScrollBarPolicy(needed > tallest_ ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
    // Only what scrolls is worth a stop on the way through the controls.
    setFocusPolicy(needed > tallest_ ? Qt::StrongFocus : Qt::ClickFocus);
    setFixedHeight(std::min(needed, tallest_));
  }

  const int tallest_;
};

QPixmap iconOfApplication(const QWidget& widget) {
  QIcon icon = QApplication::windowIcon();
  if (icon.isNull()) icon = widget.style()->standardIcon(QStyle::SP_MessageBoxInformation, nullptr, &widget);
  return icon.pixmap(QSize(iconSize, iconSize), widget.devicePixelRatioF());
}

bool isCancel(const QPushButton* button) {
  return button && (button->text() == QLatin1String("Cancel") || button->text() == AlertPanel::tr("Cancel"));
}

/// A title as a button's text: an ampersand in it is no shortcut.
QString shownAsItStands(QString title) {
  return title.replace(u'&', QLatin1String("&&"));
}

}  // namespace

AlertPanel::AlertPanel(const Texts& texts, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint) {
  setObjectName(QStringLiteral("alertPanel"));
  setWindowTitle(QApplication::applicationDisplayName());
  setAccessibleName(texts.message);
  setAccessibleDescription(texts.informative);
  setAttribute(Qt::WA_QuitOnClose, false);

  // NOLINTBEGIN(cppcoreguidelines-owning-memory): the widgets belong to the panel.
  auto* const icon = new QLabel(this);
  icon->setObjectName(QStringLiteral("icon"));
  icon->setPixmap(iconOfApplication(*this));
  icon->setAlignment(Qt::AlignTop | Qt::AlignHCenter);
  auto* const upper = new QHBoxLayout;
  // NOLINTEND(cppcoreguidelines-owning-memory)
  upper->setSpacing(panelMargin);
  upper->addWidget(icon, 0, Qt::AlignTop);
  textColumn_ = addTexts(texts);
  upper->addLayout(textColumn_, 1);

  auto* const column = new QVBoxLayout(this);  // NOLINT(cppcoreguidelines-owning-memory)
  column->setContentsMargins(panelMargin, panelMargin, panelMargin, panelMargin);
  column->setSpacing(panelMargin);
  column->addLayout(upper, 1);
  column->addLayout(addButtons(texts));
  column->setSizeConstraint(QLayout::SetFixedSize);
}

AlertPanel::~AlertPanel() {
  if (const Answered tell = std::exchange(answered_, nullptr)) tell(-1);
}

QBoxLayout* AlertPanel::addTexts(const Texts& texts) {
  QFont bold = font();
  bold.setBold(true);
  const int width = QFontMetrics(font()).averageCharWidth() * columnCharacters;
  const int screen = QWidget::screen()->availableSize().height();
  auto* const column = new QVBoxLayout;  // NOLINT(cppcoreguidelines-owning-memory): belongs to the panel
  column->setSpacing(panelSpacing);
  const auto add = [&](const QString& text, const QFont& shape, int tallest, const char* name, const QString& title) {
    // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): belongs to the panel
    auto* const block = new TextBlock(text, shape, width, tallest);
    block->setObjectName(QLatin1String(name));
    block->setAccessibleName(title);
    if (text.isEmpty()) block->hide();
    column->addWidget(block);
  };
  add(texts.message, bold, screen / 5, "messageText", tr("Message"));
  add(texts.informative, font(), screen / 3, "informativeText", tr("Details"));
  column->addStretch(1);
  return column;
}

QBoxLayout* AlertPanel::addButtons(const Texts& texts) {
  // Made in the order in which Tab visits them after the default one.
  defaultButton_ = addButton(texts.defaultButton.isEmpty() ? tr("OK") : texts.defaultButton, "defaultButton", 1);
  if (!texts.alternateButton.isEmpty()) alternateButton_ = addButton(texts.alternateButton, "alternateButton", 0);
  if (!texts.otherButton.isEmpty()) otherButton_ = addButton(texts.otherButton, "otherButton", -1);
  defaultButton_->setDefault(true);
  defaultButton_->setFocus();

  auto* const row = new QHBoxLayout;  // NOLINT(cppcoreguidelines-owning-memory): belongs to the panel
  row->setSpacing(panelSpacing);
  if (otherButton_) row->addWidget(otherButton_);
  row->addStretch(1);
  if (alternateButton_) row->addWidget(alternateButton_);
  row->addWidget(defaultButton_);
  return row;
}

QPushButton* AlertPanel::addButton(const QString& title, const char* name, int code) {
  auto* const button = new QPushButton(shownAsItStands(title), this);  // NOLINT(cppcoreguidelines-owning-memory)
  button->setObjectName(QLatin1String(name));
  button->setAccessibleName(title);
  button->setMinimumWidth(smallestButton);
  connect(button, &QPushButton::clicked, this, [this, code] { answer(code); });
  return button;
}

void AlertPanel::showSuppressionButton(bool on, const std::function<void(bool)>& changed) {
  // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): belongs to the panel
  suppressionButton_ = new QCheckBox(tr("Do not show this message again"), this);
  suppressionButton_->setObjectName(QStringLiteral("suppressionButton"));
  suppressionButton_->setAccessibleName(suppressionButton_->text());
  suppressionButton_->setChecked(on);
  connect(suppressionButton_, &QCheckBox::toggled, this, changed);
  textColumn_->addWidget(suppressionButton_);
}

void AlertPanel::begin() {
  if (parentWidget()) return open();
  setWindowModality(Qt::ApplicationModal);
  show();
  raise();
  activateWindow();
}

void AlertPanel::orderOut() {
  const Answered dropped = std::exchange(answered_, nullptr);
  hide();
}

void AlertPanel::answer(int code) {
  const Answered tell = std::exchange(answered_, nullptr);
  if (!tell) return;
  hide();
  tell(code);  // may destroy the panel
}

std::optional<int> AlertPanel::escapeCode() const {
  if (isCancel(alternateButton_)) return 0;
  if (isCancel(otherButton_)) return -1;
  if (isCancel(defaultButton_)) return 1;
  if (alternateButton_ && otherButton_) return std::nullopt;
  if (alternateButton_) return 0;
  return otherButton_ ? -1 : 1;
}

void AlertPanel::reject() {
  if (const std::optional<int> code = escapeCode()) answer(*code);
}

void AlertPanel::closeEvent(QCloseEvent* event) {
  event->accept();
  answer(event->spontaneous() ? escapeCode().value_or(0) : -1);
}

void AlertPanel::hideEvent(QHideEvent* event) {
  QDialog::hideEvent(event);
  if (!event->spontaneous()) answer(-1);
}

void AlertPanel::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) return;
  QAccessibleEvent alert(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}
