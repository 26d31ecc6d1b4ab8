#pragma once

#include <QColor>
#include <QWidget>
#include <optional>

#include "app/messages/Message.h"

/// The kind of a message as a sign: each has a shape and a mark of its own, besides its colour. Nothing without a kind.
class MessageSign : public QWidget {
  Q_OBJECT

 public:
  explicit MessageSign(QWidget* parent = nullptr);
  void setKind(std::optional<MessageKind> kind);
  /// A kind's colour: dark enough to be seen on a light ground, light enough on a dark one.
  static QColor colorOf(MessageKind kind, bool onDark);

  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  std::optional<MessageKind> kind_;
};
