#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "SharedFiles/settings/PropertyList.h"
#include "tests/SharedFiles/QtPrinters.h"

namespace {

QByteArray document(const QByteArray& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + body + "</plist>\n";
}

QVariantMap everything() {
  return {{"string", "a<b>&\"' ä€😀 ]]> % \n\t"},
          {"empty", ""},
          {"true", true},
          {"false", false},
          {"zero", 0LL},
          {"negative", -5LL},
          {"smallest", std::numeric_limits<qlonglong>::min()},
          {"largest", std::numeric_limits<qlonglong>::max()},
          {"real", 0.1},
          {"large", -1e300},
          {"date", QDateTime::fromString("2026-11-15T13:24:25Z", Qt::ISODate)},
          {"early", QDateTime::fromString("1969-04-24T22:13:20Z", Qt::ISODate)},
          {"data", QByteArray("\0\x01\xff", 3)},
          {"no data", QByteArray("")},
          {"array", QVariantList{1LL, "two", QVariantList(), QVariantMap{{"k&<>", 3LL}}}},
          {"dictionary", QVariantMap()},
          {"", "empty key"}};
}

TEST(PropertyList, KeepsEveryKindOfValue) {
  const std::optional<QByteArray> xml = PropertyList::toXml(everything());
  ASSERT_TRUE(xml);
  const std::optional<QVariant> value = PropertyList::fromXml(*xml);
  ASSERT_TRUE(value);
  EXPECT_EQ(value->toMap(), everything());
  for (const auto& [key, item] : everything().toStdMap()) {
    EXPECT_EQ(value->toMap().value(key).typeId(), item.typeId()) << key.toStdString();
  }
}

TEST(PropertyList, KeepsNumbersThatAreNone) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::optional<QByteArray> xml = PropertyList::toXml(QVariantList{std::nan(""), infinity, -infinity});
  ASSERT_TRUE(xml);
  const QVariantList list = PropertyList::fromXml(*xml).value_or(QVariant()).toList();
  ASSERT_EQ(list.size(), 3);
  EXPECT_TRUE(std::isnan(list[0].toDouble()));
  EXPECT_EQ(list[1].toDouble(), infinity);
  EXPECT_EQ(list[2].toDouble(), -infinity);
}

TEST(PropertyList, WritesTheXmlForm) {
  const QByteArray xml = PropertyList::toXml(QVariantMap{{"launches", 3}}).value_or("");
  EXPECT_TRUE(xml.startsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
  EXPECT_TRUE(xml.contains("<key>launches</key>\n\t<integer>3</integer>"));
}

TEST(PropertyList, TakesNarrowerNumbersAndLists) {
  const QVariantMap narrow{
      {"int", 5}, {"uint", 6U}, {"float", 0.5F}, {"strings", QStringList{"a", "b"}}, {"ulonglong", qulonglong{7}}};
  const QVariantMap wide = PropertyList::fromXml(PropertyList::toXml(narrow).value_or("")).value_or(QVariant()).toMap();
  EXPECT_EQ(
      wide,
      QVariantMap(
          {{"int", 5LL}, {"uint", 6LL}, {"float", 0.5}, {"strings", QVariantList{"a", "b"}}, {"ulonglong", 7LL}}));
}

TEST(PropertyList, RefusesToWriteWhatItCannotReadBack) {
  QVariant deep = 1;
  for (int i = 0; i < 65; ++i) deep = QVariantList{deep};
  const QVariant refused[] = {QVariant(),
                              QVariantList{QVariant()},
                              QVariantMap{{"a", QVariant::fromValue(nullptr)}},
                              qulonglong{1} << 63,
                              QDateTime(),
                              QDateTime(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC),
                              QDateTime(QDate(1900, 1, 1), QTime(0, 0), Qt::UTC),
                              QString(QChar(u'\0')),
                              QString(QChar(0x1b)),
                              QString(QChar(0xD800)),
                              QString(QChar(0xFFFF)),
                              QVariantMap{{QString(QChar(1)), 1}},
                              deep};
  for (const QVariant& value : refused) EXPECT_FALSE(PropertyList::toXml(value)) << value.typeName();
}

TEST(PropertyList, ReadsNoMoreNestingThanItWrites) {
  const auto nested = [](int depth) {
    return document(QByteArray("<array>").repeated(depth) + "<true/>" + QByteArray("</array>").repeated(depth));
  };
  EXPECT_TRUE(PropertyList::fromXml(nested(64)));
  EXPECT_FALSE(PropertyList::fromXml(nested(65)));
  EXPECT_FALSE(PropertyList::fromXml(nested(1000000)));
  EXPECT_FALSE(PropertyList::fromXml(document(QByteArray("<dict><key>k</key>").repeated(1000000))));
  QVariant deepest = true;
  for (int i = 0; i < 64; ++i) deepest = QVariantList{deepest};
  const std::optional<QByteArray> xml = PropertyList::toXml(deepest);
  ASSERT_TRUE(xml);
  EXPECT_EQ(PropertyList::fromXml(*xml), deepest);
}

TEST(PropertyList, RefusesMalformedBytes) {
  const QByteArray manyEntities(
      R"(<?xml version="1.0"?><!DOCTYPE p [<!ENTITY a "aaaaaaaaaa"><!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;">)"
      R"(<!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;"><!ENTITY d "&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;">]>)"
      R"(<plist><string>&d;&d;&d;&d;&d;</string></plist>)");
  const QByteArray refused[] = {"",
                                "x",
                                QByteArray(100, '\0'),
                                "<plist>",
                                "<plist version=\"1.0\"></plist>",
                                "<plist/>",
                                "<dict></dict><dict></dict>",
                                document("<dict><string>a</string></dict>"),
                                document("<dict><key>a</key><string>b</dict>"),
                                document("<unknown/>"),
                                document("<dict><key>a</key><unknown/></dict>"),
                                document("<string>\x01</string>"),
                                document("<string>\xff</string>"),
                                document("<string>&nothing;</string>"),
                                "bplist00\xd0\x08\x00\x00\x00\x00\x00\x00\x01\x01",
                                manyEntities};
  for (const QByteArray& xml : refused) EXPECT_FALSE(PropertyList::fromXml(xml)) << xml.left(80).toStdString();
}

TEST(PropertyList, EscapesWhatXmlReadsAsALineFeed) {
  const QVariantMap texts{{"a\rb", "\r"}, {"event", "two\r\nlines\r"}};
  const QByteArray xml = PropertyList::toXml(texts).value_or("");
  EXPECT_TRUE(xml.startsWith("<?xml"));
  EXPECT_TRUE(xml.contains("<string>two&#13;\nlines&#13;</string>")) << xml.toStdString();
  EXPECT_EQ(PropertyList::fromXml(xml), texts);
}

TEST(PropertyList, ReadsWhatOtherWritersMake) {
  const std::optional<QVariant> value =
      PropertyList::fromXml(document("<!-- a note <dict> --><dict><key>a</key> "
                                     "<string>x<![CDATA[<y>]]>&#65;</string><key>n</key><integer>0x10</integer>"
                                     "<key>a</key><string>again</string></dict>"));
  ASSERT_TRUE(value);
  EXPECT_EQ(value->toMap().value("a"), "again");
  EXPECT_EQ(value->toMap().value("n"), 16);
}

TEST(PropertyList, SurvivesEveryCutAndManyChangesOfAGoodFile) {
  const QByteArray good = PropertyList::toXml(everything()).value_or("");
  ASSERT_GT(good.size(), 500);
  for (qsizetype length = 0; length < good.size() - 10; ++length)
    EXPECT_FALSE(PropertyList::fromXml(good.left(length)));
  std::mt19937 random(20261115);
  for (int round = 0; round < 5000; ++round) {
    QByteArray changed = good;
    for (unsigned int i = 0; i < 1 + random() % 4; ++i) {
      const auto at = static_cast<qsizetype>(random() % static_cast<unsigned int>(changed.size()));
      changed[at] =
          static_cast<char>(random() % 3 == 0 ? random() : static_cast<unsigned int>("<>/&;![]- "[random() % 10]));
    }
    const std::optional<QVariant> value = PropertyList::fromXml(changed);
    if (value) {
      EXPECT_TRUE(value->isValid());
    }
  }
}

class PropertyListFile : public ::testing::Test {
 protected:
  QString path(const QString& name = "settings.plist") const { return folder_.path() + "/" + name; }
  void put(const QByteArray& bytes) {
    QFile file(path());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
  }
  QTemporaryDir folder_;
};

TEST_F(PropertyListFile, ComesBackAsWritten) {
  ASSERT_TRUE(PropertyList::write(everything(), path()));
  EXPECT_EQ(PropertyList::readDictionary(path()), everything());
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files | QDir::Hidden), QStringList("settings.plist"));
}

TEST_F(PropertyListFile, IsReplacedWhole) {
  ASSERT_TRUE(PropertyList::write(everything(), path()));
  ASSERT_TRUE(PropertyList::write(QVariantMap{{"a", 1}}, path()));
  EXPECT_EQ(PropertyList::readDictionary(path()), QVariantMap({{"a", 1LL}}));
}

TEST_F(PropertyListFile, StaysAsItWasWhenAValueIsRefused) {
  ASSERT_TRUE(PropertyList::write(QVariantMap{{"a", 1}}, path()));
  EXPECT_FALSE(PropertyList::write(QVariantMap{{"a", QVariant()}}, path()));
  EXPECT_EQ(PropertyList::readDictionary(path()), QVariantMap({{"a", 1LL}}));
}

TEST_F(PropertyListFile, IsNotWrittenIntoAFolderThatIsNotThere) {
  EXPECT_FALSE(PropertyList::write(QVariantMap(), path("none/settings.plist")));
  EXPECT_FALSE(QFile::exists(path("none")));
}

TEST_F(PropertyListFile, GivesNothingWhenItCannotBeRead) {
  EXPECT_FALSE(PropertyList::read(path()));
  EXPECT_FALSE(PropertyList::read(folder_.path()));
  EXPECT_FALSE(PropertyList::read(QString()));
  EXPECT_FALSE(PropertyList::read("/dev/zero"));
  ASSERT_EQ(mkfifo(QFile::encodeName(path("pipe")).constData(), 0600), 0);
  EXPECT_FALSE(PropertyList::read(path("pipe")));
  put("");
  EXPECT_FALSE(PropertyList::read(path()));
  put(document("<array/>"));
  EXPECT_TRUE(PropertyList::read(path()));
  EXPECT_FALSE(PropertyList::readDictionary(path()));
}

TEST_F(PropertyListFile, IsBoundInSize) {
  put(document("<string>x</string>"));
  ASSERT_TRUE(PropertyList::read(path()));
  ASSERT_TRUE(QFile::resize(path(), PropertyList::largestFile + 1));
  EXPECT_FALSE(PropertyList::read(path()));
}

}  // namespace
