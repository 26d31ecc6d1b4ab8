#include "app/messages/Message.h"

#include <QStringList>
#include <algorithm>

QString Message::kindWord() const {
  switch (kind) {
    case MessageKind::Success:
      return tr("Done");
    case MessageKind::Warning:
      return tr("Warning");
    case MessageKind::Failure:
      return tr("Failure");
    case MessageKind::Information:
      break;
  }
  return tr("Information");
}

Message joined(std::vector<Message> messages) {
  std::erase_if(messages, [](const Message& each) { return each.isEmpty(); });
  if (messages.empty()) return {};
  std::stable_sort(messages.begin(), messages.end(),
                   [](const Message& a, const Message& b) { return a.kind > b.kind; });
  QStringList texts;
  for (const Message& each : messages) texts << each.text;
  return {messages.front().kind, texts.join(u' ')};
}
