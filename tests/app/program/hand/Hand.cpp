// A hand within the program Lumacheck, for tests: Qt loads it as a generic plugin, and it does what it is told over a
// socket, in lines, each answered by one. What is done may open a dialog that waits; it is done after the answer.

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QGenericPlugin>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QLocalServer>
#include <QLocalSocket>
#include <QMainWindow>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <QUrl>
#include <array>
#include <functional>
#include <map>

namespace {

QWidget* mainWindow() {
  for (QWidget* const widget : QApplication::topLevelWidgets()) {
    if (widget->isWindow() && qobject_cast<QDialog*>(widget) == nullptr && widget->inherits("QVQTWindow"))
      return widget;
  }
  return nullptr;
}

QByteArray yesOrNo(bool yes) {
  return yes ? "yes" : "no";
}

bool later(QObject* context, std::function<void()> act) {
  if (context != nullptr) QTimer::singleShot(0, context, std::move(act));
  return context != nullptr;
}

QStringList shownDialogs() {
  QStringList names;
  for (const QWidget* const widget : QApplication::topLevelWidgets()) {
    if (qobject_cast<const QDialog*>(widget) == nullptr || !widget->isVisible()) continue;
    names << (widget->accessibleName().isEmpty() ? widget->windowTitle() : widget->accessibleName());
  }
  return names;
}

QAbstractButton* buttonSaying(const QString& text) {
  for (QWidget* const widget : QApplication::allWidgets()) {
    auto* const button = qobject_cast<QAbstractButton*>(widget);
    if (button != nullptr && button->isVisible() && button->isEnabled() && button->text().remove(u'&') == text) {
      return button;
    }
  }
  return nullptr;
}

QByteArray describedWindow() {
  const QWidget* const window = mainWindow();
  if (window == nullptr) return "{}";
  const QRect place = window->geometry();
  return QJsonDocument(QJsonObject{{"state", static_cast<int>(window->windowState())},
                                   {"visible", window->isVisible()},
                                   {"place", QJsonArray{place.x(), place.y(), place.width(), place.height()}}})
      .toJson(QJsonDocument::Compact);
}

/// What screen readers call the program.
QByteArray nameToScreenReaders() {
  const QAccessibleInterface* const application = QAccessible::queryAccessibleInterface(qApp);
  return application == nullptr ? QByteArray() : application->text(QAccessible::Name).toUtf8();
}

}  // namespace

class Hand : public QObject {
  Q_OBJECT

 public:
  Hand() {
    connect(&server_, &QLocalServer::newConnection, this, [this] {
      QLocalSocket* const socket = server_.nextPendingConnection();
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        while (socket->canReadLine()) socket->write(answerTo(QString::fromUtf8(socket->readLine()).trimmed()) + '\n');
        socket->flush();
      });
    });
    for (const char* const scheme : schemes) QDesktopServices::setUrlHandler(scheme, this, "open");
    server_.listen(qEnvironmentVariable("LUMACHECK_HAND"));
  }

  ~Hand() override {
    for (const char* const scheme : schemes) QDesktopServices::unsetUrlHandler(scheme);
  }
  Q_INVOKABLE void open(const QUrl& address) { opened_.append(address.toString()); }

 private:
  QByteArray answerTo(const QString& line) {
    const qsizetype blank = line.indexOf(u' ');
    const QString word = line.left(blank), rest = blank < 0 ? QString() : line.mid(blank + 1);
    const auto list = [](const QStringList& texts) {
      return QJsonDocument(QJsonArray::fromStringList(texts)).toJson(QJsonDocument::Compact);
    };
    const std::map<QString, std::function<QByteArray()>> words{
        {"dialogs", [&] { return list(shownDialogs()); }},
        {"name", [] { return nameToScreenReaders(); }},
        {"opened", [&] { return list(opened_); }},
        {"window", [] { return describedWindow(); }},
        {"press", [&] { return press(rest); }},
        {"choose", [&] { return choose(rest); }},
        {"answer", [&] { return answerPanel(rest); }},
        {"close", [] { return yesOrNo(later(mainWindow(), [] { mainWindow()->close(); })); }},
        {"key", [&] { return type(rest); }},
        {"text", [&] { return textOf(rest); }},
        {"report", [] { return reported(); }},
        {"checked", [&] { return isChecked(rest); }},
    };
    const auto found = words.find(word);
    return found == words.end() ? "?" : found->second();
  }
  static QByteArray press(const QString& text) {
    QAbstractButton* const button = buttonSaying(text);
    return yesOrNo(later(button, [button] { button->click(); }));
  }
  static QByteArray choose(const QString& name) {
    const QWidget* const window = mainWindow();
    auto* const action = window == nullptr ? nullptr : window->findChild<QAction*>(name);
    return yesOrNo(later(action, [action] { action->trigger(); }));
  }
  /// Gives the file panel that is up a path.
  static QByteArray answerPanel(const QString& path) {
    QFileDialog* up = nullptr;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
      auto* const panel = qobject_cast<QFileDialog*>(widget);
      if (panel != nullptr && panel->isVisible()) up = panel;
    }
    return yesOrNo(later(up, [up, path] {
      up->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(path);
      static_cast<QDialog*>(up)->done(QDialog::Accepted);
    }));
  }
  static QByteArray type(const QString& key) {
    return yesOrNo(later(mainWindow(),
                         [key] { QTest::keyClick(mainWindow(), static_cast<Qt::Key>(QKeySequence(key)[0].key())); }));
  }
  static QByteArray isChecked(const QString& name) {
    for (const QWidget* const widget : QApplication::allWidgets()) {
      const auto* const box = qobject_cast<const QCheckBox*>(widget);
      if (box != nullptr && (box->objectName() == name || box->accessibleName() == name)) {
        return yesOrNo(box->isChecked());
      }
    }
    return "?";
  }

  static QByteArray textOf(const QString& field) {
    for (const QWidget* const widget : QApplication::allWidgets()) {
      const auto* const line = qobject_cast<const QLineEdit*>(widget);
      if (line != nullptr && line->accessibleName().startsWith(field)) return line->text().toUtf8();
    }
    return "?";
  }
  static QByteArray reported() {
    const QWidget* const window = mainWindow();
    const auto* const console = window == nullptr ? nullptr : window->findChild<QTextEdit*>();
    return console == nullptr ? "?" : console->toPlainText().replace(u'\n', u' ').toUtf8();
  }

  static constexpr std::array schemes{"http", "https", "file"};

  QLocalServer server_;
  QStringList opened_;
};

class HandPlugin : public QGenericPlugin {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "hand.json")

 public:
  QObject* create(const QString& /*name*/, const QString& /*specification*/) override { return new Hand; }
};

#include "Hand.moc"
