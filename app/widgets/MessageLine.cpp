#include "app/widgets/MessageLine.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>

#include "app/widgets/MenuFocus.h"
#include "app/widgets/MessageSign.h"

namespace {

/// A text to read, select and copy; cut short with an ellipsis while it has no focus.
class MessageText : public QLineEdit {
 public:
  MessageText() {
    setReadOnly(true);
    setFrame(false);
    setFocusPolicy(Qt::NoFocus);  // until there is a text
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    setPalette(colors);
  }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QStyleOptionFrame option;
    initStyleOption(&option);
    constexpr int besideText = 2;  // Qt's own
    const QRect room =
        style()->subElementRect(QStyle::SE_LineEditContents, &option, this).adjusted(besideText, 0, -besideText, 0);
    if (hasFocus() || fontMetrics().horizontalAdvance(text()) <= room.width()) return QLineEdit::paintEvent(event);
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(room, Qt::AlignLeading | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
  }
  void focusOutEvent(QFocusEvent* event) override {
    QLineEdit::focusOutEvent(event);
    if (!goesToMenu(*event)) home(false);
  }
};

}  // namespace

MessageLine::MessageLine(QWidget* parent) : AlertingWidget(parent), sign_(new MessageSign), words_(new MessageText) {
  setObjectName(QStringLiteral("messageLine"));
  //: What the window says of the latest action
  words_->setAccessibleName(tr("Message"));
  auto* const row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(fontMetrics().height() / 3);
  row->addWidget(sign_);
  row->addWidget(words_, 1);
}

void MessageLine::tell(const Message& message) {
  message_ = message;
  const bool isEmpty = message.isEmpty();
  sign_->setKind(isEmpty ? std::nullopt : std::optional(message.kind));
  words_->setText(message.text);
  words_->home(false);
  words_->setFocusPolicy(isEmpty ? Qt::NoFocus : Qt::StrongFocus);
  words_->setAccessibleDescription(isEmpty ? QString() : message.kindWord());
  setToolTip(isEmpty ? QString() : "<qt>" + message.text.toHtmlEscaped() + "</qt>");  // so that it is folded
  setAccessibleName(isEmpty ? QString() : message.kindWord() + QStringLiteral(": ") + message.text);
  if (isEmpty) return;
  alert();
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  QAccessibleAnnouncementEvent announcement(this, accessibleName());
  announce(announcement);
#endif
}
