#pragma once

#include <QCoreApplication>
#include <QString>
#include <utility>
#include <vector>

/// From the least to the most that needs attention.
enum class MessageKind { Information, Success, Warning, Failure };

/// What the message line says: whole sentences in the user's language, in one line. Empty for nothing.
struct Message {
  Q_DECLARE_TR_FUNCTIONS(Message)

 public:
  Message() = default;
  Message(MessageKind itsKind, QString itsText) : kind(itsKind), text(std::move(itsText)) {}

  bool isEmpty() const { return text.isEmpty(); }
  /// The kind in a word.
  QString kindWord() const;
  friend bool operator==(const Message&, const Message&) = default;

  MessageKind kind = MessageKind::Information;
  QString text;
};

/// Several as one: of the kind that needs most attention, and beginning with what does; otherwise in their order.
Message joined(std::vector<Message> messages);
