#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

#include "SharedFiles/analytics/MultipartForm.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

TEST(MultipartForm, WritesExactlyThePartsAndNoClosingDelimiter) {
  const struct {
    QVariantMap form;
    QByteArray body;
  } rows[] = {
      {{}, ""},
      {{{"uid", "abc"}}, "--B-1\r\nContent-Disposition: form-data; name=\"uid\"\r\n\r\nabc\r\n"},
      {{{"a", "1"}, {"b", QStringLiteral("\u00e4\r\n--B")}},
       "--B-1\r\nContent-Disposition: form-data; name=\"a\"\r\n\r\n1\r\n"
       "--B-1\r\nContent-Disposition: form-data; name=\"b\"\r\n\r\n\xc3\xa4\r\n--B\r\n"},
      {{{"empty", QString()}}, "--B-1\r\nContent-Disposition: form-data; name=\"empty\"\r\n\r\n\r\n"},
      {{{"number", 7}}, "--B-1\r\nContent-Disposition: form-data; name=\"number\"\r\n\r\n7\r\n"},
      {{{"truth", true}}, "--B-1\r\nContent-Disposition: form-data; name=\"truth\"\r\n\r\n1\r\n"},
      {{{"list", QVariantList{"one", 2, true, "two words", QStringList{"a.b"}, QVariantList()}}},
       "--B-1\r\nContent-Disposition: form-data; name=\"list\"\r\n\r\n"
       "(\n    one,\n    2,\n    1,\n    \"two words\",\n    (\n        \"a.b\"\n    ),\n    (\n    )\n)\r\n"},
      {{{"names", QStringList{"a", "say \"\\\""}}},
       "--B-1\r\nContent-Disposition: form-data; name=\"names\"\r\n\r\n(\n    a,\n    \"say \\\"\\\\\\\"\"\n)\r\n"},
      {{{"event", QVariantMap{{"date", 7}, {"a b", ""}}}},
       "--B-1\r\nContent-Disposition: form-data; name=\"event\"\r\n\r\n"
       "{\n    \"a b\" = \"\";\n    date = 7;\n}\r\n"},
      {{{"page", QUrl("https://maker.example/")}}, "--B-1\r\n\r\n"},
      {{{"text", "file:///etc/hostname"}},
       "--B-1\r\nContent-Disposition: form-data; name=\"text\"\r\n\r\nfile:///etc/hostname\r\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(MultipartForm::generateFormData(row.form, "B-1"), row.body);
}

TEST(MultipartForm, SendsAFileByItsNameAndItsBytes) {
  const QTemporaryDir folder;
  const QByteArray bytes("\0\xff\r\n--B-1\r\n", 11);
  QFile file(folder.filePath("a log.bin"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(bytes);
  file.close();
  const QByteArray head =
      "--B-1\r\nContent-Disposition: form-data; name=\"log\"; filename=\"a log.bin\"\r\n"
      "Content-Type: application/octet-stream\r\n\r\n";
  const QVariantMap form{{"log", QUrl::fromLocalFile(file.fileName())}};
  EXPECT_EQ(MultipartForm::generateFormData(form, "B-1"), head + bytes + "\r\n");
  ASSERT_TRUE(file.remove());
  EXPECT_EQ(MultipartForm::generateFormData(form, "B-1"), head + "\r\n");
}

}  // namespace
