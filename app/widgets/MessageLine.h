#pragma once

#include "app/messages/Message.h"
#include "app/widgets/AlertingWidget.h"

class MessageSign;
class QLineEdit;

/// What the window says of the latest action: a sign for the kind, and the words, of which an end without room shows
/// while they have the focus, and in the tool tip. They can be selected and copied. Screen readers are told at once.
class MessageLine : public AlertingWidget {
  Q_OBJECT

 public:
  explicit MessageLine(QWidget* parent = nullptr);

  /// In place of the message before. An empty one leaves the line empty.
  void tell(const Message& message);
  const Message& message() const { return message_; }
  QLineEdit& words() { return *words_; }

 private:
  MessageSign* sign_;
  QLineEdit* words_;
  Message message_;
};
