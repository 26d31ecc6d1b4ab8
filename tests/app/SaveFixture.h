#pragma once

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStringList>
#include <QTest>
#include <QTextEdit>
#include <QTimer>
#include <optional>

#include "tests/app/WindowFixture.h"
#include "tests/check/CapturedLog.h"

inline constexpr std::int32_t gamma22 = 144179, gamma18 = 117965;

/// The launched window with someone at it who answers every alert.
class SaveFixture : public WindowFixture {
 protected:
  SaveFixture() {
    launch();
    QObject::connect(&answers_, &QTimer::timeout, [this] {
      auto* const sheet = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (sheet == nullptr || qobject_cast<QFileDialog*>(sheet) || sheet->findChild<QProgressBar*>()) return;
      for (const QTextEdit* text : sheet->findChildren<QTextEdit*>()) told_ << text->toPlainText();
      QTest::keyClick(sheet, Qt::Key_Return);
    });
    answers_.start(20);
  }

  QString copyOf(const QString& movie, const QString& name = "dest.mov") {
    const QString path = home_.filePath(name);
    EXPECT_TRUE(QFile::copy(movie, path));
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
    return path;
  }
  static void press(QPushButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
  QFileDialog* panel() {
    for (auto* const each : interface().window().findChildren<QFileDialog*>()) {
      if (each->isVisible()) return each;
    }
    return nullptr;
  }
  /// Answers the save panel that is up; returns when the copy is written.
  void answerPanel(const QString& target) {
    const QPointer<QFileDialog> asked = panel();
    ASSERT_NE(asked, nullptr);
    asked->selectFile(target);
    static_cast<QDialog*>(asked)->done(QDialog::Accepted);
    EXPECT_NE(asked, nullptr) << "deleted while it was still ending";
  }
  void saveAs(const QString& target) {
    press(interface().saveAsBtn);
    answerPanel(target);
  }
  static std::optional<std::int32_t> gammaOf(const movie::Movie& movie) {
    return movie.tracksOfMediaType(movie::videoMedia).front()->media().imageDescription(1)->gamma();
  }
  static std::optional<std::int32_t> gammaOf(const QString& path) {
    return gammaOf(**movie::Movie::movieWithFile(path.toStdString()));
  }
  static QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  QTimer answers_;
  QStringList told_;  ///< by alerts
};
